package nn.qv.viewer;

import java.io.Closeable;
import java.io.IOException;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.DecoderClosedException;
import nn.qv.imagedecoder.DecoderStatistics;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;

/** Decodes what comes from a connection until that ends. It runs in one thread. */
final class DecodingLoop implements Closeable {
    private final DeviceConnection connection;
    private final ScreenView view;
    private final ScreenDecoder decoder;
    private Framebuffer screen;

    DecodingLoop(DeviceConnection connection, ScreenView view) throws IOException {
        this.connection = connection;
        this.view = view;
        decoder = ScreenDecoder.open(connection.options());
    }

    /**
     * Returns when the device has closed the connection, or {@link #close} was called.
     *
     * @throws IOException if the connection fails, or is out of step after a bad update
     */
    void run() throws IOException {
        try {
            for (DeviceMessage message = connection.next();
                    message != null;
                    message = connection.next()) {
                if (message instanceof DeviceMessage.ScreenSize size) {
                    resize(size);
                } else if (message instanceof DeviceMessage.Update update) {
                    decode(update);
                }
            }
        } catch (DecoderClosedException e) {
            // By close(), during an update.
        } catch (IOException e) {
            if (!decoder.isClosed()) { // Otherwise it comes from closing the socket.
                throw e;
            }
        }
    }

    DecoderStatistics statistics() {
        return decoder.statistics();
    }

    /** Ends {@link #run}; any thread may call it. A read that is blocked ends with the socket. */
    @Override
    public void close() throws IOException {
        decoder.close();
        connection.close();
    }

    private void resize(DeviceMessage.ScreenSize size) throws IOException {
        try {
            screen = Framebuffer.argb(size.width(), size.height());
        } catch (IllegalArgumentException e) {
            throw new IOException("The device has a screen that cannot be shown", e);
        }
        view.resized(size.width(), size.height());
    }

    private void decode(DeviceMessage.Update update) throws IOException {
        if (screen == null) {
            throw new IOException("The device sent an update before its screen's size");
        }
        try {
            ChangedRectangle changed =
                    decoder.decode(
                            update.header(), connection.input(), update.length(), screen);
            if (!changed.isEmpty()) {
                view.drawn(screen, changed);
            }
        } catch (UpdateException e) {
            if (!e.sourceInStep()) {
                throw e; // Where the next message begins is not known.
            }
            System.err.println(e.getMessage());
        }
    }
}
