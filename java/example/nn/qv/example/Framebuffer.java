package nn.qv.example;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;

/**
 * The memory that updates are drawn into: direct buffers, which the library writes in place.
 *
 * @param width width in pixels
 * @param height height in pixels
 * @param argb the ARGB32 pixels, or null if the planes are used
 * @param yPlane luma samples, or null if {@code argb} is used
 * @param cbPlane Cb samples, or null if {@code argb} is used
 * @param crPlane Cr samples, or null if {@code argb} is used
 */
public record Framebuffer(
        int width,
        int height,
        ByteBuffer argb,
        ByteBuffer yPlane,
        ByteBuffer cbPlane,
        ByteBuffer crPlane) {

    /** A black framebuffer of ARGB32 pixels in native byte order. */
    public static Framebuffer ofArgb(int width, int height) {
        ByteBuffer pixels = ByteBuffer.allocateDirect(Math.multiplyExact(4 * width, height));
        return ofArgb(width, height, pixels);
    }

    /** A framebuffer over the given direct buffer of 4 * width * height bytes. */
    public static Framebuffer ofArgb(int width, int height, ByteBuffer pixels) {
        return new Framebuffer(
                width, height, pixels.order(ByteOrder.nativeOrder()), null, null, null);
    }

    /** A copy of the ARGB32 pixels, row by row from the top left. */
    public int[] pixels() {
        int[] copy = new int[width * height];
        argb.order(ByteOrder.nativeOrder()).asIntBuffer().get(0, copy);
        return copy;
    }
}
