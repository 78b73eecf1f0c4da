package nn.qv.imagedecoder.internal;

import java.lang.System.Logger;
import java.lang.System.Logger.Level;
import java.util.Arrays;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/**
 * The library's end of a decoder: gives out one update's bytes, remembers them, and takes the log.
 * Native objects hold it for as long as they live, so it must not lead to the decoder's face.
 *
 * <p>None of the methods that the library calls may throw; what a source throws waits in {@link
 * #failure}.
 */
public final class UpdateFeed extends NativeImageDecodingHelper {
    private static final Logger LOGGER = System.getLogger("nn.qv.imagedecoder");
    private static final int KEPT_CAPACITY = 1 << 20;

    private ByteSource source;
    private byte[] delivered = new byte[0];
    private int deliveredBytes;
    private int pieces;
    private int returnedBytes;
    private int returnedOffset;
    private boolean ended;
    private Throwable failure;
    private String failureLine;
    private long nanos;

    /** Starts an update. */
    public void begin(ByteSource updateSource) {
        source = updateSource;
        deliveredBytes = 0;
        pieces = 0;
        returnedBytes = 0;
        returnedOffset = 0;
        ended = false;
        failure = null;
        failureLine = null;
        nanos = 0;
    }

    /** Ends an update: the source is forgotten, and the bytes if they are many. */
    public void end() {
        source = null;
        failure = null;
        if (delivered.length > KEPT_CAPACITY) {
            delivered = new byte[0];
        }
    }

    /** What the source threw, or an error from the log; null if there was none. */
    public Throwable failure() {
        return failure;
    }

    /** What the library logged about the update, null if it has not failed. */
    public String failureLine() {
        return failureLine;
    }

    /** Whether the source has reported its end. */
    public boolean ended() {
        return ended;
    }

    /** Time spent in the source since the update began. */
    public long nanos() {
        return nanos;
    }

    /** How many bytes were delivered and not handed back. */
    public int consumedBytes() {
        return deliveredBytes - returnedBytes;
    }

    /**
     * Whether a byte of the piece before the last one may be missing in what was handed back. A bit
     * reader that has looked ahead across the start of a piece can hand back no more than that
     * piece.
     */
    public boolean consumedTooMuch() {
        return pieces > 1 && returnedBytes > 0 && returnedOffset == 0;
    }

    /** A copy of the first bytes that were delivered. */
    public byte[] delivered(int count) {
        return Arrays.copyOf(delivered, count);
    }

    /** A copy of all bytes that were delivered. */
    public byte[] delivered() {
        return delivered(deliveredBytes);
    }

    @Override
    protected void print(String line) {
        if (source != null) {
            failureLine = line;
        }
        try {
            LOGGER.log(Level.DEBUG, line);
        } catch (RuntimeException e) {
            // A broken log handler must not end the update, let alone the process.
        } catch (Error e) {
            failure = e; // Thrown once the native method has returned.
        }
    }

    @Override
    protected int read(byte[] target, int capacity) {
        long start = System.nanoTime();
        try {
            int count = source.read(target, capacity);
            ended = count < 0;
            if (ended) {
                return 0;
            }
            remember(target, count);
            return count;
        } catch (Throwable e) {
            failure = e;
            return -1;
        } finally {
            nanos += System.nanoTime() - start;
        }
    }

    @Override
    protected void stall(byte[] from, int offset, int count) {
        returnedOffset = offset;
        returnedBytes = count;
    }

    private void remember(byte[] target, int count) {
        int end = Math.addExact(deliveredBytes, count);
        if (end > delivered.length) {
            delivered = Arrays.copyOf(delivered, (int) Math.max(end, 2L * delivered.length));
        }
        System.arraycopy(target, 0, delivered, deliveredBytes, count);
        deliveredBytes = end;
        pieces++;
    }
}
