package nn.qv.imagedecoder.internal;

import java.io.IOException;

/**
 * Where the bytes of one update come from. They are read in pieces, perhaps more of them than the
 * update has; {@link #settle} says how many it had.
 */
public interface ByteSource {
    /** Gets ready for the first read. The decoder is reserved for this update from here on. */
    default void open() throws IOException {}

    /**
     * Stores the next bytes at the start of the target.
     *
     * @param capacity the most bytes to store, at least 1
     * @return how many bytes were stored, at least 1; -1 if there are no more
     */
    int read(byte[] target, int capacity) throws IOException;

    /** How many bytes there are at most, if that is known; otherwise Integer.MAX_VALUE. */
    int most();

    /**
     * Ends the reading: the update had that many of the bytes read, counted from the first one. All
     * that follow belong to the next message. If it failed, the number is -1.
     */
    void settle(int consumed) throws IOException;

    /** Whether the source stands after the update although that failed. */
    default boolean inStepAfterFailure() {
        return false;
    }

    /** Whether its end is that of a stream or channel, and not merely of the bytes in memory. */
    default boolean endsConnection() {
        return false;
    }
}
