package nn.qv.imagedecoder.internal;

/**
 * The arrays through which the library gets an update's bytes: one of each size, made when it is
 * first needed, because the library copies the array whole for every update.
 */
public final class TransferArrays {
    private static final int LEAST_BYTES = 1 << 12;
    private static final int SIZES = 5;

    private final byte[][] arrays = new byte[SIZES][];

    /** The smallest array that holds the bytes, or the largest one, which takes them in pieces. */
    public byte[] forBytes(int bytes) {
        int size = 0;
        while (size < SIZES - 1 && LEAST_BYTES << size < bytes) {
            size++;
        }
        if (arrays[size] == null) {
            arrays[size] = new byte[LEAST_BYTES << size];
        }
        return arrays[size];
    }
}
