package nn.qv.imagedecoder;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.lang.System.Logger;
import java.lang.System.Logger.Level;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.TimeUnit;
import java.util.zip.CRC32;
import java.util.zip.Deflater;
import java.util.zip.DeflaterOutputStream;
import nn.qv.imagedecoder.internal.RecordingFormat;
import nn.qv.imagedecoder.internal.RecordingWriter;

/**
 * Records what a decoder is given and what becomes of it. A failure to write ends the recording and
 * not the connection.
 */
final class Recorder {
    private static final Logger LOGGER = System.getLogger("nn.qv.imagedecoder");

    private final Path file;
    private final DecoderOptions options;
    private final RecordingWriter writer;
    private int contrast;
    private boolean postprocessing;
    private Framebuffer framebuffer;
    private byte[] writtenSettings;
    private long pictureCrc;
    private long startNanos;
    private long updateMicros;
    private boolean ended;

    /** Something that writes to the file. */
    private interface Writing {
        void run() throws IOException;
    }

    private Recorder(Path file, DecoderOptions options) throws IOException {
        this.file = file;
        this.options = options;
        contrast = options.contrast();
        postprocessing = options.postprocessing();
        writer = new RecordingWriter(file);
    }

    /** Creates the file; its header waits for the first update, which brings the geometry. */
    static Recorder create(Path file, DecoderOptions options) throws IOException {
        return new Recorder(file, options);
    }

    void setContrast(int level) {
        contrast = level;
    }

    void setPostprocessing(boolean enabled) {
        postprocessing = enabled;
    }

    /** Before an update is decoded: writes what has changed since the last one. */
    synchronized void begin(Framebuffer target, long nanos) {
        write(
                () -> {
                    if (!writer.begun()) {
                        startNanos = nanos;
                        writeHeader(settings(target));
                    }
                    updateMicros = TimeUnit.NANOSECONDS.toMicros(nanos - startNanos);
                    adapt(target);
                });
    }

    /** After an update was decoded. */
    synchronized void end(UpdateHeader header, byte[] payload, long result) {
        write(
                () -> {
                    pictureCrc = crc(framebuffer);
                    ByteBuffer fields =
                            RecordingFormat.allocate(RecordingFormat.UPDATE_FIELDS_BYTES);
                    fields.putShort((short) RecordingFormat.UPDATE_FIELDS_BYTES);
                    fields.put((byte) RecordingFormat.RESULT_KNOWN);
                    fields.put((byte) RecordingFormat.COVERS_FRAMEBUFFER);
                    fields.putInt(header.quality());
                    fields.putShort((short) header.x()).putShort((short) header.y());
                    fields.putShort((short) header.width()).putShort((short) header.height());
                    fields.putLong(updateMicros).putLong(result).putInt((int) pictureCrc);
                    writer.update(fields.flip(), payload, updateMicros);
                });
    }

    /** Leaves a text, if the recording has begun. */
    synchronized void note(String text) {
        write(
                () -> {
                    if (writer.begun()) {
                        writer.note(text);
                    }
                });
    }

    /** Without any update there is nothing to keep. */
    synchronized void close() {
        write(
                () -> {
                    writer.close();
                    if (!writer.begun()) {
                        Files.deleteIfExists(file);
                    }
                });
        ended = true;
    }

    private void write(Writing writing) {
        if (ended) {
            return;
        }
        try {
            writing.run();
        } catch (IOException | UncheckedIOException | OutOfMemoryError e) {
            ended = true;
            LOGGER.log(Level.WARNING, "The recording " + file + " ends here", e);
            try {
                writer.abandon();
            } catch (IOException closing) {
                e.addSuppressed(closing);
            }
        }
    }

    private void writeHeader(byte[] settings) throws IOException {
        boolean pool = options.protocolVersion() == ProtocolVersion.V2 && options.threads() > 0;
        RecordLayout layout = pool ? RecordLayout.PADDED : RecordLayout.CONTINUOUS;
        if (pool && options.recordLayout() == RecordLayout.IN_PLACE) {
            layout = RecordLayout.IN_PLACE;
        }
        writer.header(
                (byte) options.codec().ordinal(),
                (byte) options.protocolVersion().ordinal(),
                (byte) options.chromaSubsampling().ordinal(),
                (byte) layout.ordinal(),
                settings,
                TimeUnit.MILLISECONDS.toMicros(System.currentTimeMillis()),
                options.threads());
        writtenSettings = settings;
    }

    /** A player's framebuffer is all zeros at first and when its size or kind changes. */
    private void adapt(Framebuffer target) throws IOException {
        byte[] settings = settings(target);
        boolean cleared =
                framebuffer == null || !Arrays.equals(shape(settings), shape(writtenSettings));
        if (!Arrays.equals(settings, writtenSettings)) {
            writer.settings(settings);
            writtenSettings = settings;
        }
        long expected = cleared ? crcOfZeros(target) : pictureCrc;
        framebuffer = target;
        if (crc(target) != expected) {
            writePicture(target);
        }
    }

    private void writePicture(Framebuffer target) throws IOException {
        CRC32 crc = new CRC32();
        ByteArrayOutputStream compressed = new ByteArrayOutputStream();
        Deflater fast = new Deflater(Deflater.BEST_SPEED);
        try (DeflaterOutputStream out = new DeflaterOutputStream(compressed, fast)) {
            byte[] chunk = new byte[1 << 16];
            for (ByteBuffer memory : target.memory()) {
                ByteBuffer bytes = memory.duplicate();
                while (bytes.hasRemaining()) {
                    int count = Math.min(chunk.length, bytes.remaining());
                    bytes.get(chunk, 0, count);
                    crc.update(chunk, 0, count);
                    out.write(chunk, 0, count);
                }
            }
        } finally {
            fast.end();
        }
        ByteBuffer fields = RecordingFormat.allocate(RecordingFormat.PICTURE_FIELDS_BYTES);
        fields.putShort((short) RecordingFormat.PICTURE_FIELDS_BYTES);
        fields.put((byte) RecordingFormat.COMPRESSION_ZLIB).put((byte) 0);
        fields.putInt((int) crc.getValue());
        writer.picture(fields.flip(), compressed.toByteArray());
    }

    private byte[] settings(Framebuffer target) {
        boolean planes = target.chromaSubsampling().isPresent();
        ByteBuffer settings = RecordingFormat.allocate(RecordingFormat.SETTINGS_BYTES);
        settings.putShort((short) target.width()).putShort((short) target.height());
        settings.put((byte) contrast).put((byte) (postprocessing ? 1 : 0));
        settings.put(
                (byte) (planes ? RecordingFormat.SINK_PLANES : RecordingFormat.SINK_ARGB));
        settings.put((byte) 0); // The library always uses accelerated kernels.
        return settings.array();
    }

    /** Width, height and sink. */
    private static byte[] shape(byte[] settings) {
        return new byte[] {settings[0], settings[1], settings[2], settings[3], settings[6]};
    }

    static long crc(Framebuffer target) {
        CRC32 crc = new CRC32();
        for (ByteBuffer memory : target.memory()) {
            crc.update(memory.duplicate());
        }
        return crc.getValue();
    }

    private static long crcOfZeros(Framebuffer target) {
        CRC32 crc = new CRC32();
        byte[] zeros = new byte[1 << 16];
        long left = target.memory().stream().mapToLong(ByteBuffer::capacity).sum();
        while (left > 0) {
            int count = (int) Math.min(left, zeros.length);
            crc.update(zeros, 0, count);
            left -= count;
        }
        return crc.getValue();
    }
}
