package nn.qv.imagedecoder.internal;

import java.io.EOFException;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.channels.Channels;
import java.nio.channels.ReadableByteChannel;

/**
 * An update of known length, taken from a stream or channel before it is decoded: whatever becomes
 * of it, the next message is next.
 */
public final class KnownLengthSource implements ByteSource {
    private final BufferSource bytes;

    private KnownLengthSource(ByteBuffer bytes) {
        this.bytes = new BufferSource(bytes);
    }

    /** Reads the update. Its length may be a lie: there is memory for what comes, not for that. */
    public static KnownLengthSource of(InputStream in, int length) throws IOException {
        byte[] bytes = in.readNBytes(length);
        if (bytes.length < length) {
            throw new EOFException(
                    "The stream ended after " + bytes.length + " of " + length + " bytes");
        }
        return new KnownLengthSource(ByteBuffer.wrap(bytes));
    }

    /** Reads the update, likewise. */
    public static KnownLengthSource of(ReadableByteChannel channel, int length)
            throws IOException {
        return of(Channels.newInputStream(channel), length);
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
        bytes.settle(consumed);
    }

    @Override
    public boolean inStepAfterFailure() {
        return true;
    }
}
