package nn.qv.tests;

import java.io.ByteArrayOutputStream;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.util.HexFormat;
import java.util.zip.CRC32;

/** Puts a recording together, byte by byte, with right checksums. */
final class RecordingBytes {
    static final int UPDATE = 1;
    static final int SETTINGS = 2;
    static final int DECODER = 4;

    /** A 16x16 screen of pixels: no contrast stretch, no post-processing, accelerated kernels. */
    static final String PIXELS = "1000100000000000";

    /** The same of planes. */
    static final String PLANES = "1000100000000100";

    /** Codes of codec, protocol version, chroma subsampling and layout. */
    static final String ICT = "00000000";

    static final String LBE = "01000000";

    private final ByteArrayOutputStream bytes = new ByteArrayOutputStream();

    /** With a header, of which the codes and settings are hexadecimal. */
    RecordingBytes(int version, String codes, String settings) {
        String fixed = "52435245430d0a1a" + u16(version) + u16(40);
        append(fixed + codes + settings + "0000000000000000" + "00000000");
    }

    /** Appends a record of a hexadecimal body. */
    RecordingBytes record(int type, String body) {
        append("524352" + HexFormat.of().toHexDigits((byte) type) + u32(body.length() / 2) + body);
        return this;
    }

    /** Appends a decoder without threads, whose codes are hexadecimal. */
    RecordingBytes decoder(int index, String codes) {
        return record(
                DECODER, HexFormat.of().toHexDigits((byte) index) + codes + "000000" + u32(0));
    }

    /**
     * Appends an update that changes nothing on a blank screen of pixels.
     *
     * @param more what follows the first 36 bytes of its fields, hexadecimal
     */
    RecordingBytes update(String more) {
        int fieldsBytes = 36 + more.length() / 2;
        String rectangle = "00000000" + "10001000";
        String timeAndResult = "0000000000000000" + "0000000000000000";
        String crcOfZeros = "2eafb5ef";
        return record(
                UPDATE,
                u16(fieldsBytes) + "0101" + u32(7) + rectangle + timeAndResult + crcOfZeros + more
                        + "ffff");
    }

    byte[] bytes() {
        return bytes.toByteArray();
    }

    private void append(String hex) {
        byte[] part = HexFormat.of().parseHex(hex);
        CRC32 crc = new CRC32();
        crc.update(part);
        bytes.writeBytes(part);
        bytes.writeBytes(HexFormat.of().parseHex(u32((int) crc.getValue())));
    }

    private static String u16(int value) {
        return u32(value).substring(0, 4);
    }

    private static String u32(int value) {
        byte[] word =
                ByteBuffer.allocate(4).order(ByteOrder.LITTLE_ENDIAN).putInt(value).array();
        return HexFormat.of().formatHex(word);
    }
}
