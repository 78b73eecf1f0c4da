package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Stream;

/**
 * Stands in for the device: turns a sequence of screens into a stream file, by the encoder program.
 *
 * @param program path of the encoder program
 * @param screens folder of the PNG files
 */
record StreamEncoder(Path program, Path screens) {
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

    void encode(DemoRun run, Path streamFile) throws IOException, InterruptedException {
        List<String> command = new ArrayList<>();
        command.add(program.toString());
        command.addAll(List.of("--quiet", "--output", streamFile.toString()));
        command.addAll(List.of("--codec", run.codecName(), "--chroma", run.chromaName()));
        command.addAll(List.of("--version", "" + run.options().protocolVersion()));
        command.addAll(List.of("--quality", "" + run.quality()));
        if (run.options().protocolVersion() == 2) {
            String layout = run.options().threads() > 0 ? "pool" : "continuous";
            command.addAll(List.of("--layout", layout));
        }
        frames(run).forEach(frame -> command.add(frame.toString()));

        int status = new ProcessBuilder(command).inheritIO().start().waitFor();
        if (status != 0) {
            throw new IOException("The encoder ended with status " + status + ": " + command);
        }
    }
}
