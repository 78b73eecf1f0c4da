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
        ByteBuffer settings = RecordingFormat.allocate(RecordingFormat.SETTINGS_BYTES);
        settings.putShort((short) target.width()).putShort((short) target.height());
        settings.put((byte) contrast).put((byte) (postprocessing ? 1 : 0));
        settings.put((byte) (planes ? RecordingFormat.SINK_PLANES : RecordingFormat.SINK_ARGB));
        settings.put((byte) 0); // The library always uses accelerated kernels.
        return settings.array();
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

    /** What stands before an update's payload; the checksum is that of the whole framebuffer. */
    static ByteBuffer updateFields(UpdateHeader header, long micros, long result, int crc) {
        ByteBuffer fields = RecordingFormat.allocate(RecordingFormat.LEAST_UPDATE_FIELDS_BYTES);
        fields.putShort((short) RecordingFormat.LEAST_UPDATE_FIELDS_BYTES);
        fields.put((byte) RecordingFormat.RESULT_KNOWN);
        fields.put((byte) RecordingFormat.COVERS_FRAMEBUFFER);
        fields.putInt(header.quality());
        fields.putShort((short) header.x()).putShort((short) header.y());
        fields.putShort((short) header.width()).putShort((short) header.height());
        fields.putLong(micros).putLong(result).putInt(crc);
        return fields.flip();
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
