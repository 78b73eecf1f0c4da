package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Set;
import java.util.TreeSet;
import java.util.function.Predicate;
import java.util.regex.Pattern;
import java.util.stream.Collectors;

/**
 * What a JVM prints under -Xcheck:jni is what the documentation lists, no more and no less.
 * Arguments: the jar, the jar of the tests, the shared object, the folder of the case files, the
 * document.
 */
final class JniWarningsTest {
    private static final String CHAPTER = "\n## Warnings under `-Xcheck:jni`\n";
    private static final Predicate<String> OWN_LINE =
            Pattern.compile("^(ok |\\d+ passed, 0 failed|\tat )").asPredicate();

    private JniWarningsTest() {}

    public static void main(String[] arguments) throws IOException {
        Set<String> documented = documentedLines(Path.of(arguments[4]));
        TestRun run = new TestRun();
        run.test(
                "the document lists two kinds of warnings",
                () -> TestRun.expectEqual(2, documented.size(), "kinds"));
        Set<String> printed = new TreeSet<>();
        // Good updates from every kind of source, and failing ones.
        for (Class<?> program : List.of(ScreenDecoderTest.class, DecoderFailuresTest.class)) {
            for (String codec : List.of("ICT", "LBE")) {
                run.test(
                        program.getSimpleName() + " with " + codec + " prints only these",
                        () -> {
                            Set<String> lines = printed(arguments, program, codec);
                            TestRun.expect(documented.containsAll(lines), "also " + lines);
                            printed.addAll(lines);
                        });
            }
        }
        run.test(
                "each of them is printed",
                () -> TestRun.expectEqual(documented, printed, "lines"));
        run.finish();
    }

    /** The lines of the chapter's example. */
    private static Set<String> documentedLines(Path document) throws IOException {
        String text = Files.readString(document);
        int start = text.indexOf(CHAPTER);
        TestRun.expect(start >= 0, "no chapter" + CHAPTER);
        int end = text.indexOf("\n## ", start + CHAPTER.length());
        return text.substring(start, end < 0 ? text.length() : end)
                .lines()
                .filter(line -> line.startsWith("    "))
                .map(String::strip)
                .collect(Collectors.toCollection(TreeSet::new));
    }

    private static Set<String> printed(String[] arguments, Class<?> program, String codec)
            throws IOException, InterruptedException {
        ChildJvm.Result result =
                new ChildJvm(Path.of(System.getProperty("java.home")))
                        .property("nn.qv.imagedecoder.path", arguments[2])
                        .option("-Xcheck:jni", "-cp", arguments[0] + ":" + arguments[1])
                        .run(program.getName(), arguments[3], codec)
                        .expectStatus(0);
        return result.output()
                .lines()
                .filter(OWN_LINE.negate())
                .collect(Collectors.toCollection(TreeSet::new));
    }
}
