package nn.qv.imagedecoder;

/**
 * A part of a {@link Recording}, in the order of time.
 *
 * <pre>{@code
 * for (RecordingEntry entry = recording.next(); entry != null; entry = recording.next()) {
 *     if (entry instanceof RecordingEntry.Update update) {
 *         System.out.println(update.header() + ": " + update.payload().length + " bytes");
 *     }
 * }
 * }</pre>
 */
public sealed interface RecordingEntry {
    /**
     * An update.
     *
     * @param header its rectangle and quality
     * @param timeMicros when its decoding began, in microseconds since the recording began
     * @param payload its bytes
     * @param resultKnown whether the result was recorded
     * @param result what the native method returned, -1 if the update failed
     * @param covering what the checksum is of
     * @param pictureCrc CRC-32 of the picture afterwards
     * @param decoder index of its decoder among {@link Recording#decoders}
     */
    record Update(
            UpdateHeader header,
            long timeMicros,
            byte[] payload,
            boolean resultKnown,
            long result,
            Covering covering,
            int pictureCrc,
            int decoder)
            implements RecordingEntry {}

    /**
     * A decoder that takes part from here on. Each keeps its own state; all draw into one
     * framebuffer.
     *
     * @param index 0 for the decoder that a recording begins with, then 1, 2, ...; at most 255
     * @param codec the encoding
     * @param protocolVersion the version of the update data
     * @param chromaSubsampling the chroma subsampling
     * @param recordLayout how macroblocks of protocol version 2 follow each other
     * @param threads how many worker threads it had when it was recorded
     */
    record Decoder(
            int index,
            Codec codec,
            ProtocolVersion protocolVersion,
            ChromaSubsampling chromaSubsampling,
            RecordLayout recordLayout,
            int threads)
            implements RecordingEntry {
        /**
         * Options of a decoder for its updates, with as many threads as they need.
         *
         * @return a builder that may be changed further
         */
        public DecoderOptions.Builder options() {
            boolean pool =
                    protocolVersion == ProtocolVersion.V2 && recordLayout == RecordLayout.PADDED;
            return DecoderOptions.builder(codec)
                    .protocolVersion(protocolVersion)
                    .chromaSubsampling(chromaSubsampling)
                    .recordLayout(recordLayout)
                    .threads(pool ? 1 : 0);
        }

        /** Whether it understands another decoder's updates. */
        boolean decodes(Decoder other) {
            boolean anyLayout = protocolVersion != ProtocolVersion.V2;
            return codec == other.codec
                    && protocolVersion == other.protocolVersion
                    && chromaSubsampling == other.chromaSubsampling
                    && (anyLayout || recordLayout == other.recordLayout);
        }

        /** What decides how its updates are understood, as a text for people. */
        String describe() {
            return codec + " " + protocolVersion + " " + chromaSubsampling + " " + recordLayout;
        }

        Decoder withIndex(int other) {
            return new Decoder(
                    other, codec, protocolVersion, chromaSubsampling, recordLayout, threads);
        }
    }

    /**
     * Settings that hold from here on.
     *
     * @param width width of the framebuffer in pixels
     * @param height height of the framebuffer in pixels
     * @param contrast level of the contrast stretch, 0 to 100
     * @param postprocessing whether client post-processing is on
     * @param planes whether the framebuffer has planes instead of pixels
     * @param portableKernels whether the checksums are those of portable kernels, which draw ICT
     *     pictures a little differently
     */
    record Settings(
            int width,
            int height,
            int contrast,
            boolean postprocessing,
            boolean planes,
            boolean portableKernels)
            implements RecordingEntry {}

    /**
     * The framebuffer's content, where it does not come from the updates.
     *
     * @param bytes the bytes of the pixels, or of the planes one after the other
     */
    record Picture(byte[] bytes) implements RecordingEntry {}

    /**
     * A remark.
     *
     * @param text what it says
     */
    record Note(String text) implements RecordingEntry {}

    /** What the checksum of an update is of. */
    enum Covering {
        /** There is none. */
        NOTHING,
        /** All of the framebuffer. */
        FRAMEBUFFER,
        /** The update's rectangle. */
        RECTANGLE
    }
}
