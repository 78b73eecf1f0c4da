package nn.qv.rccore.impl.rfb.img.hive;

import java.io.IOException;

/**
 * The viewer's end of the native library: it takes the library's log lines and supplies the encoded
 * bytes of each update.
 *
 * <p>A viewer derives from this class and implements {@link #print}, {@link #read} and {@link
 * #stall}; the library finds them by name and signature on the object that {@link #createLogger} or
 * {@link #createStreambuffer} was called on. One object may serve as both.
 *
 * <p><b>Handles.</b> Every create method returns the address of a native object, 0 meaning none.
 * The caller owns it and gives it back to the matching delete method exactly once. The library
 * cannot tell a live handle from a stale one: using a deleted handle, or one of another kind, ends
 * the process. Objects refer to each other without owning, so they are deleted in this order: the
 * decoder, the stream buffer and the renderer, the logger.
 *
 * <p><b>Reachability.</b> A native logger or stream buffer holds its Java object strongly until it
 * is deleted; a cleaner registered on that object itself would never run.
 *
 * <p><b>Threads.</b> Any thread may call, but only one at a time per logger, stream buffer,
 * renderer and decoder. {@code print}, {@code read} and {@code stall} run on the thread that called
 * the native method, never on a thread of the library.
 *
 * <pre>{@code
 * class Feed extends NativeImageDecodingHelper {
 *     private ByteBuffer received; // all that has come and not been used yet
 *
 *     @Override
 *     protected void print(String line) {
 *         System.out.println(line);
 *     }
 *
 *     @Override
 *     protected int read(byte[] target, int capacity) {
 *         int count = Math.min(capacity, received.remaining());
 *         received.get(target, 0, count);
 *         return count;
 *     }
 *
 *     @Override
 *     protected void stall(byte[] source, int offset, int count) {
 *         received.position(received.position() - count);
 *     }
 * }
 * }</pre>
 */
public abstract class NativeImageDecodingHelper {
    /** For the viewer's derived class. */
    protected NativeImageDecodingHelper() {}

    /**
     * Takes one log line of the library. Called while objects are created and when an update fails.
     * It must not throw: the library does not look for Java exceptions after the call.
     *
     * @param line the text, without a line end
     */
    protected abstract void print(String line);

    /**
     * Supplies the next bytes of the update that is being decoded. Called during a perform call
     * only. It must not throw: the library would take whatever result the JVM leaves behind.
     *
     * @param target the transfer array of the running perform call; the bytes go to its start
     * @param capacity the most bytes to store, in bytes; the {@code length} of the perform call
     * @return how many bytes were stored, 1 to {@code capacity}; 0 says that the update has no more
     *     bytes; a negative number, or one above {@code capacity}, fails the update
     */
    protected abstract int read(byte[] target, int capacity);

    /**
     * Takes back the bytes that the last {@link #read} delivered and the update did not need: they
     * belong to the next message. Called at most once, at the end of a perform call. It must not
     * throw.
     *
     * <p>Only bytes of the last piece come back. Where an update ends within the first two bytes of
     * a piece, the decoder may have looked ahead over the piece's start, so a viewer that knows an
     * update's length should go by that.
     *
     * @param source the transfer array of the running perform call
     * @param offset index of the first byte handed back
     * @param count how many bytes are handed back, at least 1
     */
    protected abstract void stall(byte[] source, int offset, int count);

    /**
     * The version of this interface that the loaded library speaks.
     *
     * @return 9
     */
    public static native int getVersion();

    /**
     * Creates a logger whose lines go to {@link #print} of this object.
     *
     * @return the logger's handle
     */
    public final native long createLogger();

    /**
     * Creates a stream buffer that pulls from {@link #read} of this object and hands unread bytes
     * back to its {@link #stall}.
     *
     * @param logger handle of the logger, which must outlive the stream buffer
     * @return the stream buffer's handle
     * @throws IOException if the object cannot be made; nothing is left behind
     */
    public final native long createStreambuffer(long logger) throws IOException;

    /**
     * Creates a renderer, which draws decoded updates into the viewer's framebuffer.
     *
     * @param logger handle of the logger, which must outlive the renderer
     * @return the renderer's handle
     * @throws IOException if the object cannot be made; nothing is left behind
     */
    public static native long createRCRenderer(long logger) throws IOException;

    /**
     * Deletes a logger, after everything that was created with it.
     *
     * @param logger handle of the logger; 0 does nothing
     */
    public static native void deleteLogger(long logger);

    /**
     * Deletes a stream buffer, after the decoders that read from it.
     *
     * @param streambuffer handle of the stream buffer; 0 does nothing
     */
    public static native void deleteStreambuffer(long streambuffer);

    /**
     * Deletes a renderer, after the decoders that draw with it.
     *
     * @param renderer handle of the renderer; 0 does nothing
     */
    public static native void deleteRCRenderer(long renderer);
}
