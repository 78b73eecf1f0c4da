package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Objects;
import java.util.Optional;

/**
 * Records the updates of all decoders of a connection, and of later connections. The options of
 * these decoders share it; the decoders draw into one framebuffer.
 *
 * <p><b>Connections.</b> A connection begins when a decoder is opened while no other decoder of the
 * recording is open. It ends when the last one is closed; its file is complete then. The next
 * connection appends to the file or begins another one, so the same options work again after a
 * reconnect. A decoder that is opened again is recorded as a further decoder, because it starts
 * without the state of the one before. A file holds at most 256 decoders. Long-running viewers
 * should use {@link #perConnection}, which has no such limit.
 *
 * <p><b>Files.</b> Nothing is written before a decoder is opened. A connection without any update
 * leaves no new file. An existing file is never overwritten. A file shows what was on the screen,
 * so a new one can be read by its owner alone.
 *
 * <p><b>Failures.</b> If the file cannot be opened, {@link ScreenDecoder#open} throws. A failure to
 * write later, such as a full disk, ends the recording of this connection; decoding goes on. The
 * file is shortened to its last complete entry. {@link #failure} and {@link
 * ScreenDecoder#recordingFailure} return the reason, and {@link
 * DecoderOptions.Builder#onRecordingFailure} is called with it.
 *
 * <p><b>Threads.</b> Any thread may call any method; none of them waits for an update. The decoders
 * may be used by different threads, but the recording lets one update be decoded at a time: {@code
 * decode} waits while another decoder of the recording is decoding. So a source must not wait for
 * another decoder of the recording, nor call it, which throws {@link DecoderInUseException}.
 *
 * <p><b>Framebuffers.</b> If the decoders draw into different framebuffers, each change from one to
 * another costs a picture in the file. Planes can be recorded only if all decoders of the file are
 * ICT decoders with the same chroma subsampling; otherwise the recording ends with a failure.
 *
 * <pre>{@code
 * ConnectionRecording recording =
 *         ConnectionRecording.perConnection(Path.of("console-%t-%n.rcrec"));
 * DecoderOptions ict = DecoderOptions.builder(Codec.ICT).record(recording).build();
 * DecoderOptions lbe = DecoderOptions.builder(Codec.LBE).record(recording).build();
 * // For each connection:
 * try (ScreenDecoder ictDecoder = ScreenDecoder.open(ict);
 *         ScreenDecoder lbeDecoder = ScreenDecoder.open(lbe)) {
 *     while (connection.readHeader()) {
 *         ScreenDecoder decoder = connection.isLbe() ? lbeDecoder : ictDecoder;
 *         decoder.decode(connection.updateHeader(), connection.input(), screen);
 *     }
 * }
 * recording.file().ifPresent(file -> System.out.println("Recorded in " + file));
 * }</pre>
 */
public final class ConnectionRecording implements AutoCloseable {
    /** Where a connection's file comes from. */
    private enum Mode {
        CREATE,
        APPEND,
        PER_CONNECTION
    }

    private final Mode mode;
    private final Path path;
    private final boolean ofOneDecoder;
    private volatile RecordingSession session;
    private int decoders;
    private boolean written;
    private boolean closed;

    private ConnectionRecording(Mode mode, Path path, boolean ofOneDecoder) {
        this.mode = mode;
        this.path = Objects.requireNonNull(path, "path");
        this.ofOneDecoder = ofOneDecoder;
    }

    /**
     * Records to a new file. Later connections are appended to it.
     *
     * @param file a file that does not exist when the first decoder is opened, usually named {@code
     *     *.rcrec}
     * @return the recording
     */
    public static ConnectionRecording create(Path file) {
        return new ConnectionRecording(Mode.CREATE, file, false);
    }

    /**
     * Appends to a recording, or begins a new one if there is no file. If the recording was cut, as
     * by a crash, the incomplete entry at its end is removed. Opening a decoder fails if the file
     * is no recording, is damaged, or is being written by another recording. A file of version 1
     * holds one decoder alone, so it takes only one at a time, with the same codec, protocol
     * version, chroma subsampling and layout.
     *
     * @param file a recording or a file that does not exist
     * @return the recording
     */
    public static ConnectionRecording append(Path file) {
        return new ConnectionRecording(Mode.APPEND, file, false);
    }

    /**
     * Records each connection to a new file. In the file's name, {@code %n} stands for the smallest
     * number, from 1 on, for which no file exists; {@code %t} for the local time when the
     * connection began, such as {@code 20261122-074000}; and {@code %%} for a percent sign.
     *
     * @param pattern a path whose last name contains {@code %n}, such as {@code
     *     logs/console-%t-%n.rcrec}
     * @return the recording
     * @throws IllegalArgumentException if the name does not contain {@code %n}, or has a percent
     *     sign before any other character
     */
    public static ConnectionRecording perConnection(Path pattern) {
        RecordingName.check(pattern);
        return new ConnectionRecording(Mode.PER_CONNECTION, pattern, false);
    }

    /** As {@link #create}, for one decoder at a time. */
    static ConnectionRecording ofOneDecoder(Path file) {
        return new ConnectionRecording(Mode.CREATE, file, true);
    }

    /**
     * The file of this connection, or of the last one if none is open. It does not exist if that
     * connection had no update.
     *
     * @return the file, empty before the first decoder is opened
     */
    public Optional<Path> file() {
        return Optional.ofNullable(session).map(RecordingSession::file);
    }

    /**
     * Why the recording of this connection, or of the last one if none is open, has ended early.
     *
     * @return the failure, empty if there was none; its cause is the error from the file system
     */
    public Optional<IOException> failure() {
        return Optional.ofNullable(session).flatMap(RecordingSession::failure);
    }

    /**
     * Stops recording, for this connection and all later ones. The decoders stay usable. An update
     * that is being decoded meanwhile is still recorded; the file is complete after it. No decoder
     * can be opened with this recording afterwards. Without a call of this method, files are
     * completed by closing the decoders. Closing again does nothing.
     */
    @Override
    public synchronized void close() {
        closed = true;
        if (decoders > 0) {
            session.stop();
        }
    }

    /**
     * Names the file or the pattern.
     *
     * @return a text for people
     */
    @Override
    public String toString() {
        return path.toString();
    }

    /** The file or the pattern. */
    Path path() {
        return path;
    }

    /** Another decoder takes part, which must leave. */
    synchronized Recorder join(DecoderOptions options) throws IOException {
        if (closed) {
            throw new IOException("The recording " + path + " is closed");
        }
        if (decoders > 0 && ofOneDecoder) {
            throw new IOException(
                    path
                            + " records one decoder, which is still open; several decoders need"
                            + " to share a ConnectionRecording");
        }
        if (decoders == 0) {
            session = open();
        }
        Recorder recorder = new Recorder(this, session, options);
        decoders++;
        try {
            session.content().admit(recorder, decoders - 1);
        } catch (IOException e) {
            recorder.close();
            throw e;
        }
        return recorder;
    }

    /** A decoder has been closed. */
    synchronized void leave() {
        decoders--;
        if (decoders == 0) {
            session.stop();
            written |= session.begun();
        }
    }

    private RecordingSession open() throws IOException {
        return switch (mode) {
            case CREATE -> written ? appendTo(path) : RecordingSession.create(path);
            case APPEND -> appendTo(path);
            case PER_CONNECTION -> RecordingName.firstUnused(path, RecordingSession::create);
        };
    }

    private static RecordingSession appendTo(Path file) throws IOException {
        try {
            return RecordingSession.create(file);
        } catch (FileAlreadyExistsException e) {
            return RecordingSession.resume(
                    file,
                    Files.size(file) == 0
                            ? RecordingHistory.none()
                            : RecordingHistory.read(file));
        }
    }
}
