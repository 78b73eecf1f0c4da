package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Comparator;
import java.util.List;
import java.util.stream.Stream;

/** A folder for a test's files, gone with the test. */
record Scratch(Path path) implements AutoCloseable {
    static Scratch make() throws IOException {
        return new Scratch(Files.createTempDirectory("imagedecoder-test-"));
    }

    Path resolve(String name) {
        return path.resolve(name);
    }

    Path folder(String name) throws IOException {
        return Files.createDirectories(path.resolve(name));
    }

    /** The regular files under a folder, none if it does not exist. */
    static List<Path> files(Path folder) throws IOException {
        if (!Files.exists(folder)) {
            return List.of();
        }
        try (Stream<Path> all = Files.walk(folder)) {
            return all.filter(Files::isRegularFile).toList();
        }
    }

    static void delete(Path folder) throws IOException {
        try (Stream<Path> all = Files.walk(folder)) {
            for (Path file : all.sorted(Comparator.reverseOrder()).toList()) {
                Files.delete(file);
            }
        }
    }

    @Override
    public void close() throws IOException {
        delete(path);
    }
}
