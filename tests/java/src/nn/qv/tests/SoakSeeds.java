package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;
import nn.qv.example.Codec;
import nn.qv.example.DecoderOptions;
import nn.qv.example.Update;

/** Collects good updates from case files and from the stream files of the encoder. */
final class SoakSeeds {
    private static final int STREAM_HEADER_BYTES = 22;
    private static final int UPDATE_HEADER_BYTES = 16;
    private static final int LAYOUT_POOL = 1;
    private static final int LAYOUT_IN_PLACE = 2;

    private SoakSeeds() {}

    /** All seeds of two folders, always in the same order. */
    static List<SoakSeed> load(Path caseFolder, Path streamFolder) throws IOException {
        List<SoakSeed> seeds = new ArrayList<>();
        for (Path file : sorted(caseFolder, ".case")) {
            addCase(CaseFile.load(file), seeds);
        }
        for (Path file : sorted(streamFolder, ".rcst")) {
            addStream(file, seeds);
        }
        return List.copyOf(seeds);
    }

    private static List<Path> sorted(Path folder, String suffix) throws IOException {
        try (Stream<Path> files = Files.list(folder)) {
            return files.filter(file -> file.toString().endsWith(suffix)).sorted().toList();
        }
    }

    private static void addCase(CaseFile life, List<SoakSeed> seeds) {
        DecoderOptions options = life.options();
        for (int i = 0; i < life.steps().size(); i++) {
            CaseFile.Step step = life.steps().get(i);
            if (!step.error().isEmpty() || step.result() == -1) {
                continue;
            }
            int bytes = step.update().data().length;
            seeds.add(
                    new SoakSeed(
                            life.name() + " update " + i,
                            options,
                            SoakSeed.poolFor(options.protocolVersion(), options.threads() > 0),
                            life.contrast(),
                            life.postprocessing(),
                            life.planes(),
                            life.width(),
                            life.height(),
                            step.update(),
                            step.consumedBytes() == -1 ? bytes : step.consumedBytes(),
                            i == 0 ? step.crc() : -1));
        }
    }

    /** The encoder writes the shortest headers; docs/stream-file.md describes them. */
    private static void addStream(Path file, List<SoakSeed> seeds) throws IOException {
        ByteBuffer in = ByteBuffer.wrap(Files.readAllBytes(file)).order(ByteOrder.LITTLE_ENDIAN);
        if (in.getShort(6) != STREAM_HEADER_BYTES || in.getShort(8) != UPDATE_HEADER_BYTES) {
            throw new IOException(file + " has headers of an unknown size");
        }
        int version = in.get(11);
        int layout = in.get(13);
        SoakSeed.Pool pool =
                layout == LAYOUT_IN_PLACE
                        ? SoakSeed.Pool.EITHER
                        : SoakSeed.poolFor(version, layout == LAYOUT_POOL);
        int threads = pool == SoakSeed.Pool.NEEDED ? 1 : 0;
        DecoderOptions options =
                new DecoderOptions(Codec.values()[in.get(10)], version, in.get(12), threads);
        int width = in.getShort(14);
        int height = in.getShort(16);
        in.position(STREAM_HEADER_BYTES);
        while (in.hasRemaining()) {
            int quality = in.getInt();
            int x = in.getShort();
            int y = in.getShort();
            int w = in.getShort();
            int h = in.getShort();
            byte[] data = new byte[in.getInt()];
            in.get(data);
            Update update = new Update(quality, x, y, w, h, data);
            String name = file.getFileName() + " at byte " + in.position();
            seeds.add(
                    new SoakSeed(
                            name,
                            options,
                            pool,
                            0,
                            false,
                            false,
                            width,
                            height,
                            update,
                            data.length,
                            -1));
        }
    }
}
