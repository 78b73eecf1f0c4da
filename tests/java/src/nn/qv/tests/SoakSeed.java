package nn.qv.tests;

import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * A good update that hostile ones are made of, with the decoder and framebuffer it is meant for.
 *
 * @param name where it comes from
 * @param options a decoder that decodes it; other numbers of threads may do as well, see pool
 * @param pool the decoders that can read its records
 * @param payloadBytes how many of its bytes are its own; those behind belong to the next message
 * @param knownCrc CRC-32 of a framebuffer that was all zero before it, -1 if not known beforehand
 */
record SoakSeed(
        String name,
        RawOptions options,
        Pool pool,
        int contrast,
        boolean postprocessing,
        boolean planes,
        int width,
        int height,
        Update update,
        int payloadBytes,
        long knownCrc) {

    /** Whether a decoder of the update may, must or must not have a thread pool. */
    enum Pool {
        EITHER,
        NEEDED,
        UNFIT
    }

    private static final int SMALL_BYTES = 250;
    private static final int LARGE_PIXELS = 100 * 100;

    /** Small enough for a systematic search, and with at least one coded macroblock. */
    boolean small() {
        return payloadBytes >= 8 && payloadBytes <= SMALL_BYTES && !large();
    }

    /** Too slow to be used as often as the others. */
    boolean large() {
        return width * height > LARGE_PIXELS || payloadBytes > 20 * SMALL_BYTES;
    }

    /**
     * Whether a decoder draws it in the same way whatever came before. Plane framebuffers get their
     * samples from beside a rectangle that does not start at the corner.
     */
    boolean repeatable() {
        return !planes || (update.x() == 0 && update.y() == 0);
    }

    boolean ict() {
        return options.codec() == NativeCodec.ICT;
    }

    static Pool poolFor(int protocolVersion, boolean recordsCut) {
        if (protocolVersion < 2) {
            return Pool.EITHER;
        }
        return recordsCut ? Pool.NEEDED : Pool.UNFIT;
    }
}
