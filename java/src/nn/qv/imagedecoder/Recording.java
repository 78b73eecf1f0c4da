package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;
import nn.qv.imagedecoder.internal.RecordFile;

/**
 * Reads a recording: the updates of a connection as they arrived, with all that is needed to decode
 * them again. {@link DecoderOptions.Builder#record} makes one, {@link RecordingPlayer} plays it.
 *
 * <p>Entries are read while they are whole; {@link #ending} then tells whether the file ends there,
 * was cut, or holds wrong bytes.
 *
 * <pre>{@code
 * try (Recording recording = Recording.open(Path.of("bug.rcrec"))) {
 *     System.out.println(recording.codec() + ", " + recording.initialSettings());
 *     for (RecordingEntry entry = recording.next(); entry != null; entry = recording.next()) {
 *         System.out.println(entry);
 *     }
 *     System.out.println(recording.ending() + " at byte " + recording.position());
 * }
 * }</pre>
 */
public final class Recording implements AutoCloseable {
    /** How a recording ends. */
    public enum Ending {
        /** There may be more entries. */
        NOT_REACHED,
        /** Behind a whole entry. */
        COMPLETE,
        /** Amid an entry, as after a crash. */
        CUT,
        /** With bytes that are no entry. */
        DAMAGED,
        /** With an entry that only a later release understands. */
        TOO_NEW
    }

    private final Path path;
    private final RecordFile file;
    private final RecordingParser.Header header;
    private final List<RecordingEntry.Decoder> decoders = new ArrayList<>();
    private Ending ending = Ending.NOT_REACHED;
    private long entryOffset;

    private Recording(Path path, RecordFile file, RecordingParser.Header header) {
        this.path = path;
        this.file = file;
        this.header = header;
        decoders.add(header.decoder());
    }

    /**
     * Opens a recording.
     *
     * @param path the file
     * @return the recording, before its first entry
     * @throws IOException if the file cannot be read or is no recording
     */
    public static Recording open(Path path) throws IOException {
        RecordFile file = RecordFile.open(path);
        try {
            return new Recording(path, file, RecordingParser.header(file.header()));
        } catch (IOException | RuntimeException e) {
            file.close();
            throw e instanceof IOException io ? io : new IOException(path + ": " + e, e);
        }
    }

    /**
     * The version of the file's format.
     *
     * @return 1, which knows one decoder alone, or 2
     */
    public int version() {
        return header.version();
    }

    /**
     * The decoders whose updates have been recorded, as far as the entries were read: the one that
     * the recording begins with, and those of each {@link RecordingEntry.Decoder} since.
     *
     * @return the decoders, the one with index i at i; at least one
     */
    public List<RecordingEntry.Decoder> decoders() {
        return List.copyOf(decoders);
    }

    /**
     * The encoding of the first decoder.
     *
     * @return the codec
     */
    public Codec codec() {
        return header.decoder().codec();
    }

    /**
     * The version of the first decoder's update data.
     *
     * @return the version
     */
    public ProtocolVersion protocolVersion() {
        return header.decoder().protocolVersion();
    }

    /**
     * The chroma subsampling of the first decoder.
     *
     * @return the subsampling
     */
    public ChromaSubsampling chromaSubsampling() {
        return header.decoder().chromaSubsampling();
    }

    /**
     * How macroblocks of the first decoder's updates follow each other in protocol version 2.
     *
     * @return the layout
     */
    public RecordLayout recordLayout() {
        return header.decoder().recordLayout();
    }

    /**
     * The settings that the recording begins with.
     *
     * @return the settings
     */
    public RecordingEntry.Settings initialSettings() {
        return header.settings();
    }

    /**
     * Options of a decoder for the first decoder's updates, with as many threads as they need.
     *
     * @return a builder that may be changed further
     */
    public DecoderOptions.Builder options() {
        return header.decoder()
                .options()
                .contrast(initialSettings().contrast())
                .postprocessing(initialSettings().postprocessing());
    }

    /**
     * Reads the next entry.
     *
     * @return the entry, null at the end
     * @throws IOException if the file cannot be read
     */
    public RecordingEntry next() throws IOException {
        while (ending == Ending.NOT_REACHED) {
            RecordFile.Item item = file.next();
            ending = endingOf(item);
            if (ending == Ending.NOT_REACHED) {
                RecordingEntry entry = parse(item);
                if (entry != null) {
                    return entry;
                }
            }
        }
        return null;
    }

    /**
     * How the recording ends.
     *
     * @return NOT_REACHED until {@link #next} has returned null
     */
    public Ending ending() {
        return ending;
    }

    /**
     * How far it was read.
     *
     * @return the number of good bytes so far
     */
    public long position() {
        return file.position();
    }

    @Override
    public void close() throws IOException {
        file.close();
    }

    /**
     * Names the file, the size that it begins with, and the decoders known so far.
     *
     * @return a text for people
     */
    @Override
    public String toString() {
        String names =
                decoders.stream()
                        .map(RecordingEntry.Decoder::describe)
                        .collect(Collectors.joining(", "));
        String size = initialSettings().width() + "x" + initialSettings().height();
        return path + " (version " + version() + ", " + size + ", " + names + ")";
    }

    /** When it began, in microseconds since 1970; 0 if that is unknown. */
    long startMicros() {
        return header.startMicros();
    }

    /** Where the record of the last entry begins in the file. */
    long entryOffset() {
        return entryOffset;
    }

    /** How many bytes the file has now. */
    long size() throws IOException {
        return file.size();
    }

    /** At the end: throws unless at most an incomplete entry follows there. */
    void checkCanBeAppendedTo() throws IOException {
        boolean nothing =
                switch (ending) {
                    case COMPLETE -> true;
                    case CUT -> !file.goesOnLater();
                    case NOT_REACHED, DAMAGED, TOO_NEW -> false;
                };
        if (!nothing) {
            throw new IOException(
                    path
                            + " cannot be appended to: it is damaged or too new at byte "
                            + position()
                            + ", and what follows there would be lost");
        }
    }

    private RecordingEntry parse(RecordFile.Item item) {
        try {
            RecordingEntry entry = RecordingParser.entry(item, header, decoders.size());
            if (entry instanceof RecordingEntry.Decoder added) {
                decoders.add(added);
            }
            entryOffset = file.position();
            file.accept(item);
            return entry;
        } catch (RuntimeException | IOException e) {
            ending = Ending.DAMAGED; // The bytes are those written, but make no sense.
            return null;
        }
    }

    private Ending endingOf(RecordFile.Item item) {
        return switch (item.state()) {
            case WHOLE ->
                    RecordingParser.isTooNew(item, header) ? Ending.TOO_NEW : Ending.NOT_REACHED;
            case NONE -> Ending.COMPLETE;
            case CUT -> Ending.CUT;
            case DAMAGED -> Ending.DAMAGED;
        };
    }
}
