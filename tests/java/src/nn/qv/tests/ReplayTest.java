package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.regex.Pattern;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;

/**
 * What {@code java -jar imagedecoder.jar} says of recordings. Arguments: the folder of the case
 * files, the jar, the shared object, the project's version.
 */
final class ReplayTest {
    private static final Pattern TIME =
            Pattern.compile("^1 updates in [0-9]+\\.[0-9]{3} s", Pattern.MULTILINE);

    private final RecordingRun run = new RecordingRun();
    private final CaseFile life;
    private final String jar;
    private final String object;
    private final String version;

    private ReplayTest(String[] arguments) throws IOException {
        life = CaseFile.loadAll(Path.of(arguments[0])).get(0);
        jar = arguments[1];
        object = arguments[2];
        version = arguments[3];
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        ReplayTest tests = new ReplayTest(arguments);
        tests.recordings();
        tests.differences();
        tests.files();
        tests.arguments();
        tests.run.finish();
    }

    /** A test with a recording of the first update of the case file's life. */
    private void test(String sentence, RecordingRun.Body body) {
        run.test(
                sentence,
                file -> {
                    Update update = life.steps().get(0).update();
                    try (ScreenDecoder decoder =
                            ScreenDecoder.open(life.options().forViewer().record(file).build())) {
                        decoder.decode(
                                update.header(), update.data(), ViewerCasesTest.framebuffer(life));
                    }
                    body.run(file);
                });
    }

    private ChildJvm jvm() {
        return new ChildJvm(Path.of(System.getProperty("java.home")))
                .property("nn.qv.imagedecoder.path", object);
    }

    private ChildJvm.Result jar(Object... arguments) throws Exception {
        return jvm().option("-jar", jar)
                .run(Arrays.stream(arguments).map(Object::toString).toArray(String[]::new));
    }

    private void recordings() {
        test(
                "a recording that plays as recorded gives status 0",
                file ->
                        jar("replay", file)
                                .expectStatus(0)
                                .expectSays("1 updates in ")
                                .expectSays("0 failed, 1 pictures compared, 0 differ"));
        test(
                "it plays in real time, too",
                file -> jar("replay", "--realtime", file).expectStatus(0).expectSays("0 differ"));
        test(
                "a cut one is played up to the cut and gives status 5",
                file -> {
                    byte[] bytes = Files.readAllBytes(file);
                    Files.write(file, Arrays.copyOf(bytes, bytes.length - 3));
                    jar("replay", file)
                            .expectStatus(5)
                            .expectSays("1 updates in ")
                            .expectSays("The recording is cut in the record at byte");
                });
        test(
                "a damaged one gives status 5",
                file -> {
                    byte[] bytes = Files.readAllBytes(file);
                    Bits.flip(bytes, 8 * 60);
                    Files.write(file, bytes);
                    jar("replay", file).expectStatus(5).expectSays("is damaged at byte 40");
                });
        run.test(
                "numbers do not follow the locale",
                file -> {
                    Files.write(file, RecordingFileTest.exampleOfAnotherPicture());
                    for (String[] locale : new String[][] {{"de", "DE"}, {"ar", "EG"}}) {
                        String said =
                                jvm()
                                        .property("user.language", locale[0])
                                        .property("user.country", locale[1])
                                        .option("-jar", jar)
                                        .run("replay", file.toString())
                                        .output();
                        TestRun.expect(
TIME.matcher(said).find(), said);
                    }
                });
    }

    private void differences() {
        expectReason(
                "an update that cannot be decoded any more gives its reason and status 3",
                3,
                RecordingFileTest.exampleThatFails(),
                "update 0: The rectangle of ICT update 4096x16 at (0, 0) of quality 10 is larger"
                        + " than the framebuffer of 16x16; when it was recorded, it could be"
                        + " decoded\n1 updates in ");
        expectReason(
                "one of which nothing says whether it failed before gives status 3 as well",
                3,
                RecordingFileTest.exampleThatFailsWithoutResult(),
                "update 0: The rectangle of ICT update 4096x16 at (0, 0) of quality 10 is larger"
                        + " than the framebuffer of 16x16; whether it failed when it was recorded"
                        + " is unknown\n1 updates in ");
        expectReason(
                "an update that had failed and is decoded now gives status 4",
                4,
                RecordingFileTest.exampleOfRecordedFailure(),
                "update 0: 16x16 at (0, 0) of quality 10: the update was decoded, and failed when"
                        + " it was recorded\n1 updates in ");
        expectReason(
                "another changed area gives status 4",
                4,
                RecordingFileTest.exampleOfAnotherResult(),
                "update 0: 16x16 at (0, 0) of quality 10: changed nothing, recorded is 16x16 at"
                        + " (0, 0)\n1 updates in ");
        expectReason(
                "another picture gives status 4",
                4,
                RecordingFileTest.exampleOfAnotherPicture(),
                "update 0: 16x16 at (0, 0) of quality 10: the picture differs from the recorded"
                        + " one\n1 updates in ");
        run.test(
                "a picture of other kernels alone cannot be compared, which gives status 4",
                file -> {
                    Files.write(file, RecordingFileTest.exampleWithOtherKernels());
                    jar("replay", file)
                            .expectStatus(4)
                            .expectSays("0 pictures compared")
                            .expectSays("The recording holds nothing that can be compared here");
                });
        test(
                "an update that failed when it was recorded and fails again gives status 0",
                file -> {
                    Files.delete(file);
                    try (ScreenDecoder decoder =
                            ScreenDecoder.open(life.options().forViewer().record(file).build())) {
                        TestRun.expectThrown(
                                UpdateException.class,
                                () ->
                                        decoder.decode(
                                                life.steps().get(0).update().header(),
                                                new byte[1],
                                                ViewerCasesTest.framebuffer(life)));
                    }
                    jar("replay", file)
                            .expectStatus(0)
                            .expectSays("no more bytes!, as when it was recorded\n1 updates in ")
                            .expectSilentOn("WARNING");
                });
    }

    /** The output begins with the reason: there is no log line before it. */
    private void expectReason(String sentence, int status, byte[] recording, String reason) {
        run.test(
                sentence,
                file -> {
                    Files.write(file, recording);
                    ChildJvm.Result result = jar("replay", file).expectStatus(status);
                    TestRun.expect(result.output().startsWith(reason), result.output());
                });
    }

    private void files() {
        run.test(
                "a file that cannot be played gives status 2 and one line that names it",
                file -> {
                    expectOneLine(file + ": no such file", file);
                    Path folder = file.getParent();
                    expectOneLine(folder + ": is a folder", folder);
                    Files.writeString(file, "something else");
                    expectOneLine(file + " is no recording", file);
                });
        run.test(
                "output that cannot be written gives status 2",
                file -> {
                    String[] toFullDevice = {"sh", "-c", "exec \"$@\" >/dev/full", "sh"};
                    jvm().option("-jar", jar)
                            .within(toFullDevice)
                            .run("--help")
                            .expectStatus(2)
                            .expectSays("The standard output cannot be written");
                });
    }

    private void expectOneLine(String start, Path file) throws Exception {
        ChildJvm.Result result = jar("replay", file).expectStatus(2);
        TestRun.expect(result.output().startsWith("imagedecoder: " + start), result.output());
        TestRun.expectEqual(1L, result.output().lines().count(), "lines of " + result.output());
    }

    private void arguments() {
        run.test(
                "help goes to the standard output with status 0",
                file -> jar("--help").expectStatus(0).expectSays("usage:"));
        run.test(
                "no arguments give status 1 and the usage",
                file -> jar().expectStatus(1).expectSays("usage:"));
        run.test(
                "version prints the jar's version and where the library is",
                file ->
                        jar("version")
                                .expectStatus(0)
                                .expectSays("imagedecoder " + version + "\n")
                                .expectSays("interface version 9, " + object));
        run.test(
                "version prints the jar's version even if the library cannot be loaded",
                file ->
                        new ChildJvm(Path.of(System.getProperty("java.home")))
                                .property("nn.qv.imagedecoder.path", file)
                                .option("-jar", jar)
                                .run("version")
                                .expectStatus(2)
                                .expectSays("imagedecoder " + version + "\n")
                                .expectSays("The native image decoder cannot be loaded"));
        run.test(
                "wrong arguments give status 1, the mistake and where help is",
                file -> {
                    for (String[] wrong :
                            new String[][] {
                                {"Unknown command: play", "play"},
                                {"replay needs a recording", "replay"},
                                {"Unknown option: --fast", "replay", "--fast", "x"},
                                {"--threads needs a number from 1 to 64", "replay", "--threads"},
                                {"a number from 1 to 64", "replay", "--threads", "many", "x"},
                                {"a number from 1 to 64", "replay", "--threads", "65", "x"},
                                {"a number from 1 to 64", "replay", "--threads", "-1", "x"},
                                {"One recording at a time: y", "replay", "x", "y"}
                            }) {
                        jar((Object[]) Arrays.copyOfRange(wrong, 1, wrong.length))
                                .expectStatus(1)
                                .expectSays("imagedecoder: ")
                                .expectSays(wrong[0])
                                .expectSays("Try: java -jar imagedecoder.jar --help");
                    }
                });
    }
}
