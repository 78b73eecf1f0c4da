package nn.qv.viewer;

import java.awt.event.WindowAdapter;
import java.awt.event.WindowEvent;
import java.io.IOException;
import javax.swing.JFrame;
import javax.swing.JScrollPane;
import javax.swing.SwingUtilities;

/** The window around the screen. Its methods may be called by any thread. */
final class ViewerWindow {
    private final JFrame frame = new JFrame("Viewer");
    private final ScreenPanel panel;

    ViewerWindow(ScreenPanel panel) {
        this.panel = panel;
    }

    /** Shows the window; closing it closes the loop. */
    void open(DecodingLoop loop) {
        SwingUtilities.invokeLater(
                () -> {
                    frame.setDefaultCloseOperation(JFrame.DISPOSE_ON_CLOSE);
                    frame.addWindowListener(
                            new WindowAdapter() {
                                @Override
                                public void windowClosed(WindowEvent event) {
                                    closeQuietly(loop);
                                }
                            });
                    frame.add(new JScrollPane(panel));
                    frame.setSize(1024, 768);
                    frame.setVisible(true);
                });
    }

    void setTitle(String title) {
        SwingUtilities.invokeLater(() -> frame.setTitle(title));
    }

    private static void closeQuietly(DecodingLoop loop) {
        try {
            loop.close();
        } catch (IOException e) {
            System.err.println(e.getMessage());
        }
    }
}
