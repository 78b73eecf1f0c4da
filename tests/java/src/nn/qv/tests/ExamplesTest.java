package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Set;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import javax.tools.Diagnostic;
import javax.tools.DiagnosticCollector;
import javax.tools.JavaCompiler;
import javax.tools.JavaFileObject;
import javax.tools.StandardJavaFileManager;
import javax.tools.ToolProvider;

/**
 * What the documentation shows can be compiled as it stands. Arguments: the jar, the folder of its
 * sources, documents with examples of Java.
 */
final class ExamplesTest {
    private static final Pattern PUBLIC_TYPE =
            Pattern.compile("^public .*\\b(class|interface|enum|record) ", Pattern.MULTILINE);
    private static final Pattern IN_JAVADOC =
            Pattern.compile("<pre>\\{@code\\n(.*?)\\n *\\* *\\}</pre>", Pattern.DOTALL);
    private static final Pattern IN_DOCUMENT =
            Pattern.compile("```java\\n(.*?)\\n```", Pattern.DOTALL);

    /** What surrounds an example: the names that a viewer's developer would have, too. */
    private static final String PROGRAM =
            """
            import java.awt.Component;
            import java.awt.image.BufferedImage;
            import java.io.*;
            import java.nio.*;
            import java.nio.file.Path;
            import javax.imageio.ImageIO;
            import nn.qv.imagedecoder.*;
            import nn.qv.rccore.impl.rfb.img.hive.*;

            abstract class Example%d {
                interface Connection {
                    boolean readHeader();
                    UpdateHeader updateHeader();
                    boolean isLbe();
                    InputStream input();
                    void close();
                }

                Connection connection;
                BufferedInputStream input;
                byte[] bytes;
                UpdateHeader header;
                int x, y, width, height, quality;
                ScreenDecoder decoder;
                Framebuffer screen;
                BufferedImage image;
                Component panel;
                Recording recording;
                NativeImageDecodingHelper feed;

                void run() throws Exception {
            %s
                }
            }
            """;

    /** An example and the file that shows it. */
    private record Example(Path shownBy, Path source) {}

    private final Scratch scratch;
    private final Set<Path> documents = new LinkedHashSet<>();
    private final List<Example> examples = new ArrayList<>();

    private ExamplesTest(Scratch scratch) {
        this.scratch = scratch;
    }

    public static void main(String[] arguments) throws IOException {
        TestRun run = new TestRun();
        try (Scratch scratch = Scratch.make()) {
            ExamplesTest tests = new ExamplesTest(scratch);
            tests.collectFromJavadoc(Path.of(arguments[1]));
            for (int i = 2; i < arguments.length; i++) {
                tests.collect(Path.of(arguments[i]), IN_DOCUMENT);
            }
            tests.test(run, tests.compile(arguments[0]));
        }
        run.finish();
    }

    /** Every public class must have one. */
    private void collectFromJavadoc(Path sources) throws IOException {
        try (Stream<Path> all = Files.walk(sources)) {
            for (Path file : all.filter(f -> f.toString().endsWith(".java")).sorted().toList()) {
                boolean isPublic = PUBLIC_TYPE.matcher(Files.readString(file)).find();
                if (isPublic && !file.getParent().endsWith("internal")) {
                    collect(file, IN_JAVADOC);
                }
            }
        }
    }

    private void collect(Path file, Pattern pattern) throws IOException {
        documents.add(file);
        Matcher matcher = pattern.matcher(Files.readString(file));
        while (matcher.find()) {
            String example = matcher.group(1).replaceAll("(?m)^ *\\* ?", "");
            int number = examples.size();
            Path source = scratch.resolve("Example" + number + ".java");
            Files.writeString(source, String.format(PROGRAM, number, example));
            examples.add(new Example(file, source));
        }
    }

    /** What the compiler has against the examples. */
    private List<Diagnostic<? extends JavaFileObject>> compile(String jar) throws IOException {
        JavaCompiler compiler = ToolProvider.getSystemJavaCompiler();
        DiagnosticCollector<JavaFileObject> complaints = new DiagnosticCollector<>();
        List<Path> sources = examples.stream().map(Example::source).toList();
        List<String> options =
                List.of("-proc:none", "-cp", jar, "-d", scratch.folder("classes").toString());
        try (StandardJavaFileManager files = compiler.getStandardFileManager(null, null, null)) {
            compiler.getTask(
                            null,
                            files,
                            complaints,
                            options,
                            null,
                            files.getJavaFileObjectsFromPaths(sources))
                    .call();
        }
        return complaints.getDiagnostics();
    }

    private void test(TestRun run, List<Diagnostic<? extends JavaFileObject>> complaints) {
        for (Path document : documents) {
            run.test(
                    document.getFileName() + " has an example, and it compiles",
                    () -> {
                        List<Example> own =
                                examples.stream()
                                        .filter(e -> e.shownBy().equals(document))
                                        .toList();
                        TestRun.expect(!own.isEmpty(), "no example");
                        own.forEach(example -> expectNone(complaints, example));
                    });
        }
    }

    private static void expectNone(
            List<Diagnostic<? extends JavaFileObject>> complaints, Example example) {
        for (Diagnostic<? extends JavaFileObject> complaint : complaints) {
            JavaFileObject source = complaint.getSource();
            boolean own =
                    source == null || Path.of(source.toUri()).equals(example.source());
            TestRun.expect(!own, complaint.toString());
        }
    }
}
