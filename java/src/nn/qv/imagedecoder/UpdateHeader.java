package nn.qv.imagedecoder;

/**
 * What a device says about an update before its bytes: the rectangle and the quality.
 *
 * <pre>{@code
 * UpdateHeader header = new UpdateHeader(0, 0, 1024, 768, 12);
 * ChangedRectangle changed = decoder.decode(header, bytes, screen);
 * }</pre>
 *
 * @param x left edge of the rectangle in framebuffer pixels, 0 to 65535
 * @param y top edge, 0 to 65535
 * @param width width in pixels, 0 to 65535; as coded, usually whole macroblocks of 16, so that it
 *     may reach over the framebuffer's edge
 * @param height height in pixels, likewise
 * @param quality the quality value as sent; ICT uses its low 4 bits, LBE takes 2 to 11
 */
public record UpdateHeader(int x, int y, int width, int height, int quality) {
    private static final int MAX = 0xFFFF;

    /**
     * Checks the ranges.
     *
     * @param x left edge in pixels, 0 to 65535
     * @param y top edge in pixels, 0 to 65535
     * @param width width in pixels, 0 to 65535
     * @param height height in pixels, 0 to 65535
     * @param quality the quality value
     * @throws IllegalArgumentException if a number does not fit into 16 bits
     */
    public UpdateHeader {
        if (!fits(x) || !fits(y) || !fits(width) || !fits(height)) {
            throw new IllegalArgumentException(
                    "The rectangle "
                            + text(x, y, width, height)
                            + " has a number outside 0 to "
                            + MAX);
        }
    }

    /** The rectangle and quality as they stand in messages. */
    @Override
    public String toString() {
        return text(x, y, width, height) + " of quality " + quality;
    }

    private static boolean fits(int value) {
        return value >= 0 && value <= MAX;
    }

    private static String text(int x, int y, int width, int height) {
        return width + "x" + height + " at (" + x + ", " + y + ")";
    }
}
