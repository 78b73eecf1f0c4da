package nn.qv.tests;

import static java.nio.charset.StandardCharsets.UTF_8;

import java.io.IOException;
import java.io.InterruptedIOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;

/** A folder on a file system that is mounted noexec, for a child process. */
record NoexecFolder(Path path, List<String> wrapper) implements AutoCloseable {
    /** One that this system has, or one that is mounted in a name space of the child's own. */
    static NoexecFolder make(Path scratch) throws IOException {
        for (String line : Files.readAllLines(Path.of("/proc/self/mounts"))) {
            String[] fields = line.split(" ");
            Path point = Path.of(fields[1].replace("\\040", " "));
            boolean suitable =
                    List.of("tmpfs", "ext4", "xfs").contains(fields[2])
                            && List.of(fields[3].split(",")).contains("noexec")
                            && Files.isWritable(point);
            if (suitable) {
                return new NoexecFolder(
                        Files.createTempDirectory(point, "imagedecoder-test-"), List.of());
            }
        }
        Path point = Files.createDirectory(scratch.resolve("noexec"));
        String script = "mount -t tmpfs -o noexec tmpfs \"$0\" && exec \"$@\"";
        List<String> wrapper = new ArrayList<>(List.of("unshare", "--mount"));
        // Below a chroot only the real root may have name spaces of its own.
        if (!"root".equals(System.getProperty("user.name"))) {
            wrapper.add("--map-root-user");
        }
        wrapper.addAll(List.of("sh", "-c", script, point.toString()));
        return new NoexecFolder(point, wrapper);
    }

    /** Why the folder cannot be had; nothing if a child process does get it. */
    Optional<String> reasonAgainst() throws IOException {
        List<String> command = new ArrayList<>(wrapper);
        command.add("true");
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        String said = new String(process.getInputStream().readAllBytes(), UTF_8).strip();
        try {
            return process.waitFor() == 0
                    ? Optional.empty()
                    : Optional.of("no folder can be mounted noexec here (" + said + ")");
        } catch (InterruptedException e) {
            throw new InterruptedIOException();
        }
    }

    @Override
    public void close() throws IOException {
        if (wrapper.isEmpty()) {
            Scratch.delete(path);
        }
    }
}
