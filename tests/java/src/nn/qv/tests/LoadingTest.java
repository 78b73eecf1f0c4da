package nn.qv.tests;

import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;

/** Where the native library is looked for, and what is said when it is not to be had. */
final class LoadingTest extends LoadingFixture {
    private static final int EI_CLASS = 4;
    private static final int E_MACHINE = 18;
    private static final byte AARCH64 = (byte) 183;

    private LoadingTest(String[] arguments) {
        super(arguments);
    }

    public static void main(String[] arguments) {
        LoadingTest tests = new LoadingTest(arguments);
        tests.places();
        tests.unfitObjects();
        tests.classLoaders();
        tests.run.finish();
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
