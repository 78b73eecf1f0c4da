package nn.qv.demo;

import java.io.IOException;
import nn.qv.example.DecoderOptions;
import nn.qv.example.Framebuffer;
import nn.qv.example.UpdateDecoder;
import nn.qv.example.UpdateFeed;

/**
 * What a viewer shows after the updates of a stream file, and how fast it came.
 *
 * @param framebuffer the screen after the last update
 * @param bestSeconds time that a pass over all updates took, for the fastest pass
 */
record Playback(Framebuffer framebuffer, double bestSeconds) {
    private static final int TRANSFER_BYTES = 16 * 1024;
    /** How far an update's decoder may look ahead without being able to hand the bytes back. */
    private static final int LOST_BYTES = 2;

    private static final int MIN_PASSES = 3;
    private static final double MIN_SECONDS = 0.25;

    /** Plays the updates through the native methods until the time is worth believing. */
    static Playback play(StreamFile stream, DecoderOptions options) throws IOException {
        UpdateFeed feed = new UpdateFeed();
        Framebuffer framebuffer = Framebuffer.ofArgb(stream.width(), stream.height());
        byte[] transfer = new byte[TRANSFER_BYTES];
        double bestSeconds = Double.POSITIVE_INFINITY;
        try (UpdateDecoder decoder = new UpdateDecoder(feed, options)) {
            feed.takeLog(); // The lines about its creation.
            double sum = 0;
            for (int pass = 0; pass < MIN_PASSES || sum < MIN_SECONDS; pass++) {
                long start = System.nanoTime();
                for (StreamFile.Entry entry : stream.entries()) {
                    long result = decoder.decode(entry.update(), framebuffer, transfer);
                    expectGood(result, entry, feed);
                }
                double seconds = (System.nanoTime() - start) * 1e-9;
                sum += seconds;
                bestSeconds = Math.min(bestSeconds, seconds);
            }
            return new Playback(framebuffer, bestSeconds);
        }
    }

    private static void expectGood(long result, StreamFile.Entry entry, UpdateFeed feed)
            throws IOException {
        if (result == -1) {
            throw new IOException("An update failed: " + feed.takeLog());
        }
        if (feed.consumedBytes() > entry.payloadBytes() + LOST_BYTES) {
            throw new IOException(
                    "An update of "
                            + entry.payloadBytes()
                            + " bytes took "
                            + feed.consumedBytes());
        }
    }
}
