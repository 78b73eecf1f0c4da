package nn.qv.tests;

import java.util.ArrayList;
import java.util.List;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * Where a macroblock's record stands in an update whose records are cut for a thread pool: it
 * begins with a skip code, on a whole byte, and goes on with its length field and the macroblock.
 *
 * @param start its first byte
 * @param end the byte behind it
 * @param lengthBit first bit of the length's value
 * @param lengthBits bits of that value
 */
record PoolRecord(int start, int end, int lengthBit, int lengthBits) {
    private static final int ICT_LENGTH_BITS = 8;
    private static final int LBE_SHORT_LENGTH_BITS = 7;
    private static final int LBE_LONG_LENGTH_BITS = 10;

    /** First bit of the macroblock itself. */
    int bodyBit() {
        return lengthBit + lengthBits;
    }

    /** The records up to the first that is not cut, from protocol version 2. */
    static List<PoolRecord> of(NativeCodec codec, byte[] data, int payloadBytes) {
        List<PoolRecord> records = new ArrayList<>();
        int start = 0;
        while (start < payloadBytes) {
            PoolRecord record = at(start, codec, data);
            if (record == null || record.end > payloadBytes) {
                break;
            }
            records.add(record);
            start = record.end;
        }
        return records;
    }

    private static PoolRecord at(int start, NativeCodec codec, byte[] data) {
        int bit = 8 * start;
        if (Bits.get(data, bit, 18) == 0x3FFFF) {
            return null;
        }
        int skipCodeBits = Bits.get(data, bit) == 0 ? 1 : Bits.get(data, bit + 1, 1) == 0 ? 8 : 18;
        int lengthBit = bit + skipCodeBits;
        int lengthBits = ICT_LENGTH_BITS;
        if (codec == NativeCodec.LBE) {
            boolean isLong = Bits.get(data, lengthBit, 1) == 1;
            lengthBit++;
            lengthBits = isLong ? LBE_LONG_LENGTH_BITS : LBE_SHORT_LENGTH_BITS;
        }
        int length = Bits.get(data, lengthBit, lengthBits);
        return length == 0 ? null : new PoolRecord(start, start + length, lengthBit, lengthBits);
    }
}
