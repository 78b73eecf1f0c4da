package nn.qv.viewer;

import java.awt.GraphicsEnvironment;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.net.InetSocketAddress;
import java.nio.file.Path;
import javax.imageio.ImageIO;
import nn.qv.imagedecoder.DecoderStatistics;

/**
 * Shows the screen of a device in a window, or saves what it shows at the end. The device is a
 * recording that is sent over a loopback socket.
 */
public final class Viewer {
    private static final String USAGE = "usage: Viewer RECORDING [PICTURE.png]";

    private Viewer() {}

    /** Exits with status 1 if the arguments or the connection are bad. */
    public static void main(String[] arguments) {
        if (arguments.length < 1 || arguments.length > 2) {
            System.err.println(USAGE);
            System.exit(1);
        }
        Path picture = arguments.length > 1 ? Path.of(arguments[1]) : null;
        if (picture == null && GraphicsEnvironment.isHeadless()) {
            System.err.println("There is no display for a window: name a picture to save to");
            System.exit(1);
        }
        try (RecordingServer server = new RecordingServer(Path.of(arguments[0]))) {
            serve(server);
            view(server.address(), picture);
        } catch (IOException e) {
            System.err.println(e);
            System.exit(1);
        }
    }

    /** In a thread of its own, which does not keep the program from ending. */
    private static void serve(RecordingServer server) {
        Thread thread =
                new Thread(
                        () -> {
                            try {
                                server.serve();
                            } catch (IOException | InterruptedException e) {
                                System.err.println("The server ends: " + e.getMessage());
                            }
                        },
                        "server");
        thread.setDaemon(true);
        thread.start();
    }

    /** Decodes until the device closes the connection; without a picture's name in a window. */
    private static void view(InetSocketAddress device, Path picture) throws IOException {
        ScreenPanel panel = new ScreenPanel();
        try (DeviceConnection connection = DeviceConnection.open(device);
                DecodingLoop loop = new DecodingLoop(connection, panel)) {
            ViewerWindow window = picture == null ? new ViewerWindow(panel) : null;
            if (window != null) {
                window.open(loop);
            }
            loop.run();
            report(loop.statistics());
            if (window != null) {
                window.setTitle("Viewer: the device has closed the connection");
            } else {
                save(panel, picture);
            }
        }
    }

    private static void report(DecoderStatistics statistics) {
        System.out.println(
                statistics.updates()
                        + " updates of "
                        + statistics.bytes()
                        + " bytes decoded, "
                        + statistics.refusals()
                        + " refused");
    }

    /** What the panel paints, without a window. */
    private static void save(ScreenPanel panel, Path picture) throws IOException {
        panel.setSize(panel.getPreferredSize());
        BufferedImage image =
                new BufferedImage(
                        Math.max(1, panel.getWidth()),
                        Math.max(1, panel.getHeight()),
                        BufferedImage.TYPE_INT_RGB);
        panel.paint(image.getGraphics());
        ImageIO.write(image, "png", picture.toFile());
    }
}
