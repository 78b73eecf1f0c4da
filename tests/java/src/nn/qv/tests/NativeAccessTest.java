package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Path;

/**
 * What a JVM that guards native code says to the library, and the library to its user. Arguments:
 * the home of a JDK of at least version 24, the jar, the jar of the tests, the shared object.
 */
final class NativeAccessTest {
    private static final String PROBE = LoadingProbe.class.getName();
    private static final String DENY = "--illegal-native-access=deny";
    private static final String MODULE = "nn.qv.imagedecoder";

    private final TestRun run = new TestRun();
    private final Path home;
    private final String jar;
    private final String testJar;
    private final String object;

    private NativeAccessTest(String[] arguments) {
        home = Path.of(arguments[0]);
        jar = arguments[1];
        testJar = arguments[2];
        object = arguments[3];
    }

    public static void main(String[] arguments) {
        NativeAccessTest tests = new NativeAccessTest(arguments);
        tests.classPath();
        tests.modulePath();
        tests.run.finish();
    }

    private ChildJvm jvm(Scratch scratch) throws IOException {
        return new ChildJvm(home)
                .environment("XDG_CACHE_HOME", scratch.folder("cache"))
                .property("nn.qv.imagedecoder.path", object);
    }

    private interface Body {
        void run(Scratch scratch) throws Exception;
    }

    private void test(String sentence, Body body) {
        run.test(
                sentence,
                () -> {
                    try (Scratch scratch = Scratch.make()) {
                        body.run(scratch);
                    }
                });
    }

    private void classPath() {
        String both = jar + ":" + testJar;
        test(
                "denied on the class path, the message names the flag that is missing",
                scratch ->
                        jvm(scratch)
                                .option(DENY, "-cp", both)
                                .run(PROBE)
                                .expectSays("message: The native image decoder cannot be loaded")
                                .expectSays("Start it with --enable-native-access=ALL-UNNAMED")
                                .expectSilentOn("serves: "));
        test(
                "with that flag it is loaded without a warning",
                scratch ->
                        jvm(scratch)
                                .option(DENY, "--enable-native-access=ALL-UNNAMED", "-cp", both)
                                .run(PROBE)
                                .expectSays("serves: " + object)
                                .expectSilentOn("WARNING"));
        test(
                "without any flag it is loaded, and the JVM warns",
                scratch ->
                        jvm(scratch)
                                .option("-cp", both)
                                .run(PROBE)
                                .expectSays("serves: " + object)
                                .expectSays("WARNING"));
        test(
                "launched by itself the jar needs no flag",
                scratch ->
                        jvm(scratch)
                                .option(DENY, "-jar", jar)
                                .run("version")
                                .expectStatus(0)
                                .expectSays("interface version 9, " + object)
                                .expectSilentOn("WARNING"));
    }

    private void modulePath() {
        test(
                "denied on the module path, the message names the module",
                scratch ->
                        modular(scratch)
                                .option(DENY)
                                .run("-cp", testJar, PROBE)
                                .expectSays("Start it with --enable-native-access=" + MODULE)
                                .expectSilentOn("serves: "));
        test(
                "with the module enabled it is loaded without a warning",
                scratch ->
                        modular(scratch)
                                .option(DENY, "--enable-native-access=" + MODULE)
                                .run("-cp", testJar, PROBE)
                                .expectSays("serves: " + object)
                                .expectSilentOn("WARNING"));
    }

    private ChildJvm modular(Scratch scratch) throws IOException {
        return jvm(scratch).option("--module-path", jar, "--add-modules", MODULE);
    }
}
