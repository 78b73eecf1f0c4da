package nn.qv.tests;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.jar.JarFile;
import java.util.stream.Stream;
import java.util.zip.ZipEntry;

/**
 * The jars with sources and Javadoc. Arguments: the folder of the sources, the jar of the sources,
 * the jar of the Javadoc, the project's version.
 */
final class DocumentJarsTest {
    private final Path folder;
    private final String version;

    private DocumentJarsTest(Path folder, String version) {
        this.folder = folder;
        this.version = version;
    }

    public static void main(String[] arguments) {
        DocumentJarsTest tests = new DocumentJarsTest(Path.of(arguments[0]), arguments[3]);
        TestRun run = new TestRun();
        run.test(
                "the jar of the sources holds every source file as it is",
                () -> tests.sources(arguments[1]));
        run.test(
                "the Javadoc has a page for every public class, and none for inner packages",
                () -> tests.javadoc(arguments[2]));
        run.finish();
    }

    private void sources(String file) throws IOException {
        try (JarFile jar = new JarFile(file)) {
            expectVersion(jar);
            List<Path> sources = files();
            for (Path source : sources) {
                byte[] packed = read(jar, folder.relativize(source).toString());
                TestRun.expect(Arrays.equals(Files.readAllBytes(source), packed), "" + source);
            }
            long packed = jar.stream().filter(entry -> !entry.isDirectory()).count();
            TestRun.expectEqual(sources.size() + 1L, packed, "files with the manifest");
        }
    }

    private void javadoc(String file) throws IOException {
        try (JarFile jar = new JarFile(file)) {
            expectVersion(jar);
            String title = new String(read(jar, "index.html"), StandardCharsets.UTF_8);
            TestRun.expect(title.contains("imagedecoder " + version), "no version in index.html");
            for (Path source : files()) {
                String name = source.getFileName().toString().replace(".java", "");
                String path = folder.relativize(source.getParent()) + "/" + name + ".html";
                boolean inner = source.getParent().endsWith("internal");
                boolean isPublic =
                        Files.readString(source).contains("\npublic ") && !name.contains("-");
                boolean found = jar.getEntry("nn.qv.imagedecoder/" + path) != null;
                TestRun.expectEqual(isPublic && !inner, found, "page of " + name);
            }
        }
    }

    private List<Path> files() throws IOException {
        try (Stream<Path> all = Files.walk(folder)) {
            return all.filter(file -> file.toString().endsWith(".java")).toList();
        }
    }

    private void expectVersion(JarFile jar) throws IOException {
        String found = jar.getManifest().getMainAttributes().getValue("Implementation-Version");
        TestRun.expectEqual(version, found, "version");
    }

    private static byte[] read(JarFile jar, String name) throws IOException {
        ZipEntry entry = jar.getEntry(name);
        TestRun.expect(entry != null, "no " + name);
        return jar.getInputStream(entry).readAllBytes();
    }
}
