package nn.qv.imagedecoder;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.lang.System.Logger;
import java.lang.System.Logger.Level;
import java.nio.file.Path;
import java.util.Optional;
import java.util.concurrent.locks.ReentrantLock;
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

    /** Held while an update is decoded, because its checksum depends on those before it. */
    private final ReentrantLock lock = new ReentrantLock();

    private volatile IOException failure;
    private volatile boolean ended;
    private volatile boolean stopRequested;

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

    /** Begins an update; waits while another decoder is decoding one. */
    void enter() {
        if (lock.isHeldByCurrentThread()) {
            throw new DecoderInUseException(
                    "A source has called another decoder of the same recording, "
                            + file
                            + ", which takes one update at a time");
        }
        if (!ended) {
            lock.lock();
        }
    }

    /** Ends an update. */
    void leave() {
        if (lock.isHeldByCurrentThread()) {
            lock.unlock();
        }
        if (stopRequested) {
            stop();
        }
    }

    /** Writes between {@link #enter} and {@link #leave}, unless the recording has ended. */
    void write(Writing writing) {
        if (ended) {
            return;
        }
        try {
            writing.to(content);
        } catch (IOException | UncheckedIOException | OutOfMemoryError e) {
            fail(e);
        }
    }

    /** Ends the recording as soon as no update is running, without waiting. */
    void stop() {
        stopRequested = true;
        if (!lock.isHeldByCurrentThread() && lock.tryLock()) {
            try {
                finish();
            } finally {
                lock.unlock();
            }
        }
    }

    /** Ends the recording. */
    void close() {
        lock.lock();
        try {
            finish();
        } finally {
            lock.unlock();
        }
    }

    private void finish() {
        write(all -> writer.close());
        ended = true;
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
        LOGGER.log(Level.WARNING, message, failed);
    }
}
