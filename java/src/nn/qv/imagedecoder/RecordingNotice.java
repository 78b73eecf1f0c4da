package nn.qv.imagedecoder;

import java.io.IOException;
import java.lang.System.Logger;
import java.lang.System.Logger.Level;
import java.util.Optional;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.function.Consumer;

/** Calls a viewer's listener once if the recording ends early. */
final class RecordingNotice {
    private static final Logger LOGGER = System.getLogger("nn.qv.imagedecoder");

    private final Recorder recorder;
    private final Consumer<IOException> listener;
    private final AtomicBoolean given = new AtomicBoolean();

    /** Either may be null: no recording, no listener. */
    RecordingNotice(Recorder recorder, Consumer<IOException> listener) {
        this.recorder = recorder;
        this.listener = listener;
    }

    Optional<IOException> failure() {
        return recorder == null ? Optional.empty() : recorder.failure();
    }

    /** Ends the decoder's part in the recording, even while an update is being decoded. */
    void close() {
        if (recorder != null) {
            recorder.close();
        }
        giveIfDue();
    }

    /** Calls the listener if it is due; what it throws is logged, for decoding goes on. */
    void giveIfDue() {
        Optional<IOException> failure = failure();
        if (listener == null || failure.isEmpty() || given.getAndSet(true)) {
            return;
        }
        try {
            listener.accept(failure.get());
        } catch (RuntimeException e) {
            LOGGER.log(Level.WARNING, "The listener for recording failures has failed", e);
        }
    }
}
