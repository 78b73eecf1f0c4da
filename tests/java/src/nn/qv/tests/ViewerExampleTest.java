package nn.qv.tests;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import javax.imageio.ImageIO;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.RecordingPlayer;

/**
 * The example of a viewer compiles, runs without a display and shows what the recording shows.
 * Arguments: the jar, the shared object, the example's folder.
 */
final class ViewerExampleTest {
    private final String jar;
    private final String object;
    private final Path folder;

    private ViewerExampleTest(String[] arguments) {
        jar = arguments[0];
        object = arguments[1];
        folder = Path.of(arguments[2]);
    }

    public static void main(String[] arguments) {
        ViewerExampleTest tests = new ViewerExampleTest(arguments);
        TestRun run = new TestRun();
        run.test("the viewer saves the last picture of its recording", tests::savesLastPicture);
        run.finish();
    }

    private String recording() {
        return folder.resolve("firmware.rcrec").toString();
    }

    private void savesLastPicture() throws Exception {
        try (Scratch scratch = Scratch.make();
                RecordingPlayer player = RecordingPlayer.open(Path.of(recording()), 0)) {
            TestRun.expect(player.play(false), "the recording does not play as recorded");
            TestRun.expect(player.checksums() > 1, "few checksums");
            Path picture = scratch.resolve("screen.png");
            String report = player.updates() + " updates of " + player.statistics().bytes();
            String said = run(recording(), picture.toString());
            TestRun.expect(said.contains(report + " bytes decoded, 0 refused"), said);
            expectSame(player.framebuffer(), ImageIO.read(picture.toFile()));
        }
    }

    private static void expectSame(Framebuffer screen, BufferedImage picture) {
        TestRun.expectEqual(screen.width(), picture.getWidth(), "width");
        TestRun.expectEqual(screen.height(), picture.getHeight(), "height");
        for (int y = 0; y < screen.height(); y++) {
            for (int x = 0; x < screen.width(); x++) {
                int expected = screen.pixels().get(y * screen.width() + x);
                if (picture.getRGB(x, y) != expected) {
                    throw new AssertionError("another pixel at " + x + ", " + y);
                }
            }
        }
    }

    /** What the example's script prints, with this JDK. */
    private String run(String... arguments) throws IOException, InterruptedException {
        List<String> command = new ArrayList<>();
        command.add(folder.resolve("run").toString());
        command.addAll(List.of(arguments));
        ProcessBuilder builder = new ProcessBuilder(command).redirectErrorStream(true);
        String programs = Path.of(System.getProperty("java.home"), "bin").toString();
        builder.environment().merge("PATH", programs, (old, added) -> added + ":" + old);
        builder.environment().put("IMAGEDECODER_JAR", jar);
        builder.environment()
                .put(
                        "JDK_JAVA_OPTIONS",
                        "-Djava.awt.headless=true -Dnn.qv.imagedecoder.path=" + object);
        Process process = builder.start();
        process.getOutputStream().close();
        byte[] output = process.getInputStream().readAllBytes();
        String said = new String(output, StandardCharsets.UTF_8);
        TestRun.expectEqual(0, process.waitFor(), "status, which printed " + said);
        return said;
    }
}
