package nn.qv.tests;

import java.util.ArrayList;
import java.util.List;

/** A feed that can misbehave in its reads, and writes down what it is handed back. */
final class ScriptedFeed extends MemoryFeed {
    /** What a read gives instead of the update's bytes. */
    interface Read {
        int read(byte[] target, int capacity);
    }

    /** One call of stall. */
    record Stall(byte[] source, int offset, int count) {}

    private final List<Stall> stalls = new ArrayList<>();
    private final List<Integer> capacities = new ArrayList<>();
    private Read scripted;

    /** Replaces the reads until the next call; null brings the update's own bytes back. */
    void script(Read read) {
        scripted = read;
    }

    /** The capacities of all reads so far. */
    List<Integer> capacities() {
        return capacities;
    }

    List<Stall> stalls() {
        return stalls;
    }

    /** The regular read, for scripts that only change its circumstances. */
    int regularRead(byte[] target, int capacity) {
        return super.read(target, capacity);
    }

    @Override
    protected int read(byte[] target, int capacity) {
        capacities.add(capacity);
        return scripted != null ? scripted.read(target, capacity) : regularRead(target, capacity);
    }

    @Override
    protected void stall(byte[] source, int offset, int count) {
        stalls.add(new Stall(source, offset, count));
        super.stall(source, offset, count);
    }
}
