package nn.qv.imagedecoder;

import java.io.IOException;
import java.io.InputStream;
import java.lang.ref.Cleaner;
import java.lang.ref.Reference;
import java.nio.ByteBuffer;
import java.nio.channels.IllegalBlockingModeException;
import java.nio.channels.ReadableByteChannel;
import java.nio.channels.SelectableChannel;
import java.util.Objects;
import java.util.Optional;
import nn.qv.imagedecoder.internal.BufferSource;
import nn.qv.imagedecoder.internal.ByteSource;
import nn.qv.imagedecoder.internal.ChannelSource;
import nn.qv.imagedecoder.internal.KnownLengthSource;
import nn.qv.imagedecoder.internal.MarkedStreamSource;
import nn.qv.imagedecoder.internal.NativeObjects;
import nn.qv.imagedecoder.internal.SourceReads;
import nn.qv.imagedecoder.internal.UpdateFeed;

/**
 * Decodes the updates of one encoding on one connection, in the order in which they arrive, into a
 * {@link Framebuffer}.
 *
 * <p><b>Bytes.</b> An update's bytes come from memory, a stream or a channel. Where the length of
 * an update is not known beforehand, a decoder finds its end by decoding, and gives back what it
 * has read too much: the buffer or stream stands exactly after the update then. To be sure
 * of the end it may ask for up to two bytes of the next message first. If the device waits for an
 * answer before it sends that, a read that blocks would wait for ever: tell the length then, or let
 * the stream end where nothing more has been announced, which the decoder takes as well.
 *
 * <p><b>Failures.</b> The bytes come from a network and may be anything. An update that cannot be
 * decoded throws an {@link UpdateException} and draws nothing; the decoder stays usable. {@link
 * UpdateException.Reason#SOURCE_ENDED} says that the stream or channel ended in the middle of an
 * update; all other reasons are about its bytes. What a source throws passes through. A source that
 * returns no bytes 1000 times in succession ends the update with an {@link IOException}. Wrong
 * arguments of the viewer's own throw {@link IllegalArgumentException}.
 *
 * <p><b>Threads.</b> Any thread may call, one at a time; a second one gets a {@link
 * DecoderInUseException}. {@link #close}, {@link #statistics} and {@link #isClosed} may be called
 * at any time.
 *
 * <p><b>Memory.</b> A decoder holds native memory and perhaps threads. {@link #close} gives them
 * back, at the latest when a call that is still running returns; for a decoder that was forgotten,
 * the garbage collector does so at some time.
 *
 * <p>Log lines go to the {@link System.Logger} named {@code nn.qv.imagedecoder}: a decoder's first
 * failed update as a warning, its others and the library's own lines for debugging. {@link
 * #statistics} counts them all. While a flight recording runs, each update is an
 * event {@code nn.qv.imagedecoder.Update}.
 *
 * <pre>{@code
 * Framebuffer screen = Framebuffer.argb(1024, 768);
 * DecoderOptions options = DecoderOptions.builder(Codec.ICT)
 *         .protocolVersion(ProtocolVersion.V2)
 *         .threads(2)
 *         .build();
 * try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
 *     while (connection.readHeader()) {
 *         ChangedRectangle changed =
 *                 decoder.decode(connection.updateHeader(), connection.input(), screen);
 *         screen.copyTo(image, changed);
 *         panel.repaint(changed.x(), changed.y(), changed.width(), changed.height());
 *     }
 * }
 * }</pre>
 */
public final class ScreenDecoder implements AutoCloseable {
    private static final Cleaner CLEANER = Cleaner.create();

    private final UseGuard guard = new UseGuard();
    private final SourceReads reads = new SourceReads(guard::expectOpen);
    private final ChannelBuffers channelBuffers = new ChannelBuffers();
    private final DecoderOptions options;
    private final UpdateRun run;
    private final RecordingNotice recordingNotice;
    private final Cleaner.Cleanable cleanable;

    private ScreenDecoder(
            DecoderOptions options, UpdateFeed feed, NativeObjects objects, Recorder recorder) {
        this.options = options;
        run = new UpdateRun(options, feed, objects, recorder);
        recordingNotice = new RecordingNotice(recorder, options.recordingFailureListener());
        run.setContrast(options.contrast());
        run.setPostprocessing(options.postprocessing());
        cleanable = CLEANER.register(this, () -> release(objects, recorder));
    }

    /**
     * Opens a decoder; loads the native library if need be.
     *
     * @param options what the connection has settled
     * @return the decoder
     * @throws IOException if memory or threads run out, or the recording cannot be begun
     * @throws UnsatisfiedLinkError if the native library cannot be loaded; its message tells why
     */
    public static ScreenDecoder open(DecoderOptions options) throws IOException {
        Objects.requireNonNull(options, "options");
        NativeLoader.load();
        Recorder recorder = null;
        if (options.connectionRecording().isPresent()) {
            recorder = options.connectionRecording().get().join(options);
        }
        NativeObjects objects = null;
        try {
            UpdateFeed feed = new UpdateFeed();
            objects = createObjects(feed, options);
            return new ScreenDecoder(options, feed, objects, recorder);
        } catch (IOException | RuntimeException | Error e) {
            release(objects, recorder);
            throw e;
        }
    }

    private static NativeObjects createObjects(UpdateFeed feed, DecoderOptions options)
            throws IOException {
        return NativeObjects.create(
                feed,
                options.codec().nativeCodec(),
                options.threads(),
                options.protocolVersion().code(),
                options.chromaSubsampling().code());
    }

    /**
     * Decodes an update that fills an array.
     *
     * @param header its rectangle and quality
     * @param data its bytes; what may follow them is ignored
     * @param framebuffer what to draw into
     * @return what changed
     * @throws UpdateException if the update cannot be decoded
     * @throws IllegalArgumentException if the framebuffer is not one for this decoder
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public ChangedRectangle decode(UpdateHeader header, byte[] data, Framebuffer framebuffer)
            throws UpdateException {
        Objects.requireNonNull(data, "data");
        return decode(header, ByteBuffer.wrap(data), framebuffer);
    }

    /**
     * Decodes an update from a buffer's position on. Afterwards the position stands behind the
     * update, or where it was if that fails.
     *
     * @param header its rectangle and quality
     * @param data its bytes and perhaps those of the next message
     * @param framebuffer what to draw into
     * @return what changed
     * @throws UpdateException if the update cannot be decoded
     * @throws IllegalArgumentException if the framebuffer is not one for this decoder
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public ChangedRectangle decode(UpdateHeader header, ByteBuffer data, Framebuffer framebuffer)
            throws UpdateException {
        Objects.requireNonNull(data, "data");
        try {
            return decode(header, framebuffer, new BufferSource(data));
        } catch (UpdateException e) {
            throw e;
        } catch (IOException e) {
            throw new AssertionError("A buffer cannot fail to be read", e);
        }
    }

    /**
     * Decodes an update of unknown length from a stream. Afterwards the stream stands behind the
     * update, or where it was if that fails. It must be able to go back to a mark: wrap the
     * connection's stream into one {@link java.io.BufferedInputStream} and read everything from
     * that. A mark of the viewer's own is lost.
     *
     * @param header its rectangle and quality
     * @param in a stream that stands at the update's first byte
     * @param framebuffer what to draw into
     * @return what changed
     * @throws UpdateException if the update cannot be decoded
     * @throws IOException if the stream cannot be read
     * @throws IllegalArgumentException if the stream supports no marks, or the framebuffer is not
     *     one for this decoder
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public ChangedRectangle decode(UpdateHeader header, InputStream in, Framebuffer framebuffer)
            throws IOException {
        Objects.requireNonNull(in, "in");
        if (!in.markSupported()) {
            throw new IllegalArgumentException(
                    "An update of unknown length needs a stream that can give back what was read"
                            + " too much: wrap the connection's stream into one"
                            + " BufferedInputStream, or tell the length");
        }
        return decode(header, framebuffer, new MarkedStreamSource(in, reads));
    }

    /**
     * Decodes an update of known length from a stream. Afterwards the stream stands behind the
     * update, even if that fails.
     *
     * @param header its rectangle and quality
     * @param in a stream that stands at the update's first byte
     * @param length how many bytes the update has, at least 0
     * @param framebuffer what to draw into
     * @return what changed
     * @throws UpdateException if the update cannot be decoded
     * @throws IOException if the stream cannot be read
     * @throws IllegalArgumentException if the length is negative, or the framebuffer is not one for
     *     this decoder
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public ChangedRectangle decode(
            UpdateHeader header, InputStream in, int length, Framebuffer framebuffer)
            throws IOException {
        Objects.requireNonNull(in, "in");
        checkLength(length);
        return decode(header, framebuffer, new KnownLengthSource(in, length, reads));
    }

    /**
     * Decodes an update of known length from a channel. Afterwards the channel stands behind the
     * update, even if that fails.
     *
     * @param header its rectangle and quality
     * @param channel a channel in blocking mode that stands at the update's first byte
     * @param length how many bytes the update has, at least 0
     * @param framebuffer what to draw into
     * @return what changed
     * @throws UpdateException if the update cannot be decoded
     * @throws IOException if the channel cannot be read
     * @throws IllegalBlockingModeException if the channel does not block
     * @throws IllegalArgumentException if the length is negative, or the framebuffer is not one for
     *     this decoder
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public ChangedRectangle decode(
            UpdateHeader header, ReadableByteChannel channel, int length, Framebuffer framebuffer)
            throws IOException {
        checkBlocking(channel);
        checkLength(length);
        return decode(header, framebuffer, new KnownLengthSource(channel, length, reads));
    }

    /**
     * Decodes an update of unknown length from a channel by way of a buffer, which serves the whole
     * connection: bytes between its position and limit have been read from the channel and not been
     * used yet. Afterwards they are those behind the update. If that fails, what the update has
     * taken is lost.
     *
     * @param header its rectangle and quality
     * @param channel a channel in blocking mode
     * @param buffer unused bytes, none at the start, so call {@code limit(0)} once on a new buffer;
     *     it is filled from the channel as needed, so its capacity (at least 32 bytes, better
     *     65536) limits each read
     * @param framebuffer what to draw into
     * @return what changed
     * @throws UpdateException if the update cannot be decoded
     * @throws IOException if the channel cannot be read
     * @throws IllegalBlockingModeException if the channel does not block
     * @throws IllegalArgumentException if the buffer is too small or read-only, or is new and full
     *     of zeros because {@code limit(0)} is missing, or the framebuffer is not one for this
     *     decoder
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public ChangedRectangle decode(
            UpdateHeader header,
            ReadableByteChannel channel,
            ByteBuffer buffer,
            Framebuffer framebuffer)
            throws IOException {
        checkBlocking(channel);
        Objects.requireNonNull(buffer, "buffer");
        channelBuffers.check(buffer);
        return decode(header, framebuffer, new ChannelSource(channel, buffer, reads));
    }

    /**
     * Changes the contrast stretch of later updates. Planes are not stretched.
     *
     * @param level 0 (off) to {@link DecoderOptions#MAX_CONTRAST}
     * @throws IllegalArgumentException if the level is out of range
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public void setContrast(int level) {
        DecoderOptions.checkContrast(level);
        use(() -> run.setContrast(level));
    }

    /**
     * Switches client post-processing of later updates. Planes are not processed.
     *
     * @param enabled whether it is on
     * @throws DecoderInUseException if another call is running
     * @throws DecoderClosedException if the decoder is closed
     */
    public void setPostprocessing(boolean enabled) {
        use(() -> run.setPostprocessing(enabled));
    }

    /**
     * Figures since the decoder was opened; they stay available when it is closed.
     *
     * @return the figures as they are now
     */
    public DecoderStatistics statistics() {
        return run.statistics();
    }

    /**
     * Why the recording of this decoder's updates has ended early, such as a full disk. Decoding
     * goes on without it. Any thread may call this, also after {@link #close}.
     *
     * @return the failure, whose cause is the error from the file system; empty if there was none
     *     or nothing is recorded
     */
    public Optional<IOException> recordingFailure() {
        return recordingNotice.failure();
    }

    /**
     * Whether the decoder is closed.
     *
     * @return true after {@link #close}
     */
    public boolean isClosed() {
        return guard.isClosed();
    }

    /**
     * Refuses all further calls, gives back the native memory and threads, and ends the recording.
     * Any thread may close at any time; closing again does nothing.
     *
     * <p>If a call is running, this method does not wait for it. The running update throws a {@link
     * DecoderClosedException} at its next read from a stream or channel, or is completed if all its
     * bytes have arrived; memory, threads and recording are released when that call returns. A read
     * that is blocked stays blocked: close the socket as well to end it.
     */
    @Override
    public void close() {
        if (guard.close()) {
            cleanable.clean();
        }
        recordingNotice.close();
    }

    /** The codec, the state and the figures, for a log line. */
    @Override
    public String toString() {
        DecoderStatistics figures = statistics();
        return "ScreenDecoder["
                + (isClosed() ? "closed" : "open")
                + ", updates="
                + figures.updates()
                + ", refusals="
                + figures.refusals()
                + ", "
                + options
                + "]";
    }

    /** What the native method returned for the last update. */
    long lastResult() {
        return run.lastResult();
    }

    private ChangedRectangle decode(
            UpdateHeader header, Framebuffer framebuffer, ByteSource source) throws IOException {
        Objects.requireNonNull(header, "header");
        Objects.requireNonNull(framebuffer, "framebuffer");
        run.checkFramebuffer(framebuffer);
        guard.enter();
        try {
            return run.decode(header, source, framebuffer);
        } finally {
            leave();
            recordingNotice.giveIfDue();
        }
    }

    private void use(Runnable call) {
        guard.enter();
        try {
            call.run();
        } finally {
            leave();
        }
    }

    /** Keeps the cleaner from a decoder whose last call has not come to its end. */
    private void leave() {
        if (guard.leave()) {
            cleanable.clean();
        }
        Reference.reachabilityFence(this);
    }

    /** Static, lest the cleaner keep the decoder; either argument may be null. */
    private static void release(NativeObjects objects, Recorder recorder) {
        if (objects != null) {
            objects.run();
        }
        if (recorder != null) {
            recorder.close();
        }
    }

    private static void checkLength(int length) {
        if (length < 0) {
            throw new IllegalArgumentException("The length of an update is negative: " + length);
        }
    }

    private static void checkBlocking(ReadableByteChannel channel) {
        Objects.requireNonNull(channel, "channel");
        if (channel instanceof SelectableChannel selectable && !selectable.isBlocking()) {
            throw new IllegalBlockingModeException();
        }
    }
}
