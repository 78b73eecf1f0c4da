package nn.qv.demo;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import javax.imageio.ImageIO;
import nn.qv.imagedecoder.NativeLoader;

/**
 * Shows the library at work: encodes real screens, decodes them as a viewer does, writes what the
 * viewer would show, and prints how well and how fast. Arguments: the command-line tool, the folder
 * of the screens, the folder for the results.
 *
 * <p>Ends with status 1 as soon as an update fails or a picture does not resemble its source.
 */
final class Demo {
    /** Every row of the plan stays above; a framebuffer with nothing in it does not. */
    private static final double LEAST_PSNR = 20;

    private final ScreenEncoder encoder;
    private final Path results;

    private Demo(ScreenEncoder encoder, Path results) {
        this.encoder = encoder;
        this.results = results;
    }

    public static void main(String[] arguments) {
        try {
            NativeLoader.load();
            Path results = Path.of(arguments[2]);
            Files.createDirectories(results);
            new Demo(new ScreenEncoder(Path.of(arguments[0]), Path.of(arguments[1])), results)
                    .showAll();
        } catch (IOException | InterruptedException | LinkageError e) {
            System.err.println(System.lineSeparator() + "The demo failed: " + e.getMessage());
            System.exit(1);
        }
    }

    private void showAll() throws IOException, InterruptedException {
        List<DemoRun> runs = DemoPlan.runs();
        System.out.println(
                "   run  screen             frames  codec  chroma  version  threads  quality"
                        + "  bits/pixel  PSNR dB  Mpixel/s");
        for (int i = 0; i < runs.size(); i++) {
            System.out.printf("%3d/%d  ", i + 1, runs.size());
            System.out.flush();
            show(runs.get(i));
        }
        System.out.println();
        System.out.println("PSNR: the last frame as decoded against its source, in RGB.");
        System.out.println(
                "Bits and Mpixel/s count the pixels of all frames, unchanged blocks among them;"
                        + " the speed is that of the fastest pass.");
        System.out.println("The last frames are in " + results.toAbsolutePath() + "/*.png");
    }

    private void show(DemoRun run) throws IOException, InterruptedException {
        Path recording = results.resolve(run.fileStem() + ".rcrec");
        encoder.encode(run, recording);
        ScreenUpdates updates = ScreenUpdates.load(recording);
        Playback playback = Playback.play(updates, run.options());

        BufferedImage shown = playback.framebuffer().toBufferedImage();
        ImageIO.write(shown, "png", results.resolve(run.fileStem() + ".png").toFile());
        List<Path> frames = encoder.frames(run);
        BufferedImage source = ImageIO.read(frames.get(frames.size() - 1).toFile());
        double psnr = Quality.psnr(shown, source);
        printRow(run, updates, playback, psnr);
        if (!(psnr >= LEAST_PSNR)) {
            throw new IOException("PSNR " + psnr + " dB: the picture is not the screen's");
        }
    }

    private static void printRow(
            DemoRun run, ScreenUpdates updates, Playback playback, double psnr) {
        int frames = updates.updates().size();
        double pixels = (double) frames * updates.width() * updates.height();
        System.out.printf(
                "%-17s  %6d  %-5s  %6s  %7d  %7d  %7d  %10.3f  %7.2f  %8.0f%n",
                run.screen(),
                frames,
                run.options().codec(),
                run.chromaName(),
                run.options().protocolVersion().ordinal(),
                run.options().threads(),
                run.quality(),
                8 * updates.bytes() / pixels,
                psnr,
                pixels / playback.bestSeconds() / 1e6);
    }
}
