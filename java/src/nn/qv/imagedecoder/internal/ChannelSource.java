package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.ReadableByteChannel;

/**
 * An update of unknown length from a channel, by way of a buffer that outlives it: bytes between
 * the buffer's position and limit come first, and what was read too much lies there afterwards.
 */
public final class ChannelSource implements ByteSource {
    /** How far an update can look ahead across the start of a piece, generously. */
    private static final int KEPT_BYTES = 8;

    /** The least capacity of the buffer, so that there is room beside what is kept. */
    public static final int LEAST_CAPACITY = 4 * KEPT_BYTES;

    private final ReadableByteChannel channel;
    private final ByteBuffer buffer;
    private final SourceReads reads;
    private int delivered;

    /** The buffer must be writable and have at least the least capacity. */
    public ChannelSource(ReadableByteChannel channel, ByteBuffer buffer, SourceReads reads) {
        this.channel = channel;
        this.buffer = buffer;
        this.reads = reads;
    }

    @Override
    public int read(byte[] target, int capacity) throws IOException {
        if (!buffer.hasRemaining() && !refill()) {
            return -1;
        }
        int count = Math.min(capacity, buffer.remaining());
        buffer.get(target, 0, count);
        delivered += count;
        return count;
    }

    @Override
    public int most() {
        return Integer.MAX_VALUE;
    }

    @Override
    public void settle(int consumed) {
        if (consumed >= 0) {
            buffer.position(buffer.position() - (delivered - consumed));
        }
    }

    @Override
    public boolean endsConnection() {
        return true;
    }

    /** Reads after the last bytes, which may have to be given back. */
    private boolean refill() throws IOException {
        int kept = Math.min(KEPT_BYTES, Math.min(delivered, buffer.position()));
        buffer.position(buffer.position() - kept).compact();
        try {
            return reads.read(() -> channel.read(buffer)) > 0;
        } finally {
            buffer.flip().position(kept);
        }
    }
}
