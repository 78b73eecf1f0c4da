package nn.qv.imagedecoder;

/**
 * How the macroblocks of {@link ProtocolVersion#V2} follow each other. The data do not say, and a
 * decoder that takes one for the other loses its place. The older versions have one layout only,
 * which suits any number of threads.
 *
 * <pre>{@code
 * // An encoder that does not pad, so no worker threads:
 * DecoderOptions.builder(Codec.ICT)
 *         .protocolVersion(ProtocolVersion.V2)
 *         .recordLayout(RecordLayout.CONTINUOUS)
 *         .threads(0);
 * }</pre>
 */
public enum RecordLayout {
    /** Bit by bit, without padding: for a decoder without threads. */
    CONTINUOUS(0),
    /** Padded to whole bytes, as devices send them: for a decoder with at least one thread. */
    PADDED(1),
    /** Bit by bit and without lengths: for any decoder, but threads have nothing to do. */
    IN_PLACE(2);

    private final int code;

    RecordLayout(int code) {
        this.code = code;
    }

    /** Its number in recordings. */
    int code() {
        return code;
    }
}
