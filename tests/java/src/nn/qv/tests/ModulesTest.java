package nn.qv.tests;

import java.nio.file.Path;

/**
 * The jar with and without the modules that it can use, on both paths, in JVMs of their own.
 * Arguments: the jar, the jar of the tests, the shared object.
 */
final class ModulesTest {
    private static final String PROBE = LoadingProbe.class.getName();
    private static final String MODULE = "nn.qv.imagedecoder";

    private ModulesTest() {}

    public static void main(String[] arguments) {
        String jar = arguments[0];
        String testJar = arguments[1];
        String object = arguments[2];
        TestRun run = new TestRun();
        run.test(
                "on the class path java.base alone suffices",
                () ->
                        jvm(object)
                                .option("--limit-modules", "java.base")
                                .option("-cp", jar + ":" + testJar)
                                .run(PROBE)
                                .expectSays("serves: "));
        run.test(
                "on the module path java.base alone suffices",
                () ->
                        jvm(object)
                                .option("--limit-modules", "java.base," + MODULE)
                                .option("--module-path", jar, "--add-modules", MODULE)
                                .run("-cp", testJar, PROBE)
                                .expectSays("serves: "));
        run.test(
                "the module asks for nothing but the JDK and keeps its inner package to itself",
                () ->
                        jvm(object)
                                .option("--module-path", jar)
                                .run("--describe-module", MODULE)
                                .expectSays("exports nn.qv.imagedecoder\n")
                                .expectSays("exports nn.qv.rccore.impl.rfb.img.hive\n")
                                .expectSays("requires java.base mandated")
                                .expectSays("requires java.desktop ")
                                .expectSilentOn("requires java.desktop\n")
                                .expectSays("requires jdk.jfr static")
                                .expectSays("contains nn.qv.imagedecoder.internal"));
        run.finish();
    }

    private static ChildJvm jvm(String object) {
        return new ChildJvm(Path.of(System.getProperty("java.home")))
                .property("nn.qv.imagedecoder.path", object);
    }
}
