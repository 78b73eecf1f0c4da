package nn.qv.imagedecoder;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.util.function.ToIntFunction;
import java.util.zip.InflaterInputStream;
import nn.qv.imagedecoder.internal.RecordFile;
import nn.qv.imagedecoder.internal.RecordingFormat;

/**
 * Makes sense of a recording's bytes, whose CRC has been checked. Throws RuntimeException where
 * they make none.
 */
final class RecordingParser {
    /** What stands before the records. */
    record Header(
            int version,
            RecordingEntry.Decoder decoder,
            RecordingEntry.Settings settings,
            long startMicros) {
        /** Whether records may describe further decoders. */
        boolean takesDecoders() {
            return version > RecordingFormat.VERSION_OF_ONE_DECODER;
        }
    }

    private RecordingParser() {}

    static Header header(ByteBuffer in) throws IOException {
        int version = u16(in, RecordingFormat.MAGIC.length);
        if (version < RecordingFormat.VERSION_OF_ONE_DECODER || version > RecordingFormat.VERSION) {
            throw new IOException("A recording of version " + version + ", which is not known");
        }
        return new Header(
                version,
                decoder(0, in.slice(12, 4), in.getInt(32)),
                settings(in.slice(16, RecordingFormat.SETTINGS_BYTES).order(in.order())),
                in.getLong(24));
    }

    static boolean isTooNew(RecordFile.Item item, Header header) {
        int newest =
                header.takesDecoders() ? RecordingFormat.DECODER : RecordingFormat.PICTURE;
        return item.type() > newest && item.type() < RecordingFormat.FIRST_OPTIONAL;
    }

    /**
     * Null for what need not be understood.
     *
     * @param decoders how many decoders have been described so far
     */
    static RecordingEntry entry(RecordFile.Item item, Header header, int decoders)
            throws IOException {
        ByteBuffer body = item.body();
        return switch (item.type()) {
            case RecordingFormat.UPDATE -> update(body, header, decoders);
            case RecordingFormat.SETTINGS -> settings(body);
            case RecordingFormat.PICTURE -> picture(body);
            case RecordingFormat.DECODER -> decoder(body, decoders);
            case RecordingFormat.NOTE ->
                    new RecordingEntry.Note(StandardCharsets.UTF_8.decode(body).toString());
            default -> null;
        };
    }

    private static RecordingEntry.Update update(ByteBuffer in, Header header, int decoders) {
        int fieldsBytes = u16(in, 0);
        require(fieldsBytes >= RecordingFormat.LEAST_UPDATE_FIELDS_BYTES, "short fields");
        boolean named =
                header.takesDecoders() && fieldsBytes >= RecordingFormat.UPDATE_FIELDS_BYTES;
        int decoder = named ? in.get(36) & 0xFF : 0;
        require(decoder < decoders, "unknown decoder");
        return new RecordingEntry.Update(
                new UpdateHeader(u16(in, 8), u16(in, 10), u16(in, 12), u16(in, 14), in.getInt(4)),
                in.getLong(16),
                rest(in, fieldsBytes),
                (in.get(2) & RecordingFormat.RESULT_KNOWN) != 0,
                in.getLong(24),
                covering(in.get(3)),
                in.getInt(32),
                decoder);
    }

    private static RecordingEntry.Decoder decoder(ByteBuffer in, int decoders) {
        require((in.get(0) & 0xFF) == decoders, "not the next decoder");
        return decoder(decoders, in.slice(1, 4), in.getInt(8));
    }

    /** The codes are those of codec, protocol version, chroma subsampling and layout. */
    private static RecordingEntry.Decoder decoder(int index, ByteBuffer codes, int threads) {
        return new RecordingEntry.Decoder(
                index,
                value(Codec.values(), Codec::code, codes.get(0)),
                value(ProtocolVersion.values(), ProtocolVersion::code, codes.get(1)),
                value(ChromaSubsampling.values(), ChromaSubsampling::code, codes.get(2)),
                value(RecordLayout.values(), RecordLayout::code, codes.get(3)),
                (int) Math.min(Integer.toUnsignedLong(threads), Integer.MAX_VALUE));
    }

    private static RecordingEntry.Settings settings(ByteBuffer in) {
        int width = u16(in, 0);
        int height = u16(in, 2);
        int contrast = in.get(4);
        require(width > 0 && height > 0, "no geometry");
        DecoderOptions.checkContrast(contrast);
        return new RecordingEntry.Settings(
                width, height, contrast, bit(in.get(5)), bit(in.get(6)), bit(in.get(7)));
    }

    private static RecordingEntry.Picture picture(ByteBuffer in) throws IOException {
        int fieldsBytes = u16(in, 0);
        require(fieldsBytes >= RecordingFormat.PICTURE_FIELDS_BYTES, "short fields");
        byte[] data = rest(in, fieldsBytes);
        if (in.get(2) == RecordingFormat.COMPRESSION_ZLIB) {
            data = inflate(data);
        } else {
            require(in.get(2) == RecordingFormat.COMPRESSION_NONE, "unknown compression");
        }
        require(RecordingFormat.crc(data, data.length) == in.getInt(4), "wrong picture");
        return new RecordingEntry.Picture(data);
    }

    /** No picture of a framebuffer is larger than its most pixels of four bytes. */
    private static byte[] inflate(byte[] data) throws IOException {
        int most = Integer.BYTES * Framebuffer.MAX_PIXELS;
        try (InflaterInputStream in = new InflaterInputStream(new ByteArrayInputStream(data))) {
            byte[] picture = in.readNBytes(most);
            require(in.read() < 0, "picture too large");
            return picture;
        }
    }

    private static byte[] rest(ByteBuffer in, int from) {
        byte[] bytes = new byte[in.limit() - from];
        in.get(from, bytes);
        return bytes;
    }

    private static int u16(ByteBuffer in, int offset) {
        return in.getShort(offset) & 0xFFFF;
    }

    private static boolean bit(byte value) {
        require(value == 0 || value == 1, "neither 0 nor 1");
        return value == 1;
    }

    private static RecordingEntry.Covering covering(byte code) {
        return switch (code) {
            case RecordingFormat.COVERS_NOTHING -> RecordingEntry.Covering.NOTHING;
            case RecordingFormat.COVERS_FRAMEBUFFER -> RecordingEntry.Covering.FRAMEBUFFER;
            case RecordingFormat.COVERS_RECTANGLE -> RecordingEntry.Covering.RECTANGLE;
            default -> throw new IllegalArgumentException("unknown covering");
        };
    }

    private static <T> T value(T[] values, ToIntFunction<T> codeOf, byte code) {
        for (T value : values) {
            if (codeOf.applyAsInt(value) == code) {
                return value;
            }
        }
        throw new IllegalArgumentException("unknown code");
    }

    private static void require(boolean condition, String otherwise) {
        if (!condition) {
            throw new IllegalArgumentException(otherwise);
        }
    }
}
