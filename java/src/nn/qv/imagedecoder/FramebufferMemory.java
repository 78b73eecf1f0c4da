package nn.qv.imagedecoder;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.util.List;
import java.util.Locale;

/** Memory that native code may write to: allocated, or checked if it is the viewer's own. */
final class FramebufferMemory {
    private static final int WORD = Integer.BYTES;

    private FramebufferMemory() {}

    /** So that no number of bytes of a framebuffer outgrows an int. */
    static void checkSize(int width, int height) {
        if (!fits(width) || !fits(height) || width * height > Framebuffer.MAX_PIXELS) {
            throw new IllegalArgumentException(
                    String.format(
                            Locale.ROOT,
                            "A framebuffer of %dx%d pixels: each side must be 1 to %d, and both"
                                    + " together at most %d pixels",
                            width, height, Framebuffer.MAX_SIDE, Framebuffer.MAX_PIXELS));
        }
    }

    private static boolean fits(int side) {
        return side >= 1 && side <= Framebuffer.MAX_SIDE;
    }

    /** A zeroed word for each pixel. */
    static ByteBuffer words(int pixels) {
        return allocate(WORD * pixels);
    }

    /** Zeroed Y, Cb and Cr planes. */
    static List<ByteBuffer> planes(int width, int height, ChromaSubsampling subsampling) {
        int chroma = subsampling.chromaWidth(width) * subsampling.chromaHeight(height);
        return List.of(allocate(width * height), allocate(chroma), allocate(chroma));
    }

    private static ByteBuffer allocate(int bytes) {
        return ByteBuffer.allocateDirect(bytes).order(ByteOrder.nativeOrder());
    }

    /** The part of the viewer's memory that begins at its position. */
    static ByteBuffer wordsWithin(ByteBuffer memory, int pixels) {
        int bytes = WORD * pixels;
        expect(
                memory.isDirect(),
                "is on the Java heap, where native code cannot write: use allocateDirect");
        expect(!memory.isReadOnly(), "is read-only");
        expect(
                memory.order() == ByteOrder.nativeOrder(),
                "has another byte order than the machine: call order(ByteOrder.nativeOrder())");
        expect(
                memory.remaining() >= bytes,
                "has " + memory.remaining() + " bytes left where " + bytes + " are needed");
        expect(
                memory.alignmentOffset(memory.position(), WORD) == 0,
                "does not begin at an address divisible by " + WORD);
        return memory.slice(memory.position(), bytes).order(ByteOrder.nativeOrder());
    }

    private static void expect(boolean condition, String otherwise) {
        if (!condition) {
            throw new IllegalArgumentException("The framebuffer's memory " + otherwise);
        }
    }
}
