package nn.qv.demo;

import java.awt.image.BufferedImage;

/** How much a picture resembles its source. */
final class Quality {
    private Quality() {}

    /**
     * Peak signal-to-noise ratio over all samples of the three colours, in dB; infinite for equal
     * pictures.
     */
    static double psnr(BufferedImage picture, BufferedImage source) {
        int[] ours = rgb(picture);
        int[] theirs = rgb(source);
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

    private static int[] rgb(BufferedImage image) {
        return image.getRGB(
                0, 0, image.getWidth(), image.getHeight(), null, 0, image.getWidth());
    }
}
