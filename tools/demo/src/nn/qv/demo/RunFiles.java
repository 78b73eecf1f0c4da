package nn.qv.demo;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import javax.imageio.ImageIO;

/**
 * The files of a run, all in one folder. The runs of a screen share its source.
 *
 * @param folder where they are written
 */
record RunFiles(Path folder, DemoRun run) {
    /** Shows differences of a single step, where the picture is small too. */
    static final int DIFFERENCE_FACTOR = 16;

    Path recording() {
        return folder.resolve(run.fileStem() + ".rcrec");
    }

    /** The last frame before encoding. */
    Path source() {
        return folder.resolve(run.screen() + "-source.png");
    }

    /** The last frame as a viewer shows it. */
    Path decoded() {
        return folder.resolve(run.fileStem() + ".png");
    }

    Path difference() {
        return folder.resolve(run.fileStem() + "-difference.png");
    }

    Path heatmap() {
        return folder.resolve(run.fileStem() + "-heatmap.png");
    }

    /**
     * Writes the four pictures. The tool makes the heatmap of the recording in the meantime.
     *
     * @param frame file of the last frame
     */
    void writePictures(Path frame, BufferedImage shown, Difference difference, Rctool tool)
            throws IOException, InterruptedException {
        Rctool.Running heatmap =
                tool.start(
                        List.of(
                                "heatmap",
                                "--quiet",
                                "--force",
                                recording().toString(),
                                "--output",
                                heatmap().toString()));
        Files.copy(frame, source(), StandardCopyOption.REPLACE_EXISTING);
        ImageIO.write(shown, "png", decoded().toFile());
        ImageIO.write(
                difference.amplified(DIFFERENCE_FACTOR), "png", difference().toFile());
        heatmap.finish();
    }
}
