package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;

/**
 * Stands in for the device: turns a sequence of screens into a recording, by the command-line
 * tool.
 *
 * @param program path of the tool
 * @param screens folder of the PNG files
 */
record ScreenEncoder(Path program, Path screens) {
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
        List<String> command = new ArrayList<>();
        command.add(program.toString());
        command.addAll(
                List.of("encode", "--quiet", "--force", "--output", recording.toString()));
        command.addAll(List.of("--codec", run.codecName(), "--chroma", run.chromaName()));
        command.addAll(List.of("--protocol", "" + version));
        command.addAll(List.of("--quality", "" + run.quality()));
        command.addAll(
                List.of("--layout", run.options().threads() > 0 ? "pool" : "continuous"));
        frames(run).forEach(frame -> command.add(frame.toString()));

        int status = new ProcessBuilder(command).inheritIO().start().waitFor();
        if (status != 0) {
            throw new IOException("The encoder ended with status " + status + ": " + command);
        }
    }
}
