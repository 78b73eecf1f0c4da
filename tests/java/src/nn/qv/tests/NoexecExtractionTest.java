package nn.qv.tests;

import java.io.IOException;
import java.util.Optional;

/**
 * What happens to the shared object in the jar when folders are mounted noexec. Skipped where no
 * such folder can be had.
 */
final class NoexecExtractionTest extends LoadingFixture {
    private NoexecExtractionTest(String[] arguments) {
        super(arguments);
    }

    public static void main(String[] arguments) throws IOException {
        Optional<String> reasonToSkip;
        try (Scratch scratch = Scratch.make();
                NoexecFolder noexec = NoexecFolder.make(scratch.path())) {
            reasonToSkip = noexec.reasonAgainst();
        }
        reasonToSkip.ifPresent(TestRun::skip);
        NoexecExtractionTest tests = new NoexecExtractionTest(arguments);
        tests.folders();
        tests.run.finish();
    }

    private void folders() {
        test(
                "from a folder mounted noexec the extraction moves on to the next",
                scratch -> {
                    try (NoexecFolder noexec = NoexecFolder.make(scratch.path())) {
                        bare(scratch)
                                .within(noexec.wrapper().toArray(String[]::new))
                                .property(EXTRACT, noexec.path())
                                .run(PROBE)
                                .expectSays("serves: " + scratch.resolve("cache"));
                    }
                });
        test(
                "if every folder is mounted noexec, the message says so and what to do",
                scratch -> {
                    try (NoexecFolder noexec = NoexecFolder.make(scratch.path())) {
                        bare(scratch)
                                .within(noexec.wrapper().toArray(String[]::new))
                                .environment("XDG_CACHE_HOME", noexec.path().resolve("cache"))
                                .property("java.io.tmpdir", noexec.path())
                                .run(PROBE)
                                .expectSays("mounted noexec")
                                .expectSays("failed to map segment")
                                .expectSays("set -D" + EXTRACT + "=FOLDER")
                                .expectSilentOn("serves: ");
                    }
                });
    }
}
