package nn.qv.tests;

import java.io.IOException;
import java.io.Reader;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Properties;

/**
 * How the library gets along with the flags for native code, and what it says to its user in a JVM
 * that guards it, which is one of version 24 or later. Arguments: the home of a JDK, the jar, the
 * jar of the tests, the shared object.
 */
final class NativeAccessTest {
    private static final String PROBE = LoadingProbe.class.getName();
    private static final int FIRST_GUARDING = 24;
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

    public static void main(String[] arguments) throws IOException {
        NativeAccessTest tests = new NativeAccessTest(arguments);
        tests.enabled();
        if (tests.guards()) {
            tests.deniedOnClassPath();
            tests.deniedOnModulePath();
        }
        tests.run.finish();
    }

    /** By the JDK's own note of its version. */
    private boolean guards() throws IOException {
        Properties release = new Properties();
        try (Reader in = Files.newBufferedReader(home.resolve("release"))) {
            release.load(in);
        }
        String version = release.getProperty("JAVA_VERSION").replace("\"", "");
        return Runtime.Version.parse(version).feature() >= FIRST_GUARDING;
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

    /** The flags are the same for every version from 17 on. */
    private void enabled() {
        test(
                "enabled on the class path it is loaded without a warning",
                scratch ->
                        jvm(scratch)
                                .option("--enable-native-access=ALL-UNNAMED")
                                .option("-cp", jar + ":" + testJar)
                                .run(PROBE)
                                .expectSays("serves: " + object)
                                .expectSilentOn("java.lang.System::load"));
        test(
                "enabled on the module path it is loaded without a warning",
                scratch ->
                        modular(scratch)
                                .option("--enable-native-access=" + MODULE)
                                .run("-cp", testJar, PROBE)
                                .expectSays("serves: " + object)
                                .expectSilentOn("java.lang.System::load"));
    }

    private void deniedOnClassPath() {
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

    private void deniedOnModulePath() {
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
