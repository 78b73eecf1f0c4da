package nn.qv.imagedecoder;

import java.io.IOException;
import java.util.Optional;
import java.util.concurrent.atomic.AtomicBoolean;

/**
 * Records what one decoder is given and what becomes of it. The cleaner of a forgotten decoder
 * holds it, so it must not lead to the decoder, nor to a listener of the viewer's.
 */
final class Recorder {
    private static final int NOT_DESCRIBED = -1;

    private final ConnectionRecording connection;
    private final RecordingSession session;
    private RecordingEntry.Decoder description;
    private int contrast;
    private boolean postprocessing;
    private final AtomicBoolean closed = new AtomicBoolean();

    Recorder(ConnectionRecording connection, RecordingSession session, DecoderOptions options) {
        this.connection = connection;
        this.session = session;
        contrast = options.contrast();
        postprocessing = options.postprocessing();
        description =
                new RecordingEntry.Decoder(
                        NOT_DESCRIBED,
                        options.codec(),
                        options.protocolVersion(),
                        options.chromaSubsampling(),
                        RecordingComposer.layout(options),
                        options.threads());
    }

    void setContrast(int level) {
        contrast = level;
    }

    void setPostprocessing(boolean enabled) {
        postprocessing = enabled;
    }

    /** Before an update is decoded; {@link #leave} must follow in any case. */
    void begin(Framebuffer target) {
        session.enter(this);
        session.write(this, content -> content.begin(this, target));
    }

    /** After an update was decoded, or has failed. */
    void end(UpdateHeader header, byte[] payload, long result) {
        session.write(this, content -> content.end(this, header, payload, result));
    }

    /** After {@link #begin}, however the update has ended. */
    void leave() {
        session.leave(this);
    }

    /** Leaves a text, if the recording has begun. */
    void note(String text) {
        session.enter(this);
        try {
            session.write(this, content -> content.note(text));
        } finally {
            session.leave(this);
        }
    }

    /** Why the recording has ended early. */
    Optional<IOException> failure() {
        return session.failure();
    }

    /**
     * Takes no further part; the last one of a connection ends its file. An update that another
     * thread is decoding meanwhile is left out, and other decoders do not wait for it.
     */
    void close() {
        if (!closed.getAndSet(true)) {
            session.leave(this);
            connection.leave();
        }
    }

    boolean isClosed() {
        return closed.get();
    }

    /** As a recording holds them. */
    byte[] settings(Framebuffer target) {
        return RecordingComposer.settings(target, contrast, postprocessing);
    }

    RecordingEntry.Decoder description() {
        return description;
    }

    /** Whether the file says what it is. */
    boolean isDescribed() {
        return index() != NOT_DESCRIBED;
    }

    int index() {
        return description.index();
    }

    /** Gives it an index in the file. */
    RecordingEntry.Decoder describe(int index) {
        description = description.withIndex(index);
        return description;
    }
}
