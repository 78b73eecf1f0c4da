package nn.qv.tests;

import java.util.concurrent.TimeUnit;

/** Ends the JVM when a step takes too long: nothing else can end a hanging native method. */
final class Watchdog {
    /** Exit status of a JVM that the watchdog ended. */
    static final int STATUS = 86;

    private static final long IDLE = Long.MAX_VALUE;

    private final String run;
    private final long limitNanos;
    private volatile long started = IDLE;
    private volatile long life;
    private volatile int update;

    /**
     * @param run what to name beside the step
     * @param limitSeconds how long a step may take
     */
    Watchdog(String run, int limitSeconds) {
        this.run = run;
        limitNanos = TimeUnit.SECONDS.toNanos(limitSeconds);
        Thread thread = new Thread(this::watch, "watchdog");
        thread.setDaemon(true);
        thread.start();
    }

    /** A step begins: an update in a decoder's life, or its creation or end as update -1. */
    void begin(long ofLife, int ofUpdate) {
        life = ofLife;
        update = ofUpdate;
        started = System.nanoTime();
    }

    void end() {
        started = IDLE;
    }

    private void watch() {
        while (true) {
            long since = started;
            if (since != IDLE && System.nanoTime() - since > limitNanos) {
                System.out.println("HANG " + run + " life " + life + " update " + update);
                System.out.flush();
                Runtime.getRuntime().halt(STATUS);
            }
            try {
                Thread.sleep(200);
            } catch (InterruptedException e) {
                return;
            }
        }
    }
}
