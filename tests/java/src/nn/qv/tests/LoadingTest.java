package nn.qv.tests;

import java.io.IOException;
import java.net.URI;
import java.nio.charset.StandardCharsets;
import java.nio.file.FileSystem;
import java.nio.file.FileSystems;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.Arrays;
import java.util.List;
import java.util.Map;

/**
 * Where the native library is looked for, and what is said when it is not to be had, in JVMs of
 * their own. Arguments: the jar, the jar of the tests, the shared object, one that speaks another
 * version of the interface.
 */
final class LoadingTest {
    private static final String PATH = "nn.qv.imagedecoder.path";
    private static final String EXTRACT = "nn.qv.imagedecoder.extract";
    private static final String PROBE = LoadingProbe.class.getName();
    private static final int EI_CLASS = 4;
    private static final int E_MACHINE = 18;
    private static final byte AARCH64 = (byte) 183;

    private final TestRun run = new TestRun();
    private final Path jar;
    private final Path testJar;
    private final Path object;
    private final Path otherVersion;

    private LoadingTest(String[] arguments) {
        jar = Path.of(arguments[0]);
        testJar = Path.of(arguments[1]);
        object = Path.of(arguments[2]);
        otherVersion = Path.of(arguments[3]);
    }

    public static void main(String[] arguments) {
        LoadingTest tests = new LoadingTest(arguments);
        tests.places();
        tests.extraction();
        tests.folders();
        tests.unfitObjects();
        tests.classLoaders();
        tests.run.finish();
    }

    private interface Body {
        void run(Scratch scratch) throws Exception;
    }

    private void test(String sentence, Body body) {
        run.test(
                sentence,
                () -> {
                    try (Scratch scratch = Scratch.make()) {
                        body.run(scratch);
                    }
                });
    }

    /** A JVM that finds nothing but what the jar brings, with all its folders in the scratch. */
    private ChildJvm bare(Scratch scratch, Path theJar) throws IOException {
        return new ChildJvm(Path.of(System.getProperty("java.home")))
                .property("java." + "library.path", scratch.folder("empty"))
                .property("java.io.tmpdir", scratch.folder("tmp"))
                .property("user.home", scratch.folder("home"))
                .property("user.name", "tester")
                .environment("XDG_CACHE_HOME", scratch.folder("cache"))
                .option("-cp", theJar + ":" + testJar);
    }

    private ChildJvm bare(Scratch scratch) throws IOException {
        return bare(scratch, jar);
    }

    private void places() {
        test(
                "the file that the property names is loaded",
                scratch ->
                        bare(scratch)
                                .property(PATH, object)
                                .run(PROBE)
                                .expectSays("serves: " + object));
        test(
                "the property is final: if its file is missing, no other place is tried",
                scratch -> {
                    bare(scratch)
                            .property(PATH, "/nowhere/x.so")
                            .run(PROBE)
                            .expectSays("attempt: /nowhere/x.so: there is no such file")
                            .expectSilentOn("serves: ")
                            .expectSilentOn("loadLibrary");
                    TestRun.expectEqual(List.of(), Scratch.files(scratch.path()), "files");
                });
        test(
                "without the property the JVM's own search comes first",
                scratch -> {
                    Path folder = scratch.folder("empty");
                    Files.copy(object, folder.resolve("libimagedecoder.so"));
                    bare(scratch).run(PROBE).expectSays("serves: System.loadLibrary");
                });
        test(
                "a shared object beside the jar comes before the one in it",
                scratch -> {
                    Path copy = scratch.folder("app").resolve("viewer.jar");
                    Path beside = copy.resolveSibling("libimagedecoder.so");
                    Files.copy(jar, copy);
                    Files.copy(object, beside);
                    bare(scratch, copy).run(PROBE).expectSays("serves: " + beside);
                });
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
                "an extracted file with another content is replaced",
                scratch -> {
                    bare(scratch).run(PROBE).expectStatus(0);
                    Path file = onlyFile(scratch.resolve("cache"));
                    byte[] planted = Files.readAllBytes(otherVersion);
                    Files.write(file, planted);
                    bare(scratch).run(PROBE).expectSays("serves: " + file);
                    TestRun.expectEqual(-1L, Files.mismatch(object, file), "first difference");
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
        test(
                "from a folder mounted noexec the extraction moves on to the next",
                scratch -> {
                    try (NoexecFolder noexec = NoexecFolder.make(scratch.path())) {
                        bare(scratch)
                                .within(noexec.wrapper().toArray(String[]::new))
                                .property(EXTRACT, noexec.path())
                                .run(PROBE)
                                .expectSays("serves: " + scratch.resolve("cache"));
                    }
                });
        test(
                "if every folder is mounted noexec, the message says so and what to do",
                scratch -> {
                    try (NoexecFolder noexec = NoexecFolder.make(scratch.path())) {
                        bare(scratch)
                                .within(noexec.wrapper().toArray(String[]::new))
                                .environment("XDG_CACHE_HOME", noexec.path().resolve("cache"))
                                .property("java.io.tmpdir", noexec.path())
                                .run(PROBE)
                                .expectSays("mounted noexec")
                                .expectSays("failed to map segment")
                                .expectSays("set -D" + EXTRACT + "=FOLDER")
                                .expectSilentOn("serves: ");
                    }
                });
    }

    private void unfitObjects() {
        expectRefused(
                "of another word size",
                "another architecture",
                bytes -> {
                    bytes[EI_CLASS] = 1;
                    return bytes;
                });
        expectRefused(
                "for another processor",
                "another architecture",
                bytes -> {
                    bytes[E_MACHINE] = AARCH64;
                    return bytes;
                });
        expectRefused(
                "that needs a newer C library",
                "newer C library (glibc)",
                bytes -> {
                    bytes[indexOf(bytes, "GLIBC_2.") + "GLIBC_".length()] = '9';
                    return bytes;
                });
        expectRefused("that was cut off", "damaged", bytes -> Arrays.copyOf(bytes, 20));
        expectRefused(
                "that is none",
                "damaged, or no shared object",
                bytes -> "#!/bin/sh\n".repeat(1000).getBytes(StandardCharsets.US_ASCII));
        test(
                "a shared object of something else is recognised",
                scratch ->
                        bare(scratch)
                                .property(PATH, "/lib/x86_64-linux-gnu/libm.so.6")
                                .run(PROBE)
                                .expectSays("it is not the image decoder"));
        test(
                "a shared object of another release is refused with both versions",
                scratch ->
                        bare(scratch)
                                .property(PATH, otherVersion)
                                .run(PROBE)
                                .expectSays("message: The native image decoder at " + otherVersion)
                                .expectSays("version 8")
                                .expectSays("needs version 9"));
    }

    private interface Change {
        byte[] apply(byte[] bytes);
    }

    private void expectRefused(String what, String message, Change change) {
        test(
                "a shared object " + what + " is refused, and the message names path and reason",
                scratch -> {
                    Path file = scratch.resolve("unfit.so");
                    Files.write(file, change.apply(Files.readAllBytes(object)));
                    bare(scratch)
                            .property(PATH, file)
                            .run(PROBE)
                            .expectSays("attempt: " + file + ": ")
                            .expectSays(message)
                            .expectSilentOn("serves: ");
                });
    }

    private static int indexOf(byte[] bytes, String text) {
        int index = new String(bytes, StandardCharsets.ISO_8859_1).indexOf(text);
        TestRun.expect(index >= 0, text + " is not in the shared object");
        return index;
    }

    private void classLoaders() {
        test(
                "two class loaders decode with the shared object of the jar",
                scratch -> expectTwice(scratch, bare(scratch), scratch.resolve("cache")));
        test(
                "two class loaders decode with the shared object of the property",
                scratch ->
                        expectTwice(scratch, bare(scratch).property(PATH, object), object));
        test(
                "two class loaders decode with the shared object that the JVM finds",
                scratch -> {
                    Path found = scratch.folder("empty").resolve("libimagedecoder.so");
                    Files.copy(object, found);
                    ChildJvm.Result result = bare(scratch).run(PROBE, "" + jar, "" + testJar);
                    result.expectSays("serves: System.loadLibrary")
                            .expectSays("serves: " + found + " (a copy for this class loader)");
                });
    }

    /** The second loader's copy must leave no file behind. */
    private void expectTwice(Scratch scratch, ChildJvm jvm, Path origin) throws Exception {
        jvm.run(PROBE, jar.toString(), testJar.toString())
                .expectSays("serves: " + origin)
                .expectSays("(a copy for this class loader)");
        TestRun.expect(Scratch.files(scratch.path()).size() <= 1, "files are left");
    }
}
