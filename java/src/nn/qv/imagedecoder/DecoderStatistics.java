package nn.qv.imagedecoder;

import java.time.Duration;

/**
 * What a decoder has done since it was opened.
 *
 * <pre>{@code
 * DecoderStatistics statistics = decoder.statistics();
 * double milliseconds = statistics.decodeNanos() / 1e6 / statistics.updates();
 * }</pre>
 *
 * @param updates updates decoded
 * @param refusals updates that failed or were refused, for whatever reason; only the first one with
 *     an {@link UpdateException} is logged as a warning
 * @param bytes bytes of the decoded updates
 * @param feedNanos time spent getting bytes from the sources, waiting for a network included
 * @param decodeNanos time spent decoding and drawing, without the former
 */
public record DecoderStatistics(
        long updates, long refusals, long bytes, long feedNanos, long decodeNanos) {
    /**
     * The time spent getting bytes.
     *
     * @return {@link #feedNanos}
     */
    public Duration feedTime() {
        return Duration.ofNanos(feedNanos);
    }

    /**
     * The time spent decoding and drawing.
     *
     * @return {@link #decodeNanos}
     */
    public Duration decodeTime() {
        return Duration.ofNanos(decodeNanos);
    }

    /** What both have done together. */
    DecoderStatistics plus(DecoderStatistics other) {
        return new DecoderStatistics(
                updates + other.updates,
                refusals + other.refusals,
                bytes + other.bytes,
                feedNanos + other.feedNanos,
                decodeNanos + other.decodeNanos);
    }
}
