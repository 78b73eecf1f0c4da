package nn.qv.imagedecoder.internal;

import java.nio.ByteBuffer;

/**
 * Where a native perform call draws: direct buffers, of which the library takes the addresses. If
 * all are null, the update is decoded and not drawn.
 *
 * @param width width in pixels
 * @param height height in pixels
 * @param argb the ARGB32 pixels, or null if the planes are used
 * @param yPlane luma samples, or null if {@code argb} is used
 * @param cbPlane Cb samples, or null if {@code argb} is used
 * @param crPlane Cr samples, or null if {@code argb} is used
 */
public record NativeTarget(
        int width,
        int height,
        ByteBuffer argb,
        ByteBuffer yPlane,
        ByteBuffer cbPlane,
        ByteBuffer crPlane) {

    /** A target that takes no pixels. */
    public static NativeTarget none(int width, int height) {
        return new NativeTarget(width, height, null, null, null, null);
    }
}
