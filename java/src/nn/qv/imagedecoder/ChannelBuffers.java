package nn.qv.imagedecoder;

import java.lang.ref.WeakReference;
import java.nio.ByteBuffer;
import nn.qv.imagedecoder.internal.ChannelSource;

/** Checks the buffers by way of which a decoder reads from channels. */
final class ChannelBuffers {
    /** The buffer of the last update: the bytes in it come from the channel. */
    private volatile WeakReference<ByteBuffer> known = new WeakReference<>(null);

    /** Throws IllegalArgumentException if a channel cannot be read by way of the buffer. */
    void check(ByteBuffer buffer) {
        if (buffer.isReadOnly() || buffer.capacity() < ChannelSource.LEAST_CAPACITY) {
            throw new IllegalArgumentException(
                    "The channel's buffer must be writable and have at least "
                            + ChannelSource.LEAST_CAPACITY
                            + " bytes");
        }
        if (known.get() != buffer) {
            checkNew(buffer);
            known = new WeakReference<>(buffer);
        }
    }

    /** A buffer as allocated says that its zeros are the update's first bytes. */
    private static void checkNew(ByteBuffer buffer) {
        if (buffer.remaining() == buffer.capacity() && isZero(buffer)) {
            throw new IllegalArgumentException(
                    "The channel's buffer is new: its "
                            + buffer.capacity()
                            + " zeros between position and limit would be decoded as the update's"
                            + " bytes. Call limit(0) on it once, before the first update");
        }
    }

    private static boolean isZero(ByteBuffer buffer) {
        for (int i = 0; i < buffer.limit(); i++) {
            if (buffer.get(i) != 0) {
                return false;
            }
        }
        return true;
    }
}
