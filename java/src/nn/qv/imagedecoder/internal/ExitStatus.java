package nn.qv.imagedecoder.internal;

/** How {@code java -jar imagedecoder.jar} ends; the numbers are those of rctool. */
enum ExitStatus {
    DONE(0),
    WRONG_USAGE(1),
    /** The file cannot be read or is no recording, or the native library cannot be loaded. */
    UNUSABLE(2),
    /** An update cannot be decoded, and could when it was recorded. */
    UPDATE_FAILED(3),
    /** A checksum or a result differs, or there is none to compare. */
    NOT_VERIFIED(4),
    /** The recording is cut or damaged; what comes before that was played. */
    RECORDING_ENDS(5);

    private final int code;

    ExitStatus(int code) {
        this.code = code;
    }

    int code() {
        return code;
    }
}
