package nn.qv.imagedecoder;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;

/** The decoders that play a recording. Each keeps its own state; the settings are common to all. */
final class ReplayDecoders implements AutoCloseable {
    private final int threads;
    private final List<ScreenDecoder> decoders = new ArrayList<>();
    private int contrast;
    private boolean postprocessing;

    /** The number of threads is that of each decoder; 0 for as many as it needs. */
    ReplayDecoders(int threads) {
        this.threads = threads;
    }

    /** Opens the next one and returns its options. */
    DecoderOptions open(RecordingEntry.Decoder recorded) throws IOException {
        DecoderOptions.Builder builder =
                recorded.options().contrast(contrast).postprocessing(postprocessing);
        DecoderOptions options = (threads > 0 ? builder.threads(threads) : builder).build();
        decoders.add(ScreenDecoder.open(options));
        return options;
    }

    ScreenDecoder get(int index) {
        return decoders.get(index);
    }

    void apply(RecordingEntry.Settings settings) {
        contrast = settings.contrast();
        postprocessing = settings.postprocessing();
        for (ScreenDecoder decoder : decoders) {
            decoder.setContrast(contrast);
            decoder.setPostprocessing(postprocessing);
        }
    }

    /** Of all together. */
    DecoderStatistics statistics() {
        return decoders.stream()
                .map(ScreenDecoder::statistics)
                .reduce(new DecoderStatistics(0, 0, 0, 0, 0), DecoderStatistics::plus);
    }

    @Override
    public void close() {
        decoders.forEach(ScreenDecoder::close);
    }
}
