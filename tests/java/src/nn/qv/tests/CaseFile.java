package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * One decoder's life with its right results, as a {@code .case} file holds it.
 *
 * @param name file name
 * @param options how the decoder is created
 * @param contrast contrast level, set before the first update
 * @param postprocessing client post-processing, set before the first update
 * @param planes whether the updates go to plane framebuffers instead of an ARGB one
 * @param pieceSize greatest number of bytes in a read, 0 if one read delivers a whole update
 */
record CaseFile(
        String name,
        RawOptions options,
        int contrast,
        boolean postprocessing,
        boolean planes,
        int pieceSize,
        int width,
        int height,
        List<Step> steps) {

    /**
     * One update and what must come of it.
     *
     * @param error text of the decoder's failure, empty for none
     * @param result value of the perform call
     * @param consumedBytes bytes read and not handed back, -1 if they depend on timing
     * @param crc CRC-32 of the framebuffer memory afterwards
     */
    record Step(Update update, String error, long result, int consumedBytes, long crc) {}

    private static final int MAGIC = 'R' | 'C' << 8 | 'V' << 16 | '1' << 24;

    /** All case files of a folder, in the order of their names. */
    static List<CaseFile> loadAll(Path folder) throws IOException {
        List<CaseFile> lives = new ArrayList<>();
        try (Stream<Path> files = Files.list(folder)) {
            for (Path file : files.filter(f -> f.toString().endsWith(".case")).sorted().toList()) {
                lives.add(load(file));
            }
        }
        return lives;
    }

    static CaseFile load(Path file) throws IOException {
        ByteBuffer in = ByteBuffer.wrap(Files.readAllBytes(file)).order(ByteOrder.LITTLE_ENDIAN);
        if (in.getInt() != MAGIC) {
            throw new IOException(file + " is not a case file");
        }
        NativeCodec codec = NativeCodec.values()[in.get()];
        int protocolVersion = in.get();
        int chroma = in.get();
        int threads = u8(in);
        int contrast = u8(in);
        boolean postprocessing = in.get() == 1;
        boolean planes = in.get() == 1;
        int pieceExponent = in.get() & 31;
        int width = u16(in);
        int height = u16(in);
        int count = in.getInt();
        List<Step> steps = new ArrayList<>();
        for (int i = 0; i < count; i++) {
            steps.add(readStep(in));
        }
        if (in.hasRemaining()) {
            throw new IOException(file + " has " + in.remaining() + " bytes too many");
        }
        return new CaseFile(
                file.getFileName().toString(),
                new RawOptions(codec, protocolVersion, chroma, threads),
                contrast,
                postprocessing,
                planes,
                pieceExponent == 0 ? 0 : 1 << (pieceExponent - 1),
                width,
                height,
                steps);
    }

    private static Step readStep(ByteBuffer in) {
        int quality = in.getInt();
        int x = u16(in);
        int y = u16(in);
        int width = u16(in);
        int height = u16(in);
        byte[] data = bytes(in, in.getInt());
        String error = new String(bytes(in, u8(in)), StandardCharsets.US_ASCII);
        long result = in.getLong();
        int consumedBytes = in.getInt();
        long crcAccelerated = in.getInt() & 0xFFFFFFFFL;
        in.getInt(); // The CRC with the portable kernels, which the native methods never choose.
        Update update = new Update(quality, x, y, width, height, data);
        return new Step(update, error, result, consumedBytes, crcAccelerated);
    }

    private static int u8(ByteBuffer in) {
        return in.get() & 0xFF;
    }

    private static int u16(ByteBuffer in) {
        return in.getShort() & 0xFFFF;
    }

    private static byte[] bytes(ByteBuffer in, int count) {
        byte[] copy = new byte[count];
        in.get(copy);
        return copy;
    }
}
