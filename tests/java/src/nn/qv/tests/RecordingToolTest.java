package nn.qv.tests;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * What a viewer has recorded, the command-line tool decodes to the same pictures. Arguments: the
 * folder of the case files, the tool.
 */
final class RecordingToolTest {
    private final RecordingRun run = new RecordingRun();
    private final List<CaseFile> lives;
    private final String tool;

    private RecordingToolTest(List<CaseFile> lives, String tool) {
        this.lives = lives;
        this.tool = tool;
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        List<CaseFile> lives =
                CaseFile.loadAll(Path.of(arguments[0])).stream()
                        .filter(ViewerCasesTest::fitsViewer)
                        .toList();
        RecordingToolTest tests = new RecordingToolTest(lives, arguments[1]);
        tests.caseFiles();
        tests.changes();
        tests.differences();
        tests.run.finish();
    }

    private void caseFiles() {
        run.test(
                "the tool verifies the recording of every case file's life",
                file -> {
                    for (CaseFile life : lives) {
                        Files.deleteIfExists(file);
                        RecordingTest.record(life, file);
                        expectStatus(0, life.name(), file);
                    }
                });
    }

    private void changes() {
        run.test(
                "it follows pictures, settings, sizes, notes and failures amid a recording",
                file -> {
                    CaseFile life = lives.get(0);
                    Framebuffer plain = ViewerCasesTest.framebuffer(life);
                    Framebuffer larger = Framebuffer.argb(life.width() + 16, life.height());
                    larger.pixels().put(life.width(), 0x12345678); // No update reaches there.
                    try (ScreenDecoder decoder = RecordingTest.open(life, file)) {
                        RecordingTest.decode(life, decoder, plain, 0);
                        expectFails(decoder, new UpdateHeader(60000, 0, 16, 16, 7), plain);
                        expectFails(decoder, new UpdateHeader(0, 0, 16, 16, 7), plain);
                        decoder.setContrast(60);
                        decoder.setPostprocessing(true);
                        RecordingTest.decode(life, decoder, plain, 0);
                        RecordingTest.decode(life, decoder, larger, 0);
                    }
                    expectStatus(0, "with changes", file);
                });
        run.test(
                "it reads a recording whose decoder is still open",
                file -> {
                    CaseFile life = lives.get(0);
                    try (ScreenDecoder decoder = RecordingTest.open(life, file)) {
                        RecordingTest.decode(life, decoder, ViewerCasesTest.framebuffer(life), 0);
                        expectStatus(0, "without an index", file);
                    }
                });
    }

    private static void expectFails(
            ScreenDecoder decoder, UpdateHeader header, Framebuffer framebuffer) throws Exception {
        TestRun.expectThrown(
                UpdateException.class, () -> decoder.decode(header, new byte[1], framebuffer));
    }

    private void differences() {
        run.test(
                "it notices a picture that was another one, as a JVM does",
                file -> {
                    Files.write(file, RecordingFileTest.exampleOfAnotherPicture());
                    expectStatus(4, "another picture", file);
                });
    }

    private void expectStatus(int expected, String what, Path file) throws Exception {
        Process process =
                new ProcessBuilder(tool, "decode", "--verify", file.toString())
                        .redirectErrorStream(true)
                        .start();
        process.getOutputStream().close();
        byte[] output = process.getInputStream().readAllBytes();
        String said = new String(output, StandardCharsets.UTF_8);
        TestRun.expectEqual(expected, process.waitFor(), what + ": " + said + "status");
    }
}
