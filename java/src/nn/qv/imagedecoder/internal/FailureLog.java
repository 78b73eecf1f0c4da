package nn.qv.imagedecoder.internal;

import java.lang.System.Logger;
import java.lang.System.Logger.Level;

/**
 * Logs the failed updates of one decoder: the first as a warning, all others for debugging, so that
 * a hostile device cannot fill a log.
 */
public final class FailureLog {
    private static final Logger LOGGER = System.getLogger("nn.qv.imagedecoder");

    private static volatile boolean disabled;

    private boolean warned;

    /** Logs nothing from here on, for a program that reports all failures itself. */
    public static void disable() {
        disabled = true;
    }

    /** Logs the message of a failed update. Throws no exception of a log handler, only errors. */
    public void add(String message) {
        if (disabled) {
            return;
        }
        try {
            if (warned) {
                LOGGER.log(Level.DEBUG, message);
            } else {
                warned = true;
                LOGGER.log(
                        Level.WARNING,
                        message
                                + " (later failures of this decoder are counted in its statistics"
                                + " and logged for debugging only)");
            }
        } catch (RuntimeException e) {
            // A broken log handler must not replace the update's failure.
        }
    }
}
