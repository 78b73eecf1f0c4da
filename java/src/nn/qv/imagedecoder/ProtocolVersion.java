package nn.qv.imagedecoder;

/**
 * Version of the update data that a device sends, settled when the connection is made.
 *
 * <pre>{@code
 * DecoderOptions.builder(Codec.LBE).protocolVersion(ProtocolVersion.V2).threads(2);
 * }</pre>
 */
public enum ProtocolVersion {
    /** Short counts; brightness is coded relative to the macroblock before. */
    V0(0),
    /** Long counts; every macroblock can be decoded on its own. */
    V1(1),
    /** As {@link #V1}, and every macroblock tells its length, so that worker threads can share. */
    V2(2);

    private final int code;

    ProtocolVersion(int code) {
        this.code = code;
    }

    /** Its number in the native interface and in recordings. */
    int code() {
        return code;
    }
}
