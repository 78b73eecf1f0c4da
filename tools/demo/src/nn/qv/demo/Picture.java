package nn.qv.demo;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Path;
import javax.imageio.ImageIO;
import nn.qv.example.Framebuffer;

/** RGB pictures: those of the screens, and those that a framebuffer shows. */
final class Picture {
    private final BufferedImage image;

    private Picture(BufferedImage image) {
        this.image = image;
    }

    static Picture load(Path png) throws IOException {
        BufferedImage image = ImageIO.read(png.toFile());
        if (image == null) {
            throw new IOException(png + " is no picture");
        }
        return new Picture(image);
    }

    static Picture of(Framebuffer framebuffer) {
        int width = framebuffer.width();
        int height = framebuffer.height();
        BufferedImage image = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        image.setRGB(0, 0, width, height, framebuffer.pixels(), 0, width);
        return new Picture(image);
    }

    void write(Path png) throws IOException {
        if (!ImageIO.write(image, "png", png.toFile())) {
            throw new IOException("No PNG writer for " + png);
        }
    }

    /**
     * Peak signal-to-noise ratio over all samples of the three colours, in dB; infinite for equal
     * pictures.
     */
    double psnrAgainst(Picture source) {
        int[] ours = rgb();
        int[] theirs = source.rgb();
        if (ours.length != theirs.length) {
            throw new IllegalArgumentException("The pictures differ in size");
        }
        long squares = 0;
        for (int i = 0; i < ours.length; i++) {
            for (int shift = 0; shift < 24; shift += 8) {
                int difference = (ours[i] >> shift & 0xFF) - (theirs[i] >> shift & 0xFF);
                squares += (long) difference * difference;
            }
        }
        double meanSquare = squares / (3.0 * ours.length);
        return 10 * Math.log10(255.0 * 255.0 / meanSquare);
    }

    private int[] rgb() {
        return image.getRGB(
                0, 0, image.getWidth(), image.getHeight(), null, 0, image.getWidth());
    }
}
