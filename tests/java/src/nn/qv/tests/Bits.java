package nn.qv.tests;

/** Bit fields in a byte array, most significant bit first, as the updates pack them. */
final class Bits {
    private Bits() {}

    static int get(byte[] data, int bit) {
        return data[bit / 8] >> (7 - bit % 8) & 1;
    }

    /** A field of at most 31 bits; bits behind the array's end are 0. */
    static int get(byte[] data, int bit, int count) {
        int value = 0;
        for (int i = bit; i < bit + count; i++) {
            value = value << 1 | (i < 8 * data.length ? get(data, i) : 0);
        }
        return value;
    }

    /** Overwrites a field with the low bits of a value; bits behind the array's end are dropped. */
    static void put(byte[] data, int bit, int count, int value) {
        for (int i = 0; i < count && bit + i < 8 * data.length; i++) {
            if ((value >> (count - 1 - i) & 1) != get(data, bit + i)) {
                flip(data, bit + i);
            }
        }
    }

    static void flip(byte[] data, int bit) {
        data[bit / 8] ^= (byte) (0x80 >> bit % 8);
    }
}
