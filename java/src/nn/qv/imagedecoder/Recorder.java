package nn.qv.imagedecoder;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.lang.System.Logger;
import java.lang.System.Logger.Level;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.TimeUnit;
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
    private int pictureCrc;
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

    /** Creates the options' file; its header waits for the first update's geometry. */
    static Recorder create(DecoderOptions options) throws IOException {
        return new Recorder(options.recording().orElseThrow(), options);
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
                    byte[] settings =
                            RecordingComposer.settings(target, contrast, postprocessing);
                    if (!writer.begun()) {
                        startNanos = nanos;
                        writeHeader(settings);
                    }
                    updateMicros = TimeUnit.NANOSECONDS.toMicros(nanos - startNanos);
                    adapt(target, settings);
                });
    }

    /** After an update was decoded, or has failed. */
    synchronized void end(UpdateHeader header, byte[] payload, long result) {
        write(
                () -> {
                    pictureCrc = PictureChecksum.of(framebuffer);
                    writer.update(
                            RecordingComposer.updateFields(
                                    header, updateMicros, result, pictureCrc),
                            payload,
                            updateMicros);
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
        writer.header(
                (byte) options.codec().code(),
                (byte) options.protocolVersion().code(),
                (byte) options.chromaSubsampling().code(),
                (byte) RecordingComposer.layout(options).code(),
                settings,
                TimeUnit.MILLISECONDS.toMicros(System.currentTimeMillis()),
                options.threads());
        writtenSettings = settings;
    }

    /** Writes settings and picture if a player would have others. */
    private void adapt(Framebuffer target, byte[] settings) throws IOException {
        boolean blank =
                framebuffer == null
                        || !Arrays.equals(
                                RecordingComposer.shapeOf(settings),
                                RecordingComposer.shapeOf(writtenSettings));
        if (!Arrays.equals(settings, writtenSettings)) {
            writer.settings(settings);
            writtenSettings = settings;
        }
        int shown = blank ? PictureChecksum.ofBlank(target) : pictureCrc;
        int crc = PictureChecksum.of(target);
        framebuffer = target;
        if (crc != shown) {
            writer.picture(
                    RecordingComposer.pictureFields(crc), RecordingComposer.compressed(target));
        }
    }
}
