package nn.qv.tests;

import java.io.IOException;
import java.io.InputStream;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.List;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.RecordingPlayer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * A connection is recorded by one line and plays again to the same pictures. Argument: the folder
 * of the case files.
 */
final class RecordingTest {
    private final RecordingRun run = new RecordingRun();
    private final List<CaseFile> lives;

    private RecordingTest(List<CaseFile> lives) {
        this.lives = lives;
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        RecordingTest tests =
                new RecordingTest(
                        CaseFile.loadAll(Path.of(arguments[0])).stream()
                                .filter(ViewerCasesTest::fitsViewer)
                                .toList());
        tests.recording();
        tests.changes();
        tests.run.finish();
    }

    private void recording() {
        run.test(
                "every case file's life, recorded while it is decoded, plays again without a"
                        + " difference",
                file -> {
                    for (CaseFile life : lives) {
                        Files.deleteIfExists(file);
                        record(life, file);
                        expectPlays(life, file);
                    }
                });
        run.test(
                "a decoder without updates leaves no file behind",
                file -> {
                    ScreenDecoder.open(first().options().forViewer().record(file).build()).close();
                    TestRun.expect(Files.notExists(file), "there is a file");
                });
        run.test(
                "a recording can be read by its owner alone",
                file -> {
                    record(first(), file);
                    TestRun.expectEqual(
                            "rw-------",
                            PosixFilePermissions.toString(Files.getPosixFilePermissions(file)),
                            "permissions");
                });
        run.test(
                "a file that exists is not overwritten",
                file -> {
                    Files.createFile(file);
                    TestRun.expectThrown(
                            FileAlreadyExistsException.class,
                            () ->
                                    ScreenDecoder.open(
                                            first().options().forViewer().record(file).build()));
                });
        run.test(
                "a recording can be played while it grows",
                file -> {
                    CaseFile life = first();
                    try (ScreenDecoder decoder = open(life, file)) {
                        decode(life, decoder, framebuffer(life), 0);
                        try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                            TestRun.expect(player.step() && !player.step(), "not one update");
                            TestRun.expectEqual(0L, player.differing(), "differences");
                        }
                    }
                });
    }

    private CaseFile first() {
        return lives.get(0);
    }

    static ScreenDecoder open(CaseFile life, Path file) throws IOException {
        return ScreenDecoder.open(
                life.options()
                        .forViewer()
                        .contrast(life.contrast())
                        .postprocessing(life.postprocessing())
                        .record(file)
                        .build());
    }

    private static Framebuffer framebuffer(CaseFile life) {
        return ViewerCasesTest.framebuffer(life);
    }

    /** Records all of a case file's life. */
    static void record(CaseFile life, Path file) throws IOException {
        Framebuffer framebuffer = framebuffer(life);
        try (ScreenDecoder decoder = open(life, file)) {
            for (int i = 0; i < life.steps().size(); i++) {
                decode(life, decoder, framebuffer, i);
            }
        }
    }

    /** Decodes one update of a case file's life, which may have to fail. */
    static void decode(
            CaseFile life, ScreenDecoder decoder, Framebuffer framebuffer, int step)
            throws IOException {
        Update update = life.steps().get(step).update();
        try (InputStream in = new PieceStream(update.data(), 0, 100)) {
            decoder.decode(update.header(), in, framebuffer);
        } catch (UpdateException e) {
            TestRun.expectEqual(-1L, life.steps().get(step).result(), e.getMessage());
        }
    }

    private static void expectPlays(CaseFile life, Path file) throws IOException {
        try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
            for (CaseFile.Step step : life.steps()) {
                TestRun.expect(player.step(), life.name() + ": an update is missing");
                TestRun.expectEqual("", player.difference(), life.name() + ": difference");
                TestRun.expectEqual(
                        (int) step.crc(), player.lastUpdate().pictureCrc(), life.name() + ": CRC");
                TestRun.expectEqual(
                        step.result(), player.lastUpdate().result(), life.name() + ": result");
                if (life.pieceSize() == 0 && step.consumedBytes() != -1) {
                    TestRun.expectEqual(
                            step.consumedBytes(),
                            player.lastUpdate().payload().length,
                            life.name() + ": payload");
                }
            }
            TestRun.expect(!player.step(), life.name() + ": too many updates");
            TestRun.expectEqual(
                    Recording.Ending.COMPLETE, player.recording().ending(), "ending");
            TestRun.expectEqual(
                    (long) life.steps().size(), player.checksums(), life.name() + ": checksums");
        }
    }

    private void changes() {
        run.test(
                "what others have drawn before and meanwhile is part of the recording",
                file -> {
                    CaseFile life = first();
                    Framebuffer framebuffer = framebuffer(life);
                    framebuffer.pixels().put(0, 0x12345678);
                    try (ScreenDecoder decoder = open(life, file)) {
                        decode(life, decoder, framebuffer, 0);
                        framebuffer.pixels().put(1, 0x87654321);
                        decode(life, decoder, framebuffer, 0);
                    }
                    TestRun.expectEqual(
                            "[Picture, Update, Picture, Update]", kinds(file), "entries");
                    expectSame(file, framebuffer);
                });
        run.test(
                "contrast, post-processing and another framebuffer are part of the recording",
                file -> {
                    CaseFile life = first();
                    Framebuffer larger = Framebuffer.argb(life.width() + 16, life.height());
                    try (ScreenDecoder decoder = open(life, file)) {
                        decode(life, decoder, framebuffer(life), 0);
                        decoder.setContrast(60);
                        decoder.setPostprocessing(true);
                        decode(life, decoder, framebuffer(life), 0);
                        decode(life, decoder, larger, 0);
                    }
                    TestRun.expectEqual(
                            "[Update, Settings, Picture, Update, Settings, Update]",
                            kinds(file),
                            "entries");
                    expectSame(file, larger);
                });
        run.test(
                "a refused update leaves a note, and a failed one its bytes",
                file -> {
                    CaseFile life = first();
                    Framebuffer framebuffer = framebuffer(life);
                    try (ScreenDecoder decoder = open(life, file)) {
                        decode(life, decoder, framebuffer, 0);
                        for (UpdateHeader header :
                                List.of(
                                        new UpdateHeader(60000, 0, 16, 16, 7),
                                        new UpdateHeader(0, 0, 16, 16, 7))) {
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () -> decoder.decode(header, new byte[1], framebuffer));
                        }
                    }
                    TestRun.expectEqual("[Update, Note, Update]", kinds(file), "entries");
                    expectSame(file, framebuffer);
                });
    }

    private static String kinds(Path file) throws IOException {
        List<String> kinds = new ArrayList<>();
        try (Recording recording = Recording.open(file)) {
            for (RecordingEntry e = recording.next(); e != null; e = recording.next()) {
                kinds.add(e.getClass().getSimpleName());
            }
        }
        return kinds.toString();
    }

    private static void expectSame(Path file, Framebuffer framebuffer) throws Exception {
        try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
            TestRun.expect(player.play(false), player.difference());
            TestRun.expectEqual(framebuffer.pixels(), player.framebuffer().pixels(), "pixels");
        }
    }
}
