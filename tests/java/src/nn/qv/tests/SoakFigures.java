package nn.qv.tests;

import java.io.IOException;
import java.util.concurrent.TimeUnit;
import javax.management.JMException;

/** Counts a soak's updates, measures the process meanwhile, and judges the measures at the end. */
final class SoakFigures {
    private static final int LIVES_PER_SAMPLE = 64;
    private static final int SETTLE_SECONDS = 5;

    private final SoakOptions options;
    private long lives;
    private long hostile;
    private long failed;
    private long batches;
    private long startedNanos;
    private double seconds;
    private long startKib;
    private long middleKib = -1;
    private long highestKib;
    private long endKib;
    private int startThreads;
    private int endThreads;
    private long startReferences;
    private long endReferences;
    private boolean complete;

    SoakFigures(SoakOptions options) {
        this.options = options;
    }

    /** Says what the soak is made of. */
    void printPlan(int seeds, int batchesInAll) {
        print(
                "seed %d, JDK %s, %d good updates to spoil, %d batches of systematic mutations",
                options.seed(), System.getProperty("java.version"), seeds, batchesInAll);
    }

    /** To be called when everything that is kept throughout has been made. */
    void begin() throws IOException, JMException {
        ProcessState.globalReferences();
        System.gc();
        startReferences = ProcessState.globalReferences();
        startThreads = ProcessState.threads();
        startKib = ProcessState.residentKib();
        startedNanos = System.nanoTime();
    }

    boolean goesOn() {
        return share() < 1;
    }

    void add(SoakLife.Outcome outcome, boolean systematic) throws IOException {
        lives++;
        hostile += outcome.hostileUpdates();
        failed += outcome.failedUpdates();
        batches += systematic ? 1 : 0;
        if (lives % LIVES_PER_SAMPLE == 0 && share() >= 0.5) {
            long now = ProcessState.residentKib();
            middleKib = middleKib == -1 ? now : middleKib;
            highestKib = Math.max(highestKib, now);
        }
    }

    /** Whether the soak came to its end, so that the measures mean something. */
    boolean complete() {
        return complete;
    }

    void end() throws IOException, JMException, InterruptedException {
        seconds = elapsedSeconds();
        endKib = ProcessState.residentKib();
        highestKib = Math.max(highestKib, endKib);
        settle();
        complete = true;
        print(
                "%d lives, %d hostile updates (%d failed, %d batches) and as many good ones",
                lives, hostile, failed, batches);
        print("%.0f s, %.0f updates a second", seconds, 2 * hostile / seconds);
        print(
                "resident KiB: %d at the start, %d halfway, %d at most since, %d at the end",
                startKib, middleKib, highestKib, endKib);
        print(
                "threads: %d, then %d; global JNI references: %d, then %d",
                startThreads, endThreads, startReferences, endReferences);
    }

    void expectFlatMemory() {
        TestRun.expect(middleKib > 0, "too short to measure");
        long rise = highestKib - middleKib;
        TestRun.expect(rise <= options.toleranceKib(), "rose by " + rise + " KiB");
    }

    void expectThreadsBack() throws IOException {
        TestRun.expectEqual(0, ProcessState.workers(), "worker threads");
        TestRun.expect(endThreads <= startThreads, endThreads + " threads, not " + startThreads);
    }

    void expectReferencesBack() {
        String what = endReferences + " global JNI references, not " + startReferences;
        TestRun.expect(endReferences <= startReferences, what);
    }

    /**
     * A joined thread may still stand in the kernel's list for a moment, and the JVM's compiler
     * holds a global reference while it compiles.
     */
    private void settle() throws IOException, JMException, InterruptedException {
        System.gc();
        long deadline = System.nanoTime() + TimeUnit.SECONDS.toNanos(SETTLE_SECONDS);
        do {
            Thread.sleep(50);
            endThreads = ProcessState.threads();
            endReferences = ProcessState.globalReferences();
        } while ((endThreads > startThreads || endReferences > startReferences)
                && System.nanoTime() < deadline);
    }

    /** How much of the soak is over, 0 to 1. */
    private double share() {
        return options.updates() > 0
                ? (double) hostile / options.updates()
                : elapsedSeconds() / options.seconds();
    }

    private double elapsedSeconds() {
        return (System.nanoTime() - startedNanos) / 1e9;
    }

    private static void print(String format, Object... values) {
        System.out.println("soak: " + String.format(format, values));
    }
}
