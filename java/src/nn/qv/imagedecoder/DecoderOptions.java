package nn.qv.imagedecoder;

import java.io.IOException;
import java.nio.file.Path;
import java.util.Objects;
import java.util.Optional;
import java.util.function.Consumer;

/**
 * What a connection settles before its first update. Immutable; made by a {@link Builder}.
 *
 * <pre>{@code
 * DecoderOptions options = DecoderOptions.builder(Codec.ICT)
 *         .protocolVersion(ProtocolVersion.V2)
 *         .chromaSubsampling(ChromaSubsampling.YCBCR_420)
 *         .threads(2)
 *         .record(Path.of("bug.rcrec"))
 *         .build();
 * }</pre>
 */
public final class DecoderOptions {
    /** The most worker threads that a decoder may have. */
    public static final int MAX_THREADS = 64;

    /** The strongest contrast stretch. */
    public static final int MAX_CONTRAST = 100;

    private final Codec codec;
    private final ProtocolVersion protocolVersion;
    private final ChromaSubsampling chromaSubsampling;
    private final RecordLayout recordLayout;
    private final int threads;
    private final int contrast;
    private final boolean postprocessing;
    private final ConnectionRecording recording;
    private final Consumer<IOException> recordingFailureListener;

    private DecoderOptions(Builder builder) {
        codec = builder.codec;
        protocolVersion = builder.protocolVersion;
        chromaSubsampling = builder.chromaSubsampling;
        recordLayout = builder.recordLayout;
        threads = builder.threads;
        contrast = builder.contrast;
        postprocessing = builder.postprocessing;
        recording = builder.recording;
        recordingFailureListener = builder.recordingFailureListener;
    }

    /**
     * Begins with the defaults: protocol version 0, 4:2:0, no threads, no contrast stretch, no
     * post-processing, no recording.
     *
     * @param codec the encoding
     * @return a builder
     */
    public static Builder builder(Codec codec) {
        return new Builder(codec);
    }

    /**
     * The encoding.
     *
     * @return the codec
     */
    public Codec codec() {
        return codec;
    }

    /**
     * The version of the update data.
     *
     * @return the version
     */
    public ProtocolVersion protocolVersion() {
        return protocolVersion;
    }

    /**
     * The chroma subsampling.
     *
     * @return the subsampling
     */
    public ChromaSubsampling chromaSubsampling() {
        return chromaSubsampling;
    }

    /**
     * How macroblocks follow each other in protocol version 2.
     *
     * @return the layout
     */
    public RecordLayout recordLayout() {
        return recordLayout;
    }

    /**
     * The worker threads.
     *
     * @return their number, 0 to {@link #MAX_THREADS}
     */
    public int threads() {
        return threads;
    }

    /**
     * The contrast stretch at the start.
     *
     * @return 0 (off) to {@link #MAX_CONTRAST}
     */
    public int contrast() {
        return contrast;
    }

    /**
     * Whether client post-processing is on at the start.
     *
     * @return true if it is
     */
    public boolean postprocessing() {
        return postprocessing;
    }

    /**
     * Where the connection is recorded.
     *
     * @return the file, or the pattern of {@link ConnectionRecording#perConnection}; empty if it is
     *     not recorded
     */
    public Optional<Path> recording() {
        return connectionRecording().map(ConnectionRecording::path);
    }

    /**
     * What records the connection.
     *
     * @return the recording, empty if there is none
     */
    public Optional<ConnectionRecording> connectionRecording() {
        return Optional.ofNullable(recording);
    }

    /** All options, for a log line. */
    @Override
    public String toString() {
        return "DecoderOptions["
                + codec
                + ", "
                + protocolVersion
                + ", "
                + chromaSubsampling
                + ", "
                + recordLayout
                + ", threads="
                + threads
                + ", contrast="
                + contrast
                + ", postprocessing="
                + postprocessing
                + (recording == null ? "" : ", recording=" + recording)
                + "]";
    }

    /** Null if there is none. */
    Consumer<IOException> recordingFailureListener() {
        return recordingFailureListener;
    }

    static void checkContrast(int level) {
        if (level < 0 || level > MAX_CONTRAST) {
            throw new IllegalArgumentException(
                    "The contrast level must be 0 to " + MAX_CONTRAST + ", not " + level);
        }
    }

    static void checkThreads(int count) {
        if (count < 0 || count > MAX_THREADS) {
            throw new IllegalArgumentException(
                    "The number of threads must be 0 to " + MAX_THREADS + ", not " + count);
        }
    }

    /**
     * Collects options; {@link #build} checks that they go together.
     *
     * <pre>{@code
     * DecoderOptions options = DecoderOptions.builder(Codec.LBE).contrast(20).build();
     * }</pre>
     */
    public static final class Builder {
        private final Codec codec;
        private ProtocolVersion protocolVersion = ProtocolVersion.V0;
        private ChromaSubsampling chromaSubsampling = ChromaSubsampling.YCBCR_420;
        private RecordLayout recordLayout = RecordLayout.PADDED;
        private int threads;
        private int contrast;
        private boolean postprocessing;
        private ConnectionRecording recording;
        private Consumer<IOException> recordingFailureListener;

        private Builder(Codec codec) {
            this.codec = Objects.requireNonNull(codec, "codec");
        }

        /**
         * Sets the version of the update data that the device sends.
         *
         * @param version the version; V0 unless set
         * @return this builder
         */
        public Builder protocolVersion(ProtocolVersion version) {
            protocolVersion = Objects.requireNonNull(version, "version");
            return this;
        }

        /**
         * Sets the chroma subsampling that the device uses.
         *
         * @param subsampling the subsampling; 4:2:0 unless set
         * @return this builder
         */
        public Builder chromaSubsampling(ChromaSubsampling subsampling) {
            chromaSubsampling = Objects.requireNonNull(subsampling, "subsampling");
            return this;
        }

        /**
         * Says how macroblocks follow each other in protocol version 2. Devices pad; an encoder of
         * one's own may do otherwise.
         *
         * @param layout the layout; PADDED unless set
         * @return this builder
         */
        public Builder recordLayout(RecordLayout layout) {
            recordLayout = Objects.requireNonNull(layout, "layout");
            return this;
        }

        /**
         * Sets the number of worker threads. They have work in protocol version 2 only; with older
         * versions the calling thread decodes alone and none is started.
         *
         * @param count 0 to {@link DecoderOptions#MAX_THREADS}; 0 unless set
         * @return this builder
         * @throws IllegalArgumentException if the number is out of range
         */
        public Builder threads(int count) {
            checkThreads(count);
            threads = count;
            return this;
        }

        /**
         * Sets how much the contrast is stretched; {@link ScreenDecoder#setContrast} changes it
         * later.
         *
         * @param level 0 (off) to {@link DecoderOptions#MAX_CONTRAST}; 0 unless set
         * @return this builder
         * @throws IllegalArgumentException if the level is out of range
         */
        public Builder contrast(int level) {
            checkContrast(level);
            contrast = level;
            return this;
        }

        /**
         * Switches client post-processing, which corrects the brightness of pixels whose colour had
         * to be clamped; {@link ScreenDecoder#setPostprocessing} changes it later.
         *
         * @param enabled whether it is on; off unless set
         * @return this builder
         */
        public Builder postprocessing(boolean enabled) {
            postprocessing = enabled;
            return this;
        }

        /**
         * Records the connection, so that a bug report can carry its own reproduction. The file is
         * begun by the first update and only ever appended to, so that it can be played up to the
         * last update even after a crash: {@code java -jar imagedecoder.jar replay FILE}. It shows
         * what was on the screen, passwords being typed included, so its owner alone can read it.
         *
         * <p>If the same options open a decoder again after the first one was closed, as after a
         * reconnect, its updates are appended. {@link #record(ConnectionRecording)} records several
         * decoders at a time, appends to an existing recording, or begins a file for each
         * connection.
         *
         * @param file a file that does not exist yet, usually named {@code *.rcrec}
         * @return this builder
         */
        public Builder record(Path file) {
            Objects.requireNonNull(file, "file");
            recording = ConnectionRecording.ofOneDecoder(file);
            return this;
        }

        /**
         * Records the connection together with its other decoders, or in another way than to one
         * new file.
         *
         * @param shared the recording, which the options of all these decoders are given
         * @return this builder
         */
        public Builder record(ConnectionRecording shared) {
            recording = Objects.requireNonNull(shared, "shared");
            return this;
        }

        /**
         * Sets a listener for a recording that ends early because it cannot be written. It is
         * called once for each decoder, with what {@link ScreenDecoder#recordingFailure} returns:
         * on the thread that decodes, after the decoder's current or next update, whether that was
         * decoded or failed; or on the thread that closes the decoder. It may use and close the
         * decoder. What it throws is logged.
         *
         * @param listener the listener
         * @return this builder
         */
        public Builder onRecordingFailure(Consumer<IOException> listener) {
            recordingFailureListener = Objects.requireNonNull(listener, "listener");
            return this;
        }

        /**
         * Checks the options and fixes them.
         *
         * @return the options
         * @throws IllegalArgumentException if threads and layout contradict each other in protocol
         *     version 2: padded macroblocks need threads, because a decoder without threads reads
         *     on bit by bit and would take the padding for data; continuous ones must not have any
         */
        public DecoderOptions build() {
            if (protocolVersion == ProtocolVersion.V2) {
                checkLayout();
            }
            return new DecoderOptions(this);
        }

        private void checkLayout() {
            if (recordLayout == RecordLayout.PADDED && threads == 0) {
                throw new IllegalArgumentException(
                        "Protocol version 2 needs at least one thread: its macroblocks are padded"
                                + " to whole bytes, and only a decoder with a thread pool cuts"
                                + " them by their lengths; without one the padding would be read"
                                + " as data. Call threads(1), or recordLayout(...) for an encoder"
                                + " that does not pad.");
            }
            if (recordLayout == RecordLayout.CONTINUOUS && threads > 0) {
                throw new IllegalArgumentException(
                        "Continuous macroblocks of protocol version 2 must be decoded without"
                                + " threads, not with "
                                + threads
                                + ": a thread pool would cut them at whole bytes.");
            }
        }
    }
}
