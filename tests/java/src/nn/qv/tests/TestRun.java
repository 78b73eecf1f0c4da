package nn.qv.tests;

import java.util.Objects;

/** Runs the tests of one program: prints each by its sentence and ends the JVM with the count. */
final class TestRun {
    /** One test: returns if it holds, throws what it found otherwise. */
    interface Body {
        void run() throws Exception;
    }

    private static final int SKIPPED = 77;

    private int passed;
    private int failed;

    void test(String sentence, Body body) {
        try {
            body.run();
            passed++;
            System.out.println("ok " + sentence);
        } catch (Exception | LinkageError | AssertionError e) {
            failed++;
            System.out.println("FAILED " + sentence + ": " + e);
        }
    }

    /** Ends the JVM with the status of a program that is skipped as a whole. */
    static void skip(String reason) {
        System.out.println("Skipped: " + reason);
        System.exit(SKIPPED);
    }

    /** Prints the count and ends the JVM, with status 1 if a test failed or none was run. */
    void finish() {
        System.out.println(passed + " passed, " + failed + " failed");
        System.exit(failed > 0 || passed == 0 ? 1 : 0);
    }

    static void expectEqual(Object expected, Object actual, String what) {
        if (!Objects.equals(expected, actual)) {
            throw new AssertionError(what + ": expected " + expected + ", got " + actual);
        }
    }

    static void expect(boolean condition, String what) {
        if (!condition) {
            throw new AssertionError(what);
        }
    }

    /** Runs the body, which must throw exactly the given type, and returns what it threw. */
    static <T extends Throwable> T expectThrown(Class<T> type, Body body) throws Exception {
        try {
            body.run();
        } catch (Exception | LinkageError e) {
            expectEqual(type, e.getClass(), "thrown type");
            return type.cast(e);
        }
        throw new AssertionError("expected " + type.getName() + ", but nothing was thrown");
    }
}
