package nn.qv.imagedecoder.internal;

import java.io.IOException;

/**
 * Reads from a viewer's stream or channel. Each read checks that the decoder is still open, and
 * reads that return no bytes end in an exception after a while.
 */
public final class SourceReads {
    /** How many reads in succession may return no bytes. */
    public static final int MOST_EMPTY_READS = 1000;

    /** One read: returns a number of bytes, or -1 at the end. */
    public interface Read {
        /** Reads once. */
        int read() throws IOException;
    }

    private final Runnable openCheck;

    /**
     * Makes the reads of one decoder.
     *
     * @param openCheck throws a RuntimeException once the decoder is closed
     */
    public SourceReads(Runnable openCheck) {
        this.openCheck = openCheck;
    }

    /**
     * Reads until there is a byte.
     *
     * @return how many bytes were read, at least 1; -1 at the end
     * @throws IOException if the source throws it, or returns 0 too often
     */
    public int read(Read read) throws IOException {
        for (int i = 0; i < MOST_EMPTY_READS; i++) {
            int count = readOnce(read);
            if (count != 0) {
                return count;
            }
        }
        throw new IOException(
                "The source returned no bytes in "
                        + MOST_EMPTY_READS
                        + " reads in succession; it must wait until it has at least one byte, or"
                        + " return -1 at its end");
    }

    /** A read that was interrupted by closing the decoder reports that, whatever it throws. */
    private int readOnce(Read read) throws IOException {
        openCheck.run();
        try {
            return read.read();
        } finally {
            openCheck.run();
        }
    }
}
