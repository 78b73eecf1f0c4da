package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Path;

/** What the tests of loading share: JVMs of their own that find only what a test gives them. */
abstract class LoadingFixture {
    static final String PATH = "nn.qv.imagedecoder.path";
    static final String EXTRACT = "nn.qv.imagedecoder.extract";
    static final String PROBE = LoadingProbe.class.getName();

    final TestRun run = new TestRun();
    final Path jar;
    final Path testJar;
    final Path object;
    final Path otherVersion;

    /**
     * From a program's arguments: the jar, the jar of the tests, the shared object, one that speaks
     * another version of the interface.
     */
    LoadingFixture(String[] arguments) {
        jar = Path.of(arguments[0]);
        testJar = Path.of(arguments[1]);
        object = Path.of(arguments[2]);
        otherVersion = Path.of(arguments[3]);
    }

    interface Body {
        void run(Scratch scratch) throws Exception;
    }

    final void test(String sentence, Body body) {
        run.test(
                sentence,
                () -> {
                    try (Scratch scratch = Scratch.make()) {
                        body.run(scratch);
                    }
                });
    }

    /** A JVM that finds nothing but what the jar brings, with all its folders in the scratch. */
    final ChildJvm bare(Scratch scratch, Path theJar) throws IOException {
        return new ChildJvm(Path.of(System.getProperty("java.home")))
                .property("java." + "library.path", scratch.folder("empty"))
                .property("java.io.tmpdir", scratch.folder("tmp"))
                .property("user.home", scratch.folder("home"))
                .property("user.name", "tester")
                .environment("XDG_CACHE_HOME", scratch.folder("cache"))
                .option("-cp", theJar + ":" + testJar);
    }

    final ChildJvm bare(Scratch scratch) throws IOException {
        return bare(scratch, jar);
    }
}
