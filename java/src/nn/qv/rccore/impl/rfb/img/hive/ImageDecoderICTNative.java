package nn.qv.rccore.impl.rfb.img.hive;

import java.io.IOException;
import java.nio.Buffer;

/**
 * The native decoder of ICT updates: JPEG-like tiles of quantised transform coefficients.
 *
 * <p>Handles, ownership and threads follow the rules of {@link NativeImageDecodingHelper}. A
 * decoder keeps state from update to update, so a viewer makes one for a connection and gives it
 * the updates in the order in which they arrive.
 *
 * <pre>{@code
 * long logger = feed.createLogger();
 * long stream = feed.createStreambuffer(logger);
 * long renderer = NativeImageDecodingHelper.createRCRenderer(logger);
 * int threads = 2, protocolVersion = 2, chromaSubsampling = 0;
 * long decoder = ImageDecoderICTNative.createImageDecoder(
 *         renderer, stream, logger, threads, protocolVersion, chromaSubsampling);
 *
 * byte[] transfer = new byte[65536];
 * ByteBuffer argb = ByteBuffer.allocateDirect(4 * 1024 * 768).order(ByteOrder.nativeOrder());
 * long changed = ImageDecoderICTNative.performICT(
 *         transfer.length, argb, null, null, null, transfer, quality, 1024, 768, 0, 0,
 *         x, y, width, height, stream, renderer, decoder, logger);
 *
 * ImageDecoderICTNative.deleteImageDecoder(decoder);
 * NativeImageDecodingHelper.deleteStreambuffer(stream);
 * NativeImageDecodingHelper.deleteRCRenderer(renderer);
 * NativeImageDecodingHelper.deleteLogger(logger);
 * }</pre>
 */
public final class ImageDecoderICTNative {
    private ImageDecoderICTNative() {}

    /**
     * Creates a decoder.
     *
     * @param renderer handle of the renderer that draws the updates; must outlive the decoder
     * @param streambuffer handle of the stream buffer that supplies them; must outlive the decoder
     * @param logger handle of the logger; must outlive the decoder
     * @param threads worker threads, 0 to 1024; they are started only for protocol version 2, and
     *     with 0 or an older version the calling thread decodes alone
     * @param protocolVersion version of the update data that the device sends: 0, 1 or 2
     * @param chromaSubsampling 0 for 4:2:0, 1 for 4:2:2, 2 for 4:4:4
     * @return the decoder's handle
     * @throws IOException if an argument is out of range or memory or threads run out; nothing is
     *     left behind
     */
    public static native long createImageDecoder(
            long renderer,
            long streambuffer,
            long logger,
            int threads,
            int protocolVersion,
            int chromaSubsampling)
            throws IOException;

    /**
     * Deletes a decoder, before the renderer, stream buffer and logger that it was created with.
     *
     * @param decoder handle of the decoder; 0 does nothing
     */
    public static native void deleteImageDecoder(long decoder);

    /**
     * Sets how much the contrast of later updates is stretched. Only pixels that an update draws
     * change, and only in an ARGB framebuffer.
     *
     * @param renderer handle of the renderer (not of the decoder); must not be 0
     * @param level 0 (off) to 100
     */
    public static native void setContrastEnhance(long renderer, int level);

    /**
     * Switches client post-processing, which pulls each converted pixel back to the brightness that
     * was sent where the colour conversion had to clamp it. Only ARGB framebuffers are affected.
     *
     * @param renderer handle of the renderer (not of the decoder); must not be 0
     * @param enabled whether later updates are post-processed; off in a new renderer
     */
    public static native void setClientPostprocessingEnabled(long renderer, boolean enabled);

    /**
     * Decodes one update and draws it into the framebuffer. All bytes are pulled from the stream
     * buffer's {@link NativeImageDecodingHelper#read} through {@code data} before the call returns;
     * the library keeps neither the array nor the framebuffers.
     *
     * <p>A framebuffer is a direct buffer. Its first byte counts, whatever its position (a {@code
     * slice()} has a first byte of its own); its capacity is not looked at and must suffice. A heap
     * buffer counts as null.
     *
     * <p>The result packs four 16-bit fields, from the highest bits down: left and top edge of the
     * blocks that the update coded, in framebuffer pixels; then {@code x + maxX + 16 - minX} and
     * {@code y + maxY + 16 - minY}, where {@code minX} to {@code maxY} are the least and greatest
     * offsets of coded blocks within the rectangle. The last two are width and height plus the
     * rectangle's own {@code x} and {@code y}.
     *
     * @param length size of {@code data} in bytes; must equal {@code data.length}
     * @param argb framebuffer of {@code 4 * framebufferWidth * framebufferHeight} bytes, one 32-bit
     *     word in native byte order a pixel: alpha (255), red, green, blue from the highest byte
     *     down; null to draw into the three planes instead
     * @param yPlane luma framebuffer of {@code framebufferWidth * framebufferHeight} bytes, or null
     * @param cbPlane Cb framebuffer, or null: as large as {@code yPlane} for 4:4:4, half of it for
     *     4:2:2, a quarter for 4:2:0
     * @param crPlane Cr framebuffer of the size of {@code cbPlane}, or null. The planes are drawn
     *     into only if {@code argb} is null and none of them is.
     * @param data the transfer array, at least 1 byte
     * @param quality quantisation level 0 (coarsest) to 15 (finest), in the low 4 bits
     * @param framebufferWidth framebuffer width in pixels, 0 to 65535
     * @param framebufferHeight framebuffer height in pixels, 0 to 65535
     * @param reserved0 not used by the library
     * @param reserved1 not used by the library
     * @param x left edge of the update rectangle in pixels, 0 to 65535
     * @param y top edge of the update rectangle in pixels, 0 to 65535
     * @param width width of the update rectangle in pixels, as coded: a multiple of 16; what
     *     reaches over the framebuffer's edge is not drawn
     * @param height height of the update rectangle in pixels, as coded: a multiple of 16
     * @param streambuffer handle of the stream buffer that the decoder was created with
     * @param renderer handle of the renderer that the decoder was created with
     * @param decoder handle of the decoder
     * @param logger handle of the logger; must not be 0
     * @return the packed rectangle above; 0 if the update coded no block; -1 if it failed, in which
     *     case the framebuffers are untouched and a line was logged (none if a handle was 0)
     */
    public static native long performICT(
            int length,
            Buffer argb,
            Buffer yPlane,
            Buffer cbPlane,
            Buffer crPlane,
            byte[] data,
            int quality,
            int framebufferWidth,
            int framebufferHeight,
            long reserved0,
            long reserved1,
            int x,
            int y,
            int width,
            int height,
            long streambuffer,
            long renderer,
            long decoder,
            long logger);
}
