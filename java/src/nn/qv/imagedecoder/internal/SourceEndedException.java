package nn.qv.imagedecoder.internal;

import java.io.IOException;

/** A source ended before an update of known length was complete. */
public final class SourceEndedException extends IOException {
    private static final long serialVersionUID = 1;

    /** How many bytes arrived. */
    private final int arrived;

    /** How many were announced. */
    private final int length;

    /** With the number of bytes that arrived, and of those that were announced. */
    SourceEndedException(int arrived, int length) {
        super("The source ended after " + arrived + " of " + length + " bytes");
        this.arrived = arrived;
        this.length = length;
    }

    /** How many bytes arrived. */
    public int arrived() {
        return arrived;
    }

    /** How many bytes were announced. */
    public int length() {
        return length;
    }
}
