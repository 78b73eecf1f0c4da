package nn.qv.demo;

import java.awt.image.BufferedImage;

/** The difference of two pictures of one size, sample by sample. */
final class Difference {
    private final int width;
    private final int height;
    private final int[] picture;
    private final int[] source;

    private Difference(BufferedImage picture, BufferedImage source) {
        this.width = picture.getWidth();
        this.height = picture.getHeight();
        this.picture = rgb(picture);
        this.source = rgb(source);
    }

    static Difference of(BufferedImage picture, BufferedImage source) {
        if (picture.getWidth() != source.getWidth()
                || picture.getHeight() != source.getHeight()) {
            throw new IllegalArgumentException("The pictures differ in size");
        }
        return new Difference(picture, source);
    }

    /**
     * Peak signal-to-noise ratio over all samples of the three colours, in dB; infinite for equal
     * pictures.
     */
    double psnr() {
        long squares = 0;
        for (int i = 0; i < picture.length; i++) {
            for (int shift = 0; shift < 24; shift += 8) {
                int difference = absolute(i, shift);
                squares += (long) difference * difference;
            }
        }
        double meanSquare = squares / (3.0 * picture.length);
        return 10 * Math.log10(255.0 * 255.0 / meanSquare);
    }

    /** Of all samples, 0 to 255. */
    int largest() {
        int largest = 0;
        for (int i = 0; i < picture.length; i++) {
            for (int shift = 0; shift < 24; shift += 8) {
                largest = Math.max(largest, absolute(i, shift));
            }
        }
        return largest;
    }

    /** Absolute differences times a factor, at most 255: black where the pictures are equal. */
    BufferedImage amplified(int factor) {
        int[] pixels = new int[picture.length];
        for (int i = 0; i < pixels.length; i++) {
            for (int shift = 0; shift < 24; shift += 8) {
                pixels[i] |= Math.min(255, factor * absolute(i, shift)) << shift;
            }
        }
        BufferedImage image = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        image.setRGB(0, 0, width, height, pixels, 0, width);
        return image;
    }

    /** Of the sample that starts at a bit of pixel {@code i}. */
    private int absolute(int i, int shift) {
        return Math.abs((picture[i] >> shift & 0xFF) - (source[i] >> shift & 0xFF));
    }

    private static int[] rgb(BufferedImage image) {
        return image.getRGB(
                0, 0, image.getWidth(), image.getHeight(), null, 0, image.getWidth());
    }
}
