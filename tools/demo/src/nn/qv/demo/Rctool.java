package nn.qv.demo;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/**
 * The command-line tool.
 *
 * @param program its path
 */
record Rctool(Path program) {
    /** A command that was started. */
    record Running(List<String> command, Process process) {
        /** Waits for the end. */
        void finish() throws IOException, InterruptedException {
            int status = process.waitFor();
            if (status != 0) {
                throw new IOException("Status " + status + " of: " + String.join(" ", command));
            }
        }
    }

    Running start(List<String> arguments) throws IOException {
        List<String> command = new ArrayList<>(List.of(program.toString()));
        command.addAll(arguments);
        return new Running(command, new ProcessBuilder(command).inheritIO().start());
    }
}
