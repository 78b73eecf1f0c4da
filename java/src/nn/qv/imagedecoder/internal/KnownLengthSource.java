package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.channels.Channels;
import java.nio.channels.ReadableByteChannel;
import java.util.Arrays;

/**
 * An update of known length, read completely from a stream or channel before it is decoded. Whether
 * it can be decoded or not, the next message comes next.
 */
public final class KnownLengthSource implements ByteSource {
    private static final int FIRST_CAPACITY = 1 << 16;

    private final InputStream in;
    private final int length;
    private final SourceReads reads;
    private BufferSource bytes;

    /** Reads from a stream. */
    public KnownLengthSource(InputStream in, int length, SourceReads reads) {
        this.in = in;
        this.length = length;
        this.reads = reads;
    }

    /** Reads from a channel in blocking mode. */
    public KnownLengthSource(ReadableByteChannel channel, int length, SourceReads reads) {
        this(Channels.newInputStream(channel), length, reads);
    }

    @Override
    public void open() throws IOException {
        BufferSource complete = new BufferSource(ByteBuffer.wrap(readAll(), 0, length));
        complete.open();
        bytes = complete;
    }

    /** Memory grows with what arrives, because the length may be wrong. */
    private byte[] readAll() throws IOException {
        byte[] target = new byte[Math.min(length, FIRST_CAPACITY)];
        int count = 0;
        while (count < length) {
            if (count == target.length) {
                target = Arrays.copyOf(target, (int) Math.min(length, 2L * count));
            }
            count += readSome(target, count);
        }
        return target;
    }

    private int readSome(byte[] target, int from) throws IOException {
        int count = reads.read(() -> in.read(target, from, target.length - from));
        if (count < 0) {
            throw new SourceEndedException(from, length);
        }
        return count;
    }

    @Override
    public int read(byte[] target, int capacity) {
        return bytes.read(target, capacity);
    }

    @Override
    public int most() {
        return bytes.most();
    }

    @Override
    public void settle(int consumed) {
        // All of it has been read already.
    }

    @Override
    public boolean inStepAfterFailure() {
        return bytes != null;
    }
}
