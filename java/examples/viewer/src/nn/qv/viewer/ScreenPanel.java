package nn.qv.viewer;

import java.awt.Dimension;
import java.awt.Graphics;
import java.awt.image.BufferedImage;
import javax.swing.JComponent;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Framebuffer;

/**
 * Paints the screen. The decoding thread copies what has changed into a picture of the panel's own,
 * and Swing's thread paints that, so that no half-decoded update is seen.
 */
final class ScreenPanel extends JComponent implements ScreenView {
    private static final long serialVersionUID = 1;

    /** Guarded by this panel's lock; null until the screen has a size. */
    private transient BufferedImage image;

    @Override
    public synchronized void resized(int width, int height) {
        image = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        revalidate();
        repaint();
    }

    @Override
    public synchronized void drawn(Framebuffer screen, ChangedRectangle changed) {
        screen.copyTo(image, changed);
        repaint(changed.x(), changed.y(), changed.width(), changed.height());
    }

    @Override
    public synchronized Dimension getPreferredSize() {
        return image == null ? new Dimension() : new Dimension(image.getWidth(), image.getHeight());
    }

    @Override
    protected synchronized void paintComponent(Graphics graphics) {
        graphics.drawImage(image, 0, 0, null); // Nothing while it is null.
    }
}
