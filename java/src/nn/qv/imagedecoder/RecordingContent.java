package nn.qv.imagedecoder;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;
import nn.qv.imagedecoder.internal.RecordingFormat;
import nn.qv.imagedecoder.internal.RecordingWriter;

/** What a recording holds so far, and what has to be written next. Not synchronised. */
final class RecordingContent {
    private final RecordingWriter writer;
    private final RecordedScreen screen = new RecordedScreen();
    private final List<RecordingEntry.Decoder> decoders = new ArrayList<>();
    private long microsBefore;
    private long startNanos;
    private long updateMicros;

    /** Of the update that is being decoded. */
    private Framebuffer framebuffer;

    /** The history is that of the file, which may be empty. */
    RecordingContent(RecordingWriter writer, RecordingHistory history) {
        this.writer = writer;
        if (writer.begun()) {
            decoders.addAll(history.decoders());
            screen.resume(history.settings());
            microsBefore = history.microsBeforeNow();
            startNanos = System.nanoTime();
        }
    }

    /** Refuses a decoder that the file cannot hold beside those at work. */
    void admit(Recorder decoder, int atWork) throws IOException {
        if (takesOneDecoder()) {
            RecordingEntry.Decoder own = decoders.get(0);
            if (atWork > 0 || !own.decodes(decoder.description())) {
                throw new IOException(
                        "A recording of version 1 holds one decoder alone, here "
                                + own.describe()
                                + ": encode it again, or record to another file");
            }
            decoder.describe(0);
        }
    }

    /** Before an update is decoded: writes what has changed since the last one. */
    void begin(Recorder decoder, Framebuffer target) throws IOException {
        checkPlanes(target);
        byte[] settings = decoder.settings(target);
        if (!writer.begun()) {
            startNanos = System.nanoTime();
            writeHeader(decoder, settings);
            screen.begin(target, settings);
        }
        long sinceStart = System.nanoTime() - startNanos;
        updateMicros = microsBefore + TimeUnit.NANOSECONDS.toMicros(sinceStart);
        screen.adapt(writer, target, settings);
        if (!decoder.isDescribed()) {
            writeDecoder(decoder);
        }
        screen.show(writer, target);
        framebuffer = target;
    }

    /** After an update was decoded, or has failed. */
    void end(Recorder decoder, UpdateHeader header, byte[] payload, long result)
            throws IOException {
        int crc = screen.drawn(framebuffer);
        framebuffer = null;
        writer.update(
                takesOneDecoder()
                        ? RecordingComposer.updateFields(header, updateMicros, result, crc)
                        : RecordingComposer.updateFields(
                                header, updateMicros, result, crc, decoder.index()),
                payload,
                updateMicros);
    }

    /** Leaves a text, if the recording has begun. */
    void note(String text) throws IOException {
        if (writer.begun()) {
            writer.note(text);
        }
    }

    private boolean takesOneDecoder() {
        return writer.version() == RecordingFormat.VERSION_OF_ONE_DECODER;
    }

    private void writeHeader(Recorder decoder, byte[] settings) throws IOException {
        RecordingEntry.Decoder first = decoder.describe(0);
        long now = TimeUnit.MILLISECONDS.toMicros(System.currentTimeMillis());
        writer.header(RecordingComposer.codes(first), settings, now, first.threads());
        decoders.add(first);
    }

    private void writeDecoder(Recorder decoder) throws IOException {
        if (decoders.size() == RecordingFormat.MOST_DECODERS) {
            throw new IOException(
                    "It holds " + decoders.size() + " decoders, as many as a recording can");
        }
        RecordingEntry.Decoder next = decoder.describe(decoders.size());
        writer.decoder(RecordingComposer.decoderFields(next));
        decoders.add(next);
    }

    /** A player has one framebuffer for all decoders of the file. */
    private void checkPlanes(Framebuffer target) throws IOException {
        if (target.chromaSubsampling().isEmpty()) {
            return;
        }
        ChromaSubsampling subsampling = target.chromaSubsampling().get();
        for (RecordingEntry.Decoder other : decoders) {
            if (!other.codec().drawsPlanes() || other.chromaSubsampling() != subsampling) {
                throw new IOException(
                        "Planes of "
                                + subsampling
                                + " cannot be recorded beside a decoder of "
                                + other.describe());
            }
        }
        if (takesOneDecoder()) {
            throw new IOException(
                    "Planes cannot be appended to a recording of version 1, because a player would"
                            + " keep the samples of the decoder before");
        }
    }
}
