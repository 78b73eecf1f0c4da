package nn.qv.imagedecoder;

import java.io.IOException;
import nn.qv.imagedecoder.UpdateException.Reason;
import nn.qv.imagedecoder.internal.UpdateFeed;

/** What to throw for an update for which the native method returned -1. */
final class UpdateFailures {
    private UpdateFailures() {}

    /** What the update's source has thrown, if it has; otherwise what the library has logged. */
    static IOException of(
            Codec codec, UpdateHeader header, UpdateFeed feed, boolean sourceInStep) {
        Throwable cause = feed.failure();
        if (cause instanceof IOException e) {
            return e;
        }
        if (cause instanceof RuntimeException e) {
            throw e;
        }
        if (cause instanceof Error e) {
            throw e;
        }
        String line = feed.failureLine();
        String message =
                String.format(
                        "%s update %s failed after %d bytes: %s",
                        codec, header, feed.consumedBytes(), textOf(codec, line));
        return new UpdateException(reasonOf(line), sourceInStep, message);
    }

    /** Only for a quality that it does not know the library logs nothing. */
    private static Reason reasonOf(String line) {
        if (line == null) {
            return Reason.QUALITY;
        }
        return line.endsWith("no more bytes!") ? Reason.TRUNCATED : Reason.CORRUPT;
    }

    /** The part of a log line behind the native method's name. */
    private static String textOf(Codec codec, String line) {
        if (line == null) {
            return "its quality is unknown";
        }
        String method = "perform" + codec + " ";
        int at = line.indexOf(method);
        return at < 0 ? line : line.substring(at + method.length());
    }
}
