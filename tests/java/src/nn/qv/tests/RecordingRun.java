package nn.qv.tests;

import java.nio.file.Path;

/** A test program's sentences about recordings, each with a place for a file of its own. */
final class RecordingRun {
    /** One test: returns if it holds, throws what it found otherwise. */
    interface Body {
        void run(Path file) throws Exception;
    }

    private final TestRun run = new TestRun();

    void test(String sentence, Body body) {
        run.test(
                sentence,
                () -> {
                    try (Scratch scratch = Scratch.make()) {
                        body.run(scratch.resolve("connection.rcrec"));
                    }
                });
    }

    /** As {@link TestRun#finish}. */
    void finish() {
        run.finish();
    }
}
