package nn.qv.imagedecoder;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.lang.System.Logger;
import java.lang.System.Logger.Level;
import java.nio.file.Path;
import java.util.Optional;
import nn.qv.imagedecoder.internal.RecordingWriter;

/**
 * One file while it is being recorded to, and the rule that its decoders draw one after the other.
 * A failure to write ends the recording and not the connection.
 */
final class RecordingSession {
    private static final Logger LOGGER = System.getLogger("nn.qv.imagedecoder");

    private final Path file;
    private final RecordingWriter writer;
    private final RecordingContent content;

    /** The decoder whose turn it is, and its thread; null between updates. */
    private Recorder current;

    private Thread currentThread;
    private boolean stopRequested;
    private boolean ended;
    private volatile IOException failure;

    /** Something that writes to the file. */
    interface Writing {
        void to(RecordingContent content) throws IOException;
    }

    private RecordingSession(Path file, RecordingWriter writer, RecordingContent content) {
        this.file = file;
        this.writer = writer;
        this.content = content;
    }

    /** Creates a file, which must not exist yet; its header waits for the first update. */
    static RecordingSession create(Path file) throws IOException {
        RecordingWriter writer = RecordingWriter.create(file);
        RecordingContent content = new RecordingContent(writer, RecordingHistory.none());
        return new RecordingSession(file, writer, content);
    }

    /** Appends to a recording, after its last good record. */
    static RecordingSession resume(Path file, RecordingHistory history) throws IOException {
        if (history.end() < history.size()) {
            LOGGER.log(
                    Level.INFO,
                    "The recording {0} was cut at byte {1}; appending there",
                    file.toString(),
                    Long.toString(history.end()));
        }
        RecordingWriter writer =
                RecordingWriter.resume(
                        file, history.version(), history.index(), history.size(), history.end());
        return new RecordingSession(file, writer, new RecordingContent(writer, history));
    }

    Path file() {
        return file;
    }

    /** Why it has ended early. */
    Optional<IOException> failure() {
        return Optional.ofNullable(failure);
    }

    /** Whether the file holds anything. */
    boolean begun() {
        return writer.begun();
    }

    RecordingContent content() {
        return content;
    }

    /** Waits for the decoder's turn and begins an update, unless nothing is recorded any more. */
    synchronized void enter(Recorder decoder) {
        if (currentThread == Thread.currentThread()) {
            throw new DecoderInUseException(
                    "A source has called another decoder of the same recording, "
                            + file
                            + ", which takes one update at a time");
        }
        awaitTurn();
        if (!ended && !decoder.isClosed()) {
            current = decoder;
            currentThread = Thread.currentThread();
        }
    }

    /** Ends an update that has begun, if any; the decoder may be used by another thread. */
    synchronized void leave(Recorder decoder) {
        if (current == decoder) {
            current = null;
            currentThread = null;
            notifyAll();
            if (stopRequested) {
                finish();
            }
        }
    }

    /** Writes between {@link #enter} and {@link #leave}, unless the recording has ended. */
    synchronized void write(Recorder decoder, Writing writing) {
        if (current == decoder) {
            write(writing);
        }
    }

    /** Ends the recording as soon as no update is running, without waiting. */
    synchronized void stop() {
        stopRequested = true;
        if (current == null) {
            finish();
        }
    }

    private void awaitTurn() {
        boolean interrupted = false;
        while (current != null && !ended) {
            try {
                wait();
            } catch (InterruptedException e) {
                interrupted = true; // For the source, which is read afterwards.
            }
        }
        if (interrupted) {
            Thread.currentThread().interrupt();
        }
    }

    private void finish() {
        write(all -> writer.close());
        ended = true;
    }

    private void write(Writing writing) {
        if (ended) {
            return;
        }
        try {
            writing.to(content);
        } catch (IOException | UncheckedIOException | OutOfMemoryError e) {
            fail(e);
        }
    }

    private void fail(Throwable reason) {
        String message = "The recording " + file + " ends here: " + reason.getMessage();
        IOException failed = new IOException(message, reason);
        try {
            writer.abandon();
        } catch (IOException closing) {
            failed.addSuppressed(closing);
        }
        failure = failed;
        ended = true;
        notifyAll();
        LOGGER.log(Level.WARNING, message, failed);
    }
}
