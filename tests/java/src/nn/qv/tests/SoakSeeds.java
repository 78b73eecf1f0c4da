package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;
import nn.qv.imagedecoder.RecordLayout;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.UpdateHeader;
import nn.qv.imagedecoder.internal.NativeCodec;

/** Collects good updates from case files and from recordings of the encoder. */
final class SoakSeeds {
    private SoakSeeds() {}

    /** All seeds of two folders, always in the same order. */
    static List<SoakSeed> load(Path caseFolder, Path streamFolder) throws IOException {
        List<SoakSeed> seeds = new ArrayList<>();
        for (CaseFile life : CaseFile.loadAll(caseFolder)) {
            addCase(life, seeds);
        }
        for (Path file : sorted(streamFolder, ".rcrec")) {
            addRecording(file, seeds);
        }
        return List.copyOf(seeds);
    }

    private static List<Path> sorted(Path folder, String suffix) throws IOException {
        try (Stream<Path> files = Files.list(folder)) {
            return files.filter(file -> file.toString().endsWith(suffix)).sorted().toList();
        }
    }

    private static void addCase(CaseFile life, List<SoakSeed> seeds) {
        RawOptions options = life.options();
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

    private static void addRecording(Path file, List<SoakSeed> seeds) throws IOException {
        try (Recording recording = Recording.open(file)) {
            RecordingEntry.Settings settings = recording.initialSettings();
            int version = recording.protocolVersion().ordinal();
            SoakSeed.Pool pool =
                    recording.recordLayout() == RecordLayout.IN_PLACE
                            ? SoakSeed.Pool.EITHER
                            : SoakSeed.poolFor(
                                    version, recording.recordLayout() == RecordLayout.PADDED);
            RawOptions options =
                    new RawOptions(
                            NativeCodec.valueOf(recording.codec().name()),
                            version,
                            recording.chromaSubsampling().ordinal(),
                            pool == SoakSeed.Pool.NEEDED ? 1 : 0);
            int number = 0;
            for (RecordingEntry entry = recording.next(); entry != null; entry = recording.next()) {
                if (entry instanceof RecordingEntry.Update update) {
                    String name = file.getFileName() + " update " + number;
                    long crc = number == 0 ? Integer.toUnsignedLong(update.pictureCrc()) : -1;
                    number++;
                    seeds.add(
                            new SoakSeed(
                                    name,
                                    options,
                                    pool,
                                    settings.contrast(),
                                    settings.postprocessing(),
                                    settings.planes(),
                                    settings.width(),
                                    settings.height(),
                                    updateOf(update),
                                    update.payload().length,
                                    crc));
                }
            }
        }
    }

    private static Update updateOf(RecordingEntry.Update update) {
        UpdateHeader header = update.header();
        return new Update(
                header.quality(),
                header.x(),
                header.y(),
                header.width(),
                header.height(),
                update.payload());
    }
}
