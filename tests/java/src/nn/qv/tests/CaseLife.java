package nn.qv.tests;

import java.io.IOException;
import java.util.List;
import nn.qv.imagedecoder.internal.NativeCodec;

/** Lives through a case file and holds every update against its right result. */
final class CaseLife {
    private CaseLife() {}

    /** The line that a failing perform call logs. */
    static String errorLine(NativeCodec codec, String error) {
        return "ImageDecoderException occured in Java_nn_qv_rccore_impl_rfb_img_hive_"
                + "ImageDecoder"
                + codec
                + "Native_perform"
                + codec
                + " "
                + error;
    }

    /**
     * @param transferSize size of the transfer array in bytes, or 0 for the file's own pieces, for
     *     which alone the file knows the bytes consumed
     */
    static void expectRight(CaseFile life, MemoryFeed feed, int transferSize) throws IOException {
        GuardedFramebuffer memory = GuardedFramebuffer.of(life);
        try (RawDecoder decoder = new RawDecoder(feed, life.options())) {
            decoder.setContrastEnhance(life.contrast());
            decoder.setClientPostprocessingEnabled(life.postprocessing());
            feed.takeLog();
            for (int i = 0; i < life.steps().size(); i++) {
                CaseFile.Step step = life.steps().get(i);
                byte[] transfer = new byte[transferSize > 0 ? transferSize : ownSize(life, step)];
                long result = decoder.decode(step.update(), memory.framebuffer(), transfer);

                String where = "update " + i + ", ";
                TestRun.expectEqual(step.result(), result, where + "result");
                TestRun.expectEqual(
                        expectedLog(life, step), feed.takeLog(), where + "log lines");
                TestRun.expectEqual(step.crc(), memory.crc(), where + "framebuffer CRC");
                if (transferSize == 0 && step.consumedBytes() != -1) {
                    TestRun.expectEqual(
                            step.consumedBytes(), feed.consumedBytes(), where + "bytes consumed");
                }
                memory.expectGuardsUntouched();
            }
        }
    }

    private static int ownSize(CaseFile life, CaseFile.Step step) {
        return life.pieceSize() > 0 ? life.pieceSize() : Math.max(1, step.update().data().length);
    }

    private static List<String> expectedLog(CaseFile life, CaseFile.Step step) {
        return step.error().isEmpty()
                ? List.of()
                : List.of(errorLine(life.options().codec(), step.error()));
    }
}
