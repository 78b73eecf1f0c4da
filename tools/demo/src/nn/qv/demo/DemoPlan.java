package nn.qv.demo;

import java.util.ArrayList;
import java.util.List;
import nn.qv.example.Codec;
import nn.qv.example.DecoderOptions;

/** Which screens are shown in which ways: every value of each dimension, not every combination. */
final class DemoPlan {
    private static final List<String> ICT_SCREENS =
            List.of(
                    "console-720x400",
                    "firmware-800x600",
                    "desktop-1024x768",
                    "desktop-1920x1080",
                    "session-1280x720",
                    "video-640x480",
                    "photo-1920x1080");
    private static final List<String> LBE_SCREENS =
            List.of("console-720x400", "firmware-800x600", "desktop-1024x768");

    /** A way of coding: protocol version, chroma subsampling, threads, quality. */
    private record Way(int protocolVersion, int chroma, int threads, int quality) {}

    private static final int C420 = 0;
    private static final int C422 = 1;
    private static final int C444 = 2;

    private static final List<Way> ICT_WAYS =
            List.of(
                    new Way(0, C420, 0, 4),
                    new Way(1, C422, 0, 9),
                    new Way(2, C444, 0, 12),
                    new Way(2, C420, 2, 12),
                    new Way(2, C444, 2, 15));
    private static final List<Way> LBE_WAYS =
            List.of(
                    new Way(0, C420, 0, 2),
                    new Way(0, C422, 0, 3),
                    new Way(0, C444, 0, 4),
                    new Way(1, C420, 0, 5),
                    new Way(1, C422, 0, 6),
                    new Way(1, C444, 0, 7),
                    new Way(2, C420, 0, 8),
                    new Way(2, C422, 2, 9),
                    new Way(2, C420, 2, 10),
                    new Way(2, C444, 2, 11));

    private DemoPlan() {}

    static List<DemoRun> runs() {
        List<DemoRun> runs = new ArrayList<>();
        addRuns(runs, Codec.ICT, ICT_SCREENS, ICT_WAYS);
        addRuns(runs, Codec.LBE, LBE_SCREENS, LBE_WAYS);
        return runs;
    }

    private static void addRuns(
            List<DemoRun> runs, Codec codec, List<String> screens, List<Way> ways) {
        for (String screen : screens) {
            for (Way way : ways) {
                DecoderOptions options =
                        new DecoderOptions(codec, way.protocolVersion, way.chroma, way.threads);
                runs.add(new DemoRun(screen, options, way.quality));
            }
        }
    }
}
