package nn.qv.demo;

import java.io.IOException;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.ScreenDecoder;

/**
 * What a viewer shows after a sequence of updates, and how fast it came.
 *
 * @param framebuffer the screen after the last update
 * @param bestSeconds time that a pass over all updates took, for the fastest pass
 */
record Playback(Framebuffer framebuffer, double bestSeconds) {
    private static final int MIN_PASSES = 3;

    /** The property is for tests, which need no figures that are worth believing. */
    private static final double MIN_SECONDS =
            Double.parseDouble(System.getProperty("nn.qv.demo.seconds", "0.25"));

    /** Decodes the updates until the time is worth believing. */
    static Playback play(ScreenUpdates updates, DecoderOptions options) throws IOException {
        Framebuffer framebuffer = Framebuffer.argb(updates.width(), updates.height());
        double bestSeconds = Double.POSITIVE_INFINITY;
        try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
            double sum = 0;
            for (int pass = 0; pass < MIN_PASSES || sum < MIN_SECONDS; pass++) {
                long start = System.nanoTime();
                for (RecordingEntry.Update update : updates.updates()) {
                    decoder.decode(update.header(), update.payload(), framebuffer);
                }
                double seconds = (System.nanoTime() - start) * 1e-9;
                sum += seconds;
                bestSeconds = Math.min(bestSeconds, seconds);
            }
            return new Playback(framebuffer, bestSeconds);
        }
    }
}
