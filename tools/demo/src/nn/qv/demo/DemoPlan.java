package nn.qv.demo;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.RecordLayout;

/** Which screens are shown in which ways: every value of each dimension, not every combination. */
final class DemoPlan {
    /** All screens. */
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
    private record Way(
            ProtocolVersion protocolVersion, ChromaSubsampling chroma, int threads, int quality) {
        DecoderOptions options(Codec codec) {
            return DecoderOptions.builder(codec)
                    .protocolVersion(protocolVersion)
                    .chromaSubsampling(chroma)
                    .threads(threads)
                    .recordLayout(threads > 0 ? RecordLayout.PADDED : RecordLayout.CONTINUOUS)
                    .build();
        }
    }

    private static final ProtocolVersion V0 = ProtocolVersion.V0;
    private static final ProtocolVersion V1 = ProtocolVersion.V1;
    private static final ProtocolVersion V2 = ProtocolVersion.V2;
    private static final ChromaSubsampling C420 = ChromaSubsampling.YCBCR_420;
    private static final ChromaSubsampling C422 = ChromaSubsampling.YCBCR_422;
    private static final ChromaSubsampling C444 = ChromaSubsampling.YCBCR_444;

    private static final List<Way> ICT_WAYS =
            List.of(
                    new Way(V0, C420, 0, 4),
                    new Way(V1, C422, 0, 9),
                    new Way(V2, C444, 0, 12),
                    new Way(V2, C420, 2, 12),
                    new Way(V2, C444, 2, 15));
    private static final List<Way> LBE_WAYS =
            List.of(
                    new Way(V0, C420, 0, 2),
                    new Way(V0, C422, 0, 3),
                    new Way(V0, C444, 0, 4),
                    new Way(V1, C420, 0, 5),
                    new Way(V1, C422, 0, 6),
                    new Way(V1, C444, 0, 7),
                    new Way(V2, C420, 0, 8),
                    new Way(V2, C422, 2, 9),
                    new Way(V2, C420, 2, 10),
                    new Way(V2, C444, 2, 11));

    private DemoPlan() {}

    /**
     * @param screens names of the screens that are wanted; none: all of them
     * @throws IOException if there is no screen of a name
     */
    static List<DemoRun> runs(List<String> screens) throws IOException {
        for (String screen : screens) {
            if (!ICT_SCREENS.contains(screen)) {
                throw new IOException(
                        "No screen is called "
                                + screen
                                + "; there are "
                                + String.join(", ", ICT_SCREENS));
            }
        }
        List<DemoRun> runs = new ArrayList<>();
        addRuns(runs, Codec.ICT, ICT_SCREENS, ICT_WAYS);
        addRuns(runs, Codec.LBE, LBE_SCREENS, LBE_WAYS);
        if (!screens.isEmpty()) {
            runs.removeIf(run -> !screens.contains(run.screen()));
        }
        return runs;
    }

    private static void addRuns(
            List<DemoRun> runs, Codec codec, List<String> screens, List<Way> ways) {
        for (String screen : screens) {
            for (Way way : ways) {
                runs.add(new DemoRun(screen, way.options(codec), way.quality));
            }
        }
    }
}
