package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

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

    @Override
    public void close() throws IOException {
        if (wrapper.isEmpty()) {
            Scratch.delete(path);
        }
    }
}
