package nn.qv.tests;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.function.Supplier;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.ConnectionRecording;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * What a viewer has recorded, the command-line tool decodes to the same pictures. Arguments: the
 * folder of the case files, the tool, the jar, the shared object.
 */
final class RecordingToolTest {
    private final RecordingRun run = new RecordingRun();
    private final List<CaseFile> lives;
    private final RecordedConnection connection;
    private final String tool;
    private final String jar;
    private final String object;

    private RecordingToolTest(List<CaseFile> lives, String[] arguments) throws IOException {
        this.lives = lives;
        connection = new RecordedConnection(arguments[0]);
        tool = arguments[1];
        jar = arguments[2];
        object = arguments[3];
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        List<CaseFile> lives =
                CaseFile.loadAll(Path.of(arguments[0])).stream()
                        .filter(ViewerCasesTest::fitsViewer)
                        .toList();
        RecordingToolTest tests = new RecordingToolTest(lives, arguments);
        tests.caseFiles();
        tests.changes();
        tests.statuses();
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
                "it verifies a recording of both codecs and of two connections",
                file -> {
                    Framebuffer screen = connection.screen();
                    ConnectionRecording recording = ConnectionRecording.create(file);
                    for (int i = 0; i < 2; i++) {
                        try (ScreenDecoder ict = connection.open(Codec.ICT, recording);
                                ScreenDecoder lbe = connection.open(Codec.LBE, recording)) {
                            connection.decode(Codec.ICT, ict, screen);
                            connection.decode(Codec.LBE, lbe, screen);
                        }
                    }
                    expectStatus(0, "of both codecs", file);
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

    private void statuses() {
        expectSameStatus("a good recording", 0, RecordingFileTest::example);
        expectSameStatus("an update that fails", 3, RecordingFileTest::exampleThatFails);
        expectSameStatus(
                "one that fails and has no result",
                3,
                RecordingFileTest::exampleThatFailsWithoutResult);
        expectSameStatus("another result", 4, RecordingFileTest::exampleOfAnotherResult);
        expectSameStatus("another picture", 4, RecordingFileTest::exampleOfAnotherPicture);
        expectSameStatus("an update that failed", 4, RecordingFileTest::exampleOfRecordedFailure);
        int index = 91; // Its record follows the update's.
        expectSameStatus("a damaged file", 5, () -> damaged(index + 20));
        expectSameStatus("a damaged header", 2, () -> damaged(20));
        expectSameStatus(
                "a cut file", 5, () -> Arrays.copyOf(RecordingFileTest.example(), index + 3));
        expectSameStatus(
                "a cut file with nothing to compare",
                5,
                () -> Arrays.copyOf(RecordingFileTest.exampleWithNothingToCompare(), index + 3));
        expectSameStatus(
                "a cut file with an update that fails",
                3,
                () -> Arrays.copyOf(RecordingFileTest.exampleThatFails(), index + 3));
        expectSameStatus(
                "a cut file with another picture",
                4,
                () -> Arrays.copyOf(RecordingFileTest.exampleOfAnotherPicture(), index + 3));
        expectSameStatus("a later version", 5, RecordingFileTest::exampleOfLaterVersion);
        expectSameStatus("nothing to compare", 4, RecordingFileTest::exampleWithNothingToCompare);
        expectSameStatus("no recording", 2, () -> new byte[100]);
        run.test(
                "the tool and a JVM agree on the exit status for a missing file",
                file -> {
                    expectStatus(2, "missing", file);
                    expectReplayStatus(2, file);
                });
    }

    /** The example with a wrong byte. */
    private static byte[] damaged(int at) {
        byte[] recording = RecordingFileTest.example();
        recording[at] ^= 1;
        return recording;
    }

    private void expectSameStatus(String what, int status, Supplier<byte[]> recording) {
        run.test(
                "the tool and a JVM agree on the exit status for " + what,
                file -> {
                    Files.write(file, recording.get());
                    expectStatus(status, what, file);
                    expectReplayStatus(status, file);
                });
    }

    private void expectReplayStatus(int status, Path file) throws Exception {
        new ChildJvm(Path.of(System.getProperty("java.home")))
                .property("nn.qv.imagedecoder.path", object)
                .option("-jar", jar)
                .run("replay", file.toString())
                .expectStatus(status);
    }

    private void expectStatus(int expected, String what, Path file) throws Exception {
        expectStatus(expected, what, tool, "decode", "--verify", file.toString());
    }

    private static void expectStatus(int expected, String what, String... command)
            throws Exception {
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        process.getOutputStream().close();
        byte[] output = process.getInputStream().readAllBytes();
        String said = new String(output, StandardCharsets.UTF_8);
        TestRun.expectEqual(expected, process.waitFor(), what + ": " + said + "status");
    }
}
