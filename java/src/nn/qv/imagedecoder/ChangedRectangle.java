package nn.qv.imagedecoder;

import java.util.Objects;

/**
 * The part of a framebuffer that an update changed: the bounding box of its coded macroblocks, cut
 * at the framebuffer's edges.
 *
 * <pre>{@code
 * ChangedRectangle changed = decoder.decode(header, bytes, screen);
 * if (!changed.isEmpty()) {
 *     screen.copyTo(image, changed);
 *     panel.repaint(changed.x(), changed.y(), changed.width(), changed.height());
 * }
 * }</pre>
 *
 * @param x left edge in pixels
 * @param y top edge in pixels
 * @param width width in pixels, 0 if nothing changed
 * @param height height in pixels, 0 if nothing changed
 */
public record ChangedRectangle(int x, int y, int width, int height) {
    /** Nothing changed. */
    public static final ChangedRectangle EMPTY = new ChangedRectangle(0, 0, 0, 0);

    /**
     * Checks the numbers.
     *
     * @param x left edge in pixels, at least 0
     * @param y top edge in pixels, at least 0
     * @param width width in pixels, at least 0
     * @param height height in pixels, at least 0
     * @throws IllegalArgumentException if one of them is negative
     */
    public ChangedRectangle {
        if (x < 0 || y < 0 || width < 0 || height < 0) {
            throw new IllegalArgumentException(
                    "Negative number in " + width + "x" + height + " at (" + x + ", " + y + ")");
        }
    }

    /**
     * Whether nothing changed.
     *
     * @return true if there is not a single pixel in it
     */
    public boolean isEmpty() {
        return width == 0 || height == 0;
    }

    /**
     * The smallest rectangle that holds this one and another: what to repaint after several
     * updates.
     *
     * @param other the other rectangle, perhaps empty
     * @return the rectangle around both
     */
    public ChangedRectangle union(ChangedRectangle other) {
        Objects.requireNonNull(other, "other");
        if (isEmpty()) {
            return other;
        }
        if (other.isEmpty()) {
            return this;
        }
        int left = Math.min(x, other.x);
        int top = Math.min(y, other.y);
        return new ChangedRectangle(
                left,
                top,
                Math.max(x + width, other.x + other.width) - left,
                Math.max(y + height, other.y + other.height) - top);
    }

    /**
     * Unpacks the result of a native perform call: four fields of 16 bits, of which the last two
     * are width and height plus the update's own position. No sum of two numbers up to {@link
     * Framebuffer#MAX_SIDE} outgrows its field.
     */
    static ChangedRectangle unpack(long packed, UpdateHeader header, Framebuffer framebuffer) {
        int left = field(packed, 3);
        int top = field(packed, 2);
        int right = Math.min(left + field(packed, 1) - header.x(), framebuffer.width());
        int bottom = Math.min(top + field(packed, 0) - header.y(), framebuffer.height());
        return left < right && top < bottom
                ? new ChangedRectangle(left, top, right - left, bottom - top)
                : EMPTY;
    }

    private static int field(long packed, int index) {
        return (int) (packed >>> Short.SIZE * index) & 0xFFFF;
    }
}
