package nn.qv.imagedecoder.internal;

import java.util.concurrent.atomic.AtomicLong;

/** Counts what a decoder does: written by the thread that decodes, read by any. */
public final class Counters {
    private final AtomicLong updates = new AtomicLong();
    private final AtomicLong refusals = new AtomicLong();
    private final AtomicLong bytes = new AtomicLong();
    private final AtomicLong feedNanos = new AtomicLong();
    private final AtomicLong decodeNanos = new AtomicLong();

    public void addUpdate(int updateBytes) {
        add(updates, 1);
        add(bytes, updateBytes);
    }

    public void addRefusal() {
        add(refusals, 1);
    }

    public void addNanos(long feed, long decode) {
        add(feedNanos, feed);
        add(decodeNanos, decode);
    }

    public long updates() {
        return updates.get();
    }

    public long refusals() {
        return refusals.get();
    }

    public long bytes() {
        return bytes.get();
    }

    public long feedNanos() {
        return feedNanos.get();
    }

    public long decodeNanos() {
        return decodeNanos.get();
    }

    /** There is one writer at a time, so this needs no atomic read-modify-write. */
    private static void add(AtomicLong counter, long value) {
        counter.lazySet(counter.get() + value);
    }
}
