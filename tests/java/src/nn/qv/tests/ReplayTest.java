package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import nn.qv.imagedecoder.ScreenDecoder;

/**
 * What {@code java -jar imagedecoder.jar} says of recordings. Arguments: the folder of the case
 * files, the jar, the shared object.
 */
final class ReplayTest {
    private final RecordingRun run = new RecordingRun();
    private final CaseFile life;
    private final String jar;
    private final String object;

    private ReplayTest(String[] arguments) throws IOException {
        life = CaseFile.loadAll(Path.of(arguments[0])).get(0);
        jar = arguments[1];
        object = arguments[2];
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        ReplayTest tests = new ReplayTest(arguments);
        tests.recordings();
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

    private ChildJvm.Result jar(Object... arguments) throws Exception {
        return new ChildJvm(Path.of(System.getProperty("java.home")))
                .property("nn.qv.imagedecoder.path", object)
                .option("-jar", jar)
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
                "a cut one is played up to the cut, which is told",
                file -> {
                    byte[] bytes = Files.readAllBytes(file);
                    Files.write(file, Arrays.copyOf(bytes, bytes.length - 3));
                    jar("replay", file).expectStatus(0).expectSays("The recording is CUT at byte");
                });
        test(
                "a damaged one gives status 1",
                file -> {
                    byte[] bytes = Files.readAllBytes(file);
                    Bits.flip(bytes, 8 * 60);
                    Files.write(file, bytes);
                    jar("replay", file).expectStatus(1).expectSays("DAMAGED at byte 40");
                });
        test(
                "what is no recording gives status 3",
                file -> {
                    Files.writeString(file, "something else");
                    jar("replay", file).expectStatus(3).expectSays("is no recording");
                });
    }

    private void arguments() {
        run.test(
                "help goes to the standard output with status 0",
                file -> jar("--help").expectStatus(0).expectSays("usage:"));
        run.test(
                "wrong arguments give status 2 and the usage",
                file -> {
                    for (Object[] wrong :
                            new Object[][] {
                                {},
                                {"play"},
                                {"replay"},
                                {"replay", "--fast", "x"},
                                {"replay", "--threads"},
                                {"replay", "--threads", "many", "x"},
                                {"replay", "x", "y"}
                            }) {
                        jar(wrong).expectStatus(2).expectSays("usage:");
                    }
                });
    }
}
