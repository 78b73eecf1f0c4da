package nn.qv.imagedecoder;

import java.io.IOException;
import java.util.Locale;
import nn.qv.imagedecoder.UpdateException.Reason;
import nn.qv.imagedecoder.internal.ByteSource;
import nn.qv.imagedecoder.internal.SourceEndedException;
import nn.qv.imagedecoder.internal.UpdateFeed;

/** What to throw for an update that was not decoded. */
final class UpdateFailures {
    private UpdateFailures() {}

    /**
     * For an update for which the native method returned -1: what its source has thrown, if it has;
     * otherwise what the library has logged.
     */
    static IOException of(Codec codec, UpdateHeader header, UpdateFeed feed, ByteSource source) {
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
        Reason reason = reasonOf(feed, source);
        String message = codec + " update " + header + " " + text(reason, codec, feed);
        return new UpdateException(reason, source.inStepAfterFailure(), message);
    }

    /** For an update of known length that did not arrive completely. */
    static UpdateException ended(Codec codec, UpdateHeader header, SourceEndedException e) {
        String message =
                String.format(
                        Locale.ROOT,
                        "%s update %s was cut off after %d of %d bytes, where the source ended",
                        codec,
                        header,
                        e.arrived(),
                        e.length());
        return new UpdateException(Reason.SOURCE_ENDED, false, message);
    }

    /** Only for a quality that it does not know the library logs nothing. */
    private static Reason reasonOf(UpdateFeed feed, ByteSource source) {
        String line = feed.failureLine();
        if (line == null) {
            return Reason.QUALITY;
        }
        if (feed.ended() && source.endsConnection()) {
            return Reason.SOURCE_ENDED;
        }
        return line.endsWith("no more bytes!") ? Reason.TRUNCATED : Reason.CORRUPT;
    }

    /**
     * What happened, and where. The library has taken at most that many bytes when it fails, but it
     * reads ahead: the fault itself may lie before their end.
     */
    private static String text(Reason reason, Codec codec, UpdateFeed feed) {
        String where =
                switch (reason) {
                    case SOURCE_ENDED -> "was cut off after %d bytes, where the source ended: %s";
                    case TRUNCATED -> "needs more than its %d bytes: %s";
                    case QUALITY -> "has a quality that is not known; none of its bytes were read";
                    default -> "failed within its first %d bytes: %s";
                };
        String line = feed.failureLine();
        String said = line == null ? "" : reasonIn(line, codec);
        return String.format(Locale.ROOT, where, feed.consumedBytes(), said);
    }

    /** The part of a log line after the native method's name. */
    private static String reasonIn(String line, Codec codec) {
        String method = "perform" + codec + " ";
        int at = line.indexOf(method);
        return at < 0 ? line : line.substring(at + method.length());
    }
}
