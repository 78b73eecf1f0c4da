package nn.qv.imagedecoder.internal;

import java.nio.ByteBuffer;

/** Bytes in memory; the buffer's position moves past the update, and stays if that fails. */
public final class BufferSource implements ByteSource {
    private final ByteBuffer buffer;
    private int start;
    private int position;

    /**
     * The update begins at the buffer's position; what follows up to its limit may belong to it.
     */
    public BufferSource(ByteBuffer buffer) {
        this.buffer = buffer;
    }

    @Override
    public void open() {
        start = buffer.position();
        position = start;
    }

    @Override
    public int read(byte[] target, int capacity) {
        int count = Math.min(capacity, buffer.limit() - position);
        if (count == 0) {
            return -1;
        }
        buffer.get(position, target, 0, count);
        position += count;
        return count;
    }

    @Override
    public int most() {
        return buffer.limit() - start;
    }

    @Override
    public void settle(int consumed) {
        if (consumed >= 0) {
            buffer.position(start + consumed);
        }
    }
}
