package nn.qv.tests;

import java.util.ArrayList;
import java.util.List;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/**
 * Gives out the bytes of one update after another in pieces, takes unread ones back, and keeps the
 * log.
 */
class MemoryFeed extends NativeImageDecodingHelper {
    private final List<String> log = new ArrayList<>();
    private byte[] bytes = new byte[0];
    private int position;

    /** Starts over with the bytes of one update. */
    void begin(byte[] updateBytes) {
        bytes = updateBytes;
        position = 0;
    }

    /** How many bytes of the update were taken and not handed back. */
    int consumedBytes() {
        return position;
    }

    /** The log lines since the last call of this method, oldest first. */
    List<String> takeLog() {
        List<String> lines = List.copyOf(log);
        log.clear();
        return lines;
    }

    @Override
    protected void print(String line) {
        log.add(line);
    }

    @Override
    protected int read(byte[] target, int capacity) {
        int count = Math.min(capacity, bytes.length - position);
        System.arraycopy(bytes, position, target, 0, count);
        position += count;
        return count;
    }

    @Override
    protected void stall(byte[] source, int offset, int count) {
        position -= count;
    }
}
