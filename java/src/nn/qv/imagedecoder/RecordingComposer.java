package nn.qv.imagedecoder;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.zip.Deflater;
import java.util.zip.DeflaterOutputStream;
import nn.qv.imagedecoder.internal.RecordingFormat;

/** Puts what {@link RecordingParser} reads into bytes. */
final class RecordingComposer {
    private static final int CHUNK_BYTES = 1 << 16;

    private RecordingComposer() {}

    /** As a header, and records of their own, hold them. */
    static byte[] settings(Framebuffer target, int contrast, boolean postprocessing) {
        boolean planes = target.chromaSubsampling().isPresent();
        boolean portableKernels = false; // The library always uses accelerated ones.
        return settings(
                new RecordingEntry.Settings(
                        target.width(),
                        target.height(),
                        contrast,
                        postprocessing,
                        planes,
                        portableKernels));
    }

    static byte[] settings(RecordingEntry.Settings values) {
        ByteBuffer settings = RecordingFormat.allocate(RecordingFormat.SETTINGS_BYTES);
        settings.putShort((short) values.width()).putShort((short) values.height());
        settings.put((byte) values.contrast()).put(bit(values.postprocessing()));
        settings.put(bit(values.planes())).put(bit(values.portableKernels()));
        return settings.array();
    }

    private static byte bit(boolean value) {
        return (byte) (value ? 1 : 0);
    }

    /** Width, height and sink: a player's framebuffer is blank again where they change. */
    static byte[] shapeOf(byte[] settings) {
        return new byte[] {settings[0], settings[1], settings[2], settings[3], settings[6]};
    }

    /** What a decoder with these options takes an update's bytes for. */
    static RecordLayout layout(DecoderOptions options) {
        if (options.protocolVersion() != ProtocolVersion.V2 || options.threads() == 0) {
            return RecordLayout.CONTINUOUS;
        }
        return options.recordLayout();
    }

    /** Of codec, protocol version, chroma subsampling and layout. */
    static byte[] codes(RecordingEntry.Decoder decoder) {
        return new byte[] {
            (byte) decoder.codec().code(),
            (byte) decoder.protocolVersion().code(),
            (byte) decoder.chromaSubsampling().code(),
            (byte) decoder.recordLayout().code()
        };
    }

    /** A record of a further decoder. */
    static ByteBuffer decoderFields(RecordingEntry.Decoder decoder) {
        ByteBuffer fields = RecordingFormat.allocate(RecordingFormat.DECODER_BYTES);
        fields.put((byte) decoder.index()).put(codes(decoder)).put(new byte[3]);
        return fields.putInt(decoder.threads()).flip();
    }

    /** What stands before an update's payload; the checksum is that of the whole framebuffer. */
    static ByteBuffer updateFields(
            UpdateHeader header, long micros, long result, int crc, int decoder) {
        ByteBuffer fields = RecordingFormat.allocate(RecordingFormat.UPDATE_FIELDS_BYTES);
        put(fields, header, micros, result, crc);
        return fields.put((byte) decoder).put(new byte[3]).flip();
    }

    /** The same for a file of version 1, which knows one decoder alone. */
    static ByteBuffer updateFields(UpdateHeader header, long micros, long result, int crc) {
        ByteBuffer fields = RecordingFormat.allocate(RecordingFormat.LEAST_UPDATE_FIELDS_BYTES);
        put(fields, header, micros, result, crc);
        return fields.flip();
    }

    private static void put(
            ByteBuffer fields, UpdateHeader header, long micros, long result, int crc) {
        fields.putShort((short) fields.capacity());
        fields.put((byte) RecordingFormat.RESULT_KNOWN);
        fields.put((byte) RecordingFormat.COVERS_FRAMEBUFFER);
        fields.putInt(header.quality());
        fields.putShort((short) header.x()).putShort((short) header.y());
        fields.putShort((short) header.width()).putShort((short) header.height());
        fields.putLong(micros).putLong(result).putInt(crc);
    }

    /** What stands before a picture's compressed bytes. */
    static ByteBuffer pictureFields(int crc) {
        ByteBuffer fields = RecordingFormat.allocate(RecordingFormat.PICTURE_FIELDS_BYTES);
        fields.putShort((short) RecordingFormat.PICTURE_FIELDS_BYTES);
        fields.put((byte) RecordingFormat.COMPRESSION_ZLIB).put((byte) 0);
        fields.putInt(crc);
        return fields.flip();
    }

    /** All that a framebuffer shows. */
    static byte[] compressed(Framebuffer target) throws IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        Deflater fast = new Deflater(Deflater.BEST_SPEED);
        try (DeflaterOutputStream out = new DeflaterOutputStream(bytes, fast)) {
            byte[] chunk = new byte[CHUNK_BYTES];
            for (ByteBuffer memory : target.memory()) {
                ByteBuffer left = memory.duplicate();
                while (left.hasRemaining()) {
                    int count = Math.min(chunk.length, left.remaining());
                    left.get(chunk, 0, count);
                    out.write(chunk, 0, count);
                }
            }
        } finally {
            fast.end();
        }
        return bytes.toByteArray();
    }
}
