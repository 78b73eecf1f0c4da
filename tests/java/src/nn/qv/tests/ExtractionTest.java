package nn.qv.tests;

import java.io.IOException;
import java.net.URI;
import java.nio.file.FileSystem;
import java.nio.file.FileSystems;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.Collections;
import java.util.List;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;

/** How the shared object in the jar gets into a folder, and into which. */
final class ExtractionTest extends LoadingFixture {
    private static final int JVMS = 4;

    private ExtractionTest(String[] arguments) {
        super(arguments);
    }

    public static void main(String[] arguments) {
        ExtractionTest tests = new ExtractionTest(arguments);
        tests.extraction();
        tests.folders();
        tests.run.finish();
    }

    private void extraction() {
        test(
                "the shared object in the jar is extracted to a folder for the user alone",
                scratch -> {
                    Path base = scratch.resolve("chosen");
                    bare(scratch).property(EXTRACT, base).run(PROBE).expectSays("serves: " + base);
                    Path file = onlyFile(base);
                    TestRun.expectEqual(-1L, Files.mismatch(object, file), "first difference");
                    String permissions =
                            PosixFilePermissions.toString(
                                    Files.getPosixFilePermissions(file.getParent()));
                    TestRun.expectEqual("rwx------", permissions, "permissions");
                });
        test(
                "what an earlier run extracted is used again",
                scratch -> {
                    bare(scratch).run(PROBE).expectStatus(0);
                    Path file = onlyFile(scratch.resolve("cache"));
                    Object key = Files.readAttributes(file, "unix:ino,ctime");
                    bare(scratch).run(PROBE).expectSays("serves: " + file);
                    TestRun.expectEqual(
                            key, Files.readAttributes(file, "unix:ino,ctime"), "inode, time");
                });
        test(
                "several JVMs that extract at once leave one file, and each can use it",
                scratch -> {
                    ExecutorService pool = Executors.newFixedThreadPool(JVMS);
                    try {
                        ChildJvm jvm = bare(scratch);
                        Callable<ChildJvm.Result> probe = () -> jvm.run(PROBE);
                        for (Future<ChildJvm.Result> result :
                                pool.invokeAll(Collections.nCopies(JVMS, probe))) {
                            result.get().expectSays("serves: " + scratch.resolve("cache"));
                        }
                    } finally {
                        pool.shutdown();
                    }
                    Path file = onlyFile(scratch.resolve("cache"));
                    TestRun.expectEqual(-1L, Files.mismatch(object, file), "first difference");
                });
        test(
                "an extracted file with another content is replaced",
                scratch -> {
                    bare(scratch).run(PROBE).expectStatus(0);
                    Path file = onlyFile(scratch.resolve("cache"));
                    Files.write(file, Files.readAllBytes(otherVersion));
                    Object planted = Files.getAttribute(file, "unix:ino");
                    bare(scratch).run(PROBE).expectSays("serves: " + file);
                    TestRun.expectEqual(-1L, Files.mismatch(object, file), "first difference");
                    boolean renamed = !planted.equals(Files.getAttribute(file, "unix:ino"));
                    TestRun.expect(renamed, "written to while another JVM may have it mapped");
                });
        test(
                "a jar whose shared object does not have its hash is said to be damaged",
                scratch -> {
                    Path copy = scratch.resolve("damaged.jar");
                    Files.copy(jar, copy);
                    spoilHash(copy);
                    bare(scratch, copy)
                            .run(PROBE)
                            .expectSays("attempt: in the jar: the jar is damaged")
                            .expectSays("attempt: System.loadLibrary")
                            .expectSays("attempt: /usr/lib/x86_64-linux-gnu/jni/libimagedecoder.so")
                            .expectSays("attempt: /usr/lib/jni/libimagedecoder.so: there is no")
                            .expectSays("-Dnn.qv.imagedecoder.path=FILE");
                });
    }

    private static void spoilHash(Path copy) throws IOException {
        URI uri = URI.create("jar:" + copy.toUri());
        try (FileSystem zip = FileSystems.newFileSystem(uri, Map.of())) {
            String entry = "/nn/qv/imagedecoder/native/linux-x86_64/libimagedecoder.so.sha256";
            Files.writeString(zip.getPath(entry), "0".repeat(64));
        }
    }

    private static Path onlyFile(Path folder) throws IOException {
        List<Path> files = Scratch.files(folder);
        TestRun.expectEqual(1, files.size(), "files in " + folder);
        return files.get(0);
    }

    private void folders() {
        test(
                "without a usable cache folder the one for temporary files serves",
                scratch -> {
                    Path noFolder = Files.createFile(scratch.resolve("file"));
                    bare(scratch)
                            .environment("XDG_CACHE_HOME", noFolder)
                            .run(PROBE)
                            .expectSays("serves: " + scratch.resolve("tmp/imagedecoder-tester"));
                });
        test(
                "without XDG_CACHE_HOME the cache folder is .cache at home",
                scratch -> {
                    Path cache = scratch.resolve("home/.cache/imagedecoder");
                    bare(scratch)
                            .environment("XDG_CACHE_HOME", "")
                            .run(PROBE)
                            .expectSays("serves: " + cache);
                });
        test(
                "a link in the place of the folder is not followed",
                scratch -> {
                    Path elsewhere = scratch.folder("elsewhere");
                    Path link = scratch.folder("chosen").resolve("imagedecoder");
                    Files.createSymbolicLink(link, elsewhere);
                    bare(scratch)
                            .property(EXTRACT, scratch.resolve("chosen"))
                            .run(PROBE)
                            .expectSays("serves: " + scratch.resolve("cache"));
                    TestRun.expectEqual(List.of(), Scratch.files(elsewhere), "files");
                });
        test(
                "a folder that others could write to is closed to them first",
                scratch -> {
                    Path folder = scratch.folder("chosen/imagedecoder");
                    Files.setPosixFilePermissions(
                            folder, PosixFilePermissions.fromString("rwxrwxrwx"));
                    bare(scratch)
                            .property(EXTRACT, scratch.resolve("chosen"))
                            .run(PROBE)
                            .expectSays("serves: " + folder);
                    TestRun.expectEqual(
                            "rwx------",
                            PosixFilePermissions.toString(Files.getPosixFilePermissions(folder)),
                            "permissions");
                });
    }
}
