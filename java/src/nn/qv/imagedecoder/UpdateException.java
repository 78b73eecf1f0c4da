package nn.qv.imagedecoder;

import java.io.IOException;

/**
 * An update could not be decoded. Nothing of it was drawn, and the decoder goes on with the next
 * one.
 *
 * <pre>{@code
 * try {
 *     decoder.decode(header, input, screen);
 * } catch (UpdateException e) {
 *     if (!e.sourceInStep()) {
 *         connection.close(); // where the next message begins is lost
 *     }
 * }
 * }</pre>
 */
public final class UpdateException extends IOException {
    private static final long serialVersionUID = 1;

    /** Why an update failed. */
    public enum Reason {
        /** Its bytes are not those of an update. */
        CORRUPT,
        /** Its bytes are too few: the array, the buffer or the given length ended too early. */
        TRUNCATED,
        /**
         * The stream or channel ended in the middle of the update, so the connection was closed.
         * What arrived until then says nothing about the device's data.
         */
        SOURCE_ENDED,
        /** Its rectangle does not belong to the framebuffer; its bytes were not looked at. */
        RECTANGLE,
        /** Its quality value is none of the encoding's; its bytes were not looked at. */
        QUALITY
    }

    /** Why it failed. */
    private final Reason reason;

    /** Whether the source stands after the update. */
    private final boolean sourceInStep;

    UpdateException(Reason reason, boolean sourceInStep, String message) {
        super(message);
        this.reason = reason;
        this.sourceInStep = sourceInStep;
    }

    /**
     * Why it failed.
     *
     * @return the reason
     */
    public Reason reason() {
        return reason;
    }

    /**
     * Whether the source of the bytes stands after the failed update, where the next message
     * begins. That is so for updates whose length was given, if all their bytes arrived; all others
     * leave the source where the update began, or where a channel's reads have brought it.
     *
     * @return true if the next message can be read from the source
     */
    public boolean sourceInStep() {
        return sourceInStep;
    }
}
