package nn.qv.imagedecoder.internal;

/**
 * The numbers of an update for a native perform call, as the device sent them.
 *
 * @param quality the quality value
 * @param x left edge of the rectangle in pixels
 * @param y top edge
 * @param width width of the rectangle in pixels
 * @param height height
 */
public record NativeUpdate(int quality, int x, int y, int width, int height) {}
