package nn.qv.tests;

import nn.qv.imagedecoder.UpdateHeader;
import nn.qv.imagedecoder.internal.NativeUpdate;

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
record Update(int quality, int x, int y, int width, int height, byte[] data) {
    /** All but the data, for a native perform call. */
    NativeUpdate numbers() {
        return new NativeUpdate(quality, x, y, width, height);
    }

    /** All but the data, for a viewer's decoder. */
    UpdateHeader header() {
        return new UpdateHeader(x, y, width, height, quality);
    }
}
