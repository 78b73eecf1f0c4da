package nn.qv.imagedecoder;

import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * The two encodings of framebuffer updates. A device says which one an update has; each needs a
 * decoder of its own.
 *
 * <pre>{@code
 * DecoderOptions options = DecoderOptions.builder(Codec.ICT).build();
 * }</pre>
 */
public enum Codec {
    /** Tiles of quantised transform coefficients, much as in a JPEG picture. */
    ICT(0, NativeCodec.ICT, true, true),
    /** Literals and runs of samples at reduced depth. */
    LBE(1, NativeCodec.LBE, false, false);

    private final int code;
    private final NativeCodec nativeCodec;
    private final boolean drawsPlanes;
    private final boolean dependsOnKernels;

    Codec(int code, NativeCodec nativeCodec, boolean drawsPlanes, boolean dependsOnKernels) {
        this.code = code;
        this.nativeCodec = nativeCodec;
        this.drawsPlanes = drawsPlanes;
        this.dependsOnKernels = dependsOnKernels;
    }

    /** Its number in recordings. */
    int code() {
        return code;
    }

    /** The native methods that decode it. */
    NativeCodec nativeCodec() {
        return nativeCodec;
    }

    /** Whether its updates can be drawn into planes, too. */
    boolean drawsPlanes() {
        return drawsPlanes;
    }

    /** Whether portable kernels draw other pixels than accelerated ones. */
    boolean dependsOnKernels() {
        return dependsOnKernels;
    }
}
