package nn.qv.example;

/**
 * One framebuffer update as it arrives from the device.
 *
 * @param quality the update's quality value
 * @param x left edge of its rectangle in pixels
 * @param y top edge
 * @param width width of the rectangle in pixels
 * @param height height
 * @param data the encoded bytes, perhaps with bytes of the next message behind them
 */
public record Update(int quality, int x, int y, int width, int height, byte[] data) {}
