package nn.qv.imagedecoder;

import java.awt.image.BufferedImage;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.IntBuffer;
import java.util.List;
import java.util.Objects;
import java.util.Optional;

/**
 * The memory that updates are drawn into: one 32-bit word a pixel, or three planes of samples. It
 * starts as zeros, lives outside the Java heap and goes when nothing refers to it any more.
 *
 * <p>Several decoders may draw into one framebuffer, say one for ICT and one for LBE. A framebuffer
 * does not synchronise: who reads pixels while another thread decodes sees half an update.
 *
 * <p>The views ({@link #pixels}, {@link #planes}) share the memory. {@link #toBufferedImage} and
 * the copies do not; they need module {@code java.desktop} where they name a {@code BufferedImage}.
 *
 * <pre>{@code
 * Framebuffer screen = Framebuffer.argb(1024, 768);
 * decoder.decode(header, bytes, screen);
 * int topLeft = screen.pixels().get(0);            // 0xFFRRGGBB
 * ImageIO.write(screen.toBufferedImage(), "png", new File("screen.png"));
 * }</pre>
 */
public final class Framebuffer {
    /** The greatest width and height in pixels. */
    public static final int MAX_SIDE = 16384;

    /** The most pixels: 8192x8192, for which a decoder needs up to 200 MB of its own. */
    public static final int MAX_PIXELS = 1 << 26;

    private final int width;
    private final int height;
    private final ChromaSubsampling chromaSubsampling;
    private final ByteBuffer argb;
    private final List<ByteBuffer> planes;

    private Framebuffer(int width, int height, ChromaSubsampling subsampling, ByteBuffer argb) {
        this.width = width;
        this.height = height;
        this.chromaSubsampling = subsampling;
        this.argb = argb;
        planes = argb != null ? List.of() : FramebufferMemory.planes(width, height, subsampling);
    }

    /**
     * Makes a framebuffer of ARGB32 pixels.
     *
     * @param width width in pixels, 1 to {@link #MAX_SIDE}
     * @param height height in pixels, 1 to {@link #MAX_SIDE}; {@link #MAX_PIXELS} in all
     * @return the framebuffer, all zeros
     * @throws IllegalArgumentException if the size is out of range
     */
    public static Framebuffer argb(int width, int height) {
        FramebufferMemory.checkSize(width, height);
        return new Framebuffer(width, height, null, FramebufferMemory.words(width * height));
    }

    /**
     * Makes a framebuffer over memory of the viewer's own. It begins at the buffer's position.
     *
     * @param width width in pixels, 1 to {@link #MAX_SIDE}
     * @param height height in pixels, 1 to {@link #MAX_SIDE}; {@link #MAX_PIXELS} in all
     * @param memory a direct, writable buffer in native byte order with at least 4 * width * height
     *     bytes between position and limit, at an address divisible by 4
     * @return the framebuffer, showing what the memory holds
     * @throws IllegalArgumentException if the size is out of range or the buffer is not as above
     */
    public static Framebuffer argb(int width, int height, ByteBuffer memory) {
        FramebufferMemory.checkSize(width, height);
        Objects.requireNonNull(memory, "memory");
        ByteBuffer words = FramebufferMemory.wordsWithin(memory, width * height);
        return new Framebuffer(width, height, null, words);
    }

    /**
     * Makes a framebuffer of planes, which hold the samples as decoded: without contrast stretch,
     * post-processing and colour conversion. Only ICT decoders draw into it, and only updates whose
     * rectangle begins at (0, 0), because the native library places all others shifted. Sides of Cb
     * and Cr are divided by the subsampling and rounded down.
     *
     * @param width width in pixels, 1 to {@link #MAX_SIDE}
     * @param height height in pixels, 1 to {@link #MAX_SIDE}; {@link #MAX_PIXELS} in all
     * @param chromaSubsampling that of the decoder; decides the size of the Cb and Cr planes
     * @return the framebuffer, all zeros
     * @throws IllegalArgumentException if the size is out of range
     */
    public static Framebuffer planes(
            int width, int height, ChromaSubsampling chromaSubsampling) {
        FramebufferMemory.checkSize(width, height);
        Objects.requireNonNull(chromaSubsampling, "chromaSubsampling");
        return new Framebuffer(width, height, chromaSubsampling, null);
    }

    /**
     * The width.
     *
     * @return the width in pixels
     */
    public int width() {
        return width;
    }

    /**
     * The height.
     *
     * @return the height in pixels
     */
    public int height() {
        return height;
    }

    /**
     * The subsampling of its planes.
     *
     * @return the subsampling, empty for ARGB32 pixels
     */
    public Optional<ChromaSubsampling> chromaSubsampling() {
        return Optional.ofNullable(chromaSubsampling);
    }

    /**
     * A view of the pixels, row by row from the top left: alpha (255 once drawn), red, green, blue
     * from the highest byte down.
     *
     * @return a buffer of width * height words that shares the memory, with a position of its own
     * @throws UnsupportedOperationException for planes
     */
    public IntBuffer pixels() {
        return words().duplicate().order(ByteOrder.nativeOrder()).asIntBuffer();
    }

    /**
     * A view of the planes, each row by row without gaps.
     *
     * @return the Y, Cb and Cr plane, which share the memory
     * @throws UnsupportedOperationException for ARGB32 pixels
     */
    public List<ByteBuffer> planes() {
        if (argb != null) {
            throw new UnsupportedOperationException("The framebuffer holds pixels, not planes");
        }
        return planes.stream().map(ByteBuffer::duplicate).toList();
    }

    /**
     * Copies pixels.
     *
     * @param region what to copy; must lie within the framebuffer
     * @return region.width() * region.height() pixels, row by row
     * @throws IndexOutOfBoundsException if it does not lie within
     * @throws UnsupportedOperationException for planes
     */
    public int[] copy(ChangedRectangle region) {
        Objects.requireNonNull(region, "region");
        Objects.checkFromIndexSize(region.x(), region.width(), width);
        Objects.checkFromIndexSize(region.y(), region.height(), height);
        IntBuffer from = pixels();
        int[] copy = new int[region.width() * region.height()];
        for (int row = 0; row < region.height(); row++) {
            int start = (region.y() + row) * width + region.x();
            from.get(start, copy, row * region.width(), region.width());
        }
        return copy;
    }

    /**
     * Copies all pixels into a new picture.
     *
     * @return a picture of type {@code TYPE_INT_RGB} and the framebuffer's size
     * @throws UnsupportedOperationException for planes
     */
    public BufferedImage toBufferedImage() {
        return FramebufferImages.imageOf(this);
    }

    /**
     * Copies pixels to the same place of a picture, which keeps its hardware acceleration.
     *
     * @param image a picture that covers the region
     * @param region what to copy; must lie within the framebuffer
     * @throws IndexOutOfBoundsException if it does not lie within the framebuffer
     * @throws IllegalArgumentException if the picture does not cover the region
     * @throws UnsupportedOperationException for planes
     */
    public void copyTo(BufferedImage image, ChangedRectangle region) {
        Objects.requireNonNull(image, "image");
        Objects.requireNonNull(region, "region");
        FramebufferImages.copy(this, image, region);
    }

    /** Makes everything zero again. */
    public void clear() {
        for (ByteBuffer memory : memory()) {
            ByteBuffer bytes = memory.duplicate();
            while (bytes.remaining() >= Long.BYTES) {
                bytes.putLong(0);
            }
            while (bytes.hasRemaining()) {
                bytes.put((byte) 0);
            }
        }
    }

    /** The size and what a pixel is, for a log line. */
    @Override
    public String toString() {
        String kind = argb != null ? "ARGB32" : "planes " + chromaSubsampling;
        return "Framebuffer[" + width + "x" + height + ", " + kind + "]";
    }

    /** The buffers that hold it: the pixels, or the three planes. Not to be handed out. */
    List<ByteBuffer> memory() {
        return argb != null ? List.of(argb) : planes;
    }

    /** The pixels' bytes for the native methods, null for planes. */
    ByteBuffer argbOrNull() {
        return argb;
    }

    /** A plane's bytes for the native methods, null for pixels: 0 is Y, 1 is Cb, 2 is Cr. */
    ByteBuffer planeOrNull(int index) {
        return argb != null ? null : planes.get(index);
    }

    private ByteBuffer words() {
        if (argb == null) {
            throw new UnsupportedOperationException("The framebuffer holds planes, not pixels");
        }
        return argb;
    }
}
