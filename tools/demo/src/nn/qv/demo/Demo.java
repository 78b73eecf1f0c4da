package nn.qv.demo;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Locale;
import javax.imageio.ImageIO;
import nn.qv.imagedecoder.NativeLoader;

/**
 * Shows the library at work: encodes real screens, decodes them as a viewer does, writes what the
 * viewer would show, prints how well and how fast, and writes a page of it all. Arguments: the
 * command-line tool, the folder of the screens, the folder for the results, and the names of the
 * screens to show, if not all of them.
 *
 * <p>Ends with status 1 as soon as an update fails or a picture does not resemble its source.
 */
final class Demo {
    /** Every row of the plan stays above; a framebuffer with nothing in it does not. */
    private static final double LEAST_PSNR = 20;

    private final Rctool tool;
    private final ScreenEncoder encoder;
    private final Path results;

    private Demo(Path program, Path screens, Path results) {
        this.tool = new Rctool(program);
        this.encoder = new ScreenEncoder(tool, screens);
        this.results = results;
    }

    public static void main(String[] arguments) {
        if (arguments.length < 3) {
            System.err.println("Usage: Demo RCTOOL SCREENS RESULTS [SCREEN...]");
            System.exit(1);
        }
        Path[] paths = Arrays.stream(arguments).limit(3).map(Path::of).toArray(Path[]::new);
        List<String> screens = Arrays.asList(arguments).subList(3, arguments.length);
        try {
            NativeLoader.load();
            new Demo(paths[0], paths[1], paths[2]).showAll(DemoPlan.runs(screens));
        } catch (IOException | InterruptedException | LinkageError e) {
            System.err.println(System.lineSeparator() + "The demo failed: " + e.getMessage());
            System.exit(1);
        }
    }

    private void showAll(List<DemoRun> runs) throws IOException, InterruptedException {
        Path page = results.resolve("index.html");
        Files.createDirectories(results);
        // An earlier page would show this demo's pictures beside its own figures.
        Files.deleteIfExists(page);
        System.out.println(
                "   run  screen             frames  codec  chroma  version  threads  quality"
                        + "  bits/pixel  PSNR dB  Mpixel/s");
        List<DemoResult> shown = new ArrayList<>();
        for (DemoRun run : runs) {
            System.out.printf(Locale.ROOT, "%3d/%d  ", shown.size() + 1, runs.size());
            System.out.flush();
            shown.add(show(run));
        }
        DemoPage.of(shown).write(page);
        System.out.println();
        System.out.println("PSNR: the last frame as decoded against its source, in RGB.");
        System.out.println(
                "Bits and Mpixel/s count the pixels of all frames, unchanged blocks among them;"
                        + " the speed is that of the fastest pass.");
        System.out.println("Pictures, differences, heatmaps, charts and the table:");
        System.out.println(page.toAbsolutePath());
    }

    private DemoResult show(DemoRun run) throws IOException, InterruptedException {
        RunFiles files = new RunFiles(results, run);
        encoder.encode(run, files.recording());
        ScreenUpdates updates = ScreenUpdates.load(files.recording());
        Playback playback = Playback.play(updates, run.options());

        List<Path> frames = encoder.frames(run);
        Path lastFrame = frames.get(frames.size() - 1);
        BufferedImage picture = playback.framebuffer().toBufferedImage();
        Difference difference = Difference.of(picture, ImageIO.read(lastFrame.toFile()));
        DemoResult result =
                new DemoResult(
                        files,
                        updates.width(),
                        updates.height(),
                        updates.updates().size(),
                        updates.bytes(),
                        difference.psnr(),
                        difference.largest(),
                        playback.bestSeconds());
        files.writePictures(lastFrame, picture, difference, tool);
        printRow(result);
        if (!(result.psnr() >= LEAST_PSNR)) {
            throw new IOException(
                    "PSNR " + result.psnr() + " dB: the picture is not the screen's");
        }
        return result;
    }

    private static void printRow(DemoResult result) {
        DemoRun run = result.run();
        System.out.printf(
                Locale.ROOT,
                "%-17s  %6d  %-5s  %6s  %7d  %7d  %7d  %10.3f  %7.2f  %8.0f%n",
                run.screen(),
                result.frames(),
                run.options().codec(),
                run.chromaName(),
                run.options().protocolVersion().ordinal(),
                run.options().threads(),
                run.quality(),
                result.bitsPerPixel(),
                result.psnr(),
                result.megapixelsPerSecond());
    }
}
