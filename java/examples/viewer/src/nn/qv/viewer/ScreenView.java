package nn.qv.viewer;

import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Framebuffer;

/** What shows the screen. Called by the decoding thread, which does not draw meanwhile. */
interface ScreenView {
    /** The screen has a size, or another one. */
    void resized(int width, int height);

    /** A part of the screen has been drawn. */
    void drawn(Framebuffer screen, ChangedRectangle changed);
}
