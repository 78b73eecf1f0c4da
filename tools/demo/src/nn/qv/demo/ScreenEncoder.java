package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;

/**
 * Stands in for the device: turns a sequence of screens into a recording.
 *
 * @param screens folder of the PNG files
 */
record ScreenEncoder(Rctool tool, Path screens) {
    /** The pictures of a run's sequence, in order of time. */
    List<Path> frames(DemoRun run) throws IOException {
        try (Stream<Path> files = Files.list(screens)) {
            List<Path> frames =
                    files.filter(file -> file.getFileName().toString().startsWith(run.screen()))
                            .sorted()
                            .toList();
            if (frames.isEmpty()) {
                throw new IOException("No picture " + run.screen() + "*.png in " + screens);
            }
            return frames;
        }
    }

    void encode(DemoRun run, Path recording) throws IOException, InterruptedException {
        int version = run.options().protocolVersion().ordinal();
        List<String> arguments = new ArrayList<>();
        arguments.addAll(
                List.of("encode", "--quiet", "--force", "--output", recording.toString()));
        arguments.addAll(List.of("--codec", run.codecName(), "--chroma", run.chromaName()));
        arguments.addAll(List.of("--protocol", "" + version));
        arguments.addAll(List.of("--quality", "" + run.quality()));
        arguments.addAll(
                List.of("--layout", run.options().threads() > 0 ? "pool" : "continuous"));
        frames(run).forEach(frame -> arguments.add(frame.toString()));
        tool.start(arguments).finish();
    }
}
