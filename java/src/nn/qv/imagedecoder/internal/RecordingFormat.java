package nn.qv.imagedecoder.internal;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.util.zip.CRC32;

/** The numbers of a recording's bytes; docs/recording.md describes them. */
public final class RecordingFormat {
    public static final byte[] MAGIC = {'R', 'C', 'R', 'E', 'C', '\r', '\n', 0x1A};
    public static final byte[] RECORD_MAGIC = {'R', 'C', 'R'};
    /** The version of new files. */
    public static final int VERSION = 2;
    /** The version before, which knows one decoder alone. */
    public static final int VERSION_OF_ONE_DECODER = 1;
    public static final int HEADER_BYTES = 40;
    public static final int SETTINGS_BYTES = 8;
    public static final int RECORD_HEADER_BYTES = 8;
    public static final int CRC_BYTES = 4;
    public static final int MOST_BODY_BYTES = 0x3FFFFFFF;

    public static final int UPDATE = 1;
    public static final int SETTINGS = 2;
    public static final int PICTURE = 3;
    /** From version 2 on. */
    public static final int DECODER = 4;
    public static final int INDEX = 128;
    public static final int NOTE = 129;
    /** A reader that does not know a type from here on passes over its records. */
    public static final int FIRST_OPTIONAL = 128;

    /** What every update has; version 2 appends the decoder's index. */
    public static final int LEAST_UPDATE_FIELDS_BYTES = 36;
    public static final int UPDATE_FIELDS_BYTES = 40;
    public static final int RESULT_KNOWN = 1;
    public static final int COVERS_NOTHING = 0;
    public static final int COVERS_FRAMEBUFFER = 1;
    public static final int COVERS_RECTANGLE = 2;

    public static final int DECODER_BYTES = 12;
    public static final int MOST_DECODERS = 256;

    public static final int PICTURE_FIELDS_BYTES = 8;
    public static final int COMPRESSION_NONE = 0;
    public static final int COMPRESSION_ZLIB = 1;

    private RecordingFormat() {}

    public static ByteBuffer allocate(int bytes) {
        return ByteBuffer.allocate(bytes).order(ByteOrder.LITTLE_ENDIAN);
    }

    /** CRC-32 of an array's first bytes. */
    public static int crc(byte[] bytes, int count) {
        CRC32 crc = new CRC32();
        crc.update(bytes, 0, count);
        return (int) crc.getValue();
    }
}
