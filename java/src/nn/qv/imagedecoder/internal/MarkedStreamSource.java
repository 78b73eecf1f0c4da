package nn.qv.imagedecoder.internal;

import java.io.IOException;
import java.io.InputStream;

/**
 * An update of unknown length from a stream that can go back: it is left right after the update, or
 * where the update began if that fails.
 */
public final class MarkedStreamSource implements ByteSource {
    private final InputStream in;
    private final SourceReads reads;

    /** The stream must support marks. */
    public MarkedStreamSource(InputStream in, SourceReads reads) {
        this.in = in;
        this.reads = reads;
    }

    @Override
    public void open() {
        in.mark(Integer.MAX_VALUE);
    }

    @Override
    public int read(byte[] target, int capacity) throws IOException {
        return reads.read(() -> in.read(target, 0, capacity));
    }

    @Override
    public int most() {
        return Integer.MAX_VALUE;
    }

    @Override
    public void settle(int consumed) throws IOException {
        in.reset();
        in.skipNBytes(Math.max(0, consumed));
        in.mark(0); // Lets the stream forget the update's bytes.
    }

    @Override
    public boolean endsConnection() {
        return true;
    }
}
