package nn.qv.imagedecoder;

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
    ICT,
    /** Literals and runs of samples at reduced depth. */
    LBE
}
