package nn.qv.viewer;

import java.io.BufferedOutputStream;
import java.io.DataOutputStream;
import java.io.IOException;
import java.net.InetAddress;
import java.net.InetSocketAddress;
import java.net.ServerSocket;
import java.net.Socket;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.UpdateHeader;

/** Stands in for a device: sends the updates of a recording, at their recorded times. */
final class RecordingServer implements AutoCloseable {
    private final Recording recording;
    private final ServerSocket server;

    /** Listens on a free port of the loopback interface. */
    RecordingServer(Path file) throws IOException {
        server = new ServerSocket(0, 1, InetAddress.getLoopbackAddress());
        try {
            recording = Recording.open(file);
        } catch (IOException e) {
            server.close();
            throw e;
        }
    }

    InetSocketAddress address() {
        return (InetSocketAddress) server.getLocalSocketAddress();
    }

    /** Waits for one viewer and serves it. */
    void serve() throws IOException, InterruptedException {
        try (Socket viewer = server.accept();
                DataOutputStream out =
                        new DataOutputStream(
                                new BufferedOutputStream(viewer.getOutputStream()))) {
            sendOptions(out);
            sendSize(recording.initialSettings(), out);
            long start = System.nanoTime();
            for (RecordingEntry entry = recording.next(); entry != null; entry = recording.next()) {
                if (entry instanceof RecordingEntry.Settings settings) {
                    sendSize(settings, out);
                } else if (entry instanceof RecordingEntry.Update update) {
                    waitUntil(start + TimeUnit.MICROSECONDS.toNanos(update.timeMicros()));
                    sendUpdate(update, out);
                }
                out.flush();
            }
        }
    }

    @Override
    public void close() throws IOException {
        server.close();
        recording.close();
    }

    private static void waitUntil(long nanos) throws InterruptedException {
        TimeUnit.NANOSECONDS.sleep(nanos - System.nanoTime());
    }

    private void sendOptions(DataOutputStream out) throws IOException {
        out.writeByte(recording.codec().ordinal());
        out.writeByte(recording.protocolVersion().ordinal());
        out.writeByte(recording.chromaSubsampling().ordinal());
        out.writeByte(recording.recordLayout().ordinal());
    }

    private static void sendSize(RecordingEntry.Settings settings, DataOutputStream out)
            throws IOException {
        out.writeByte(DeviceConnection.SCREEN_SIZE);
        out.writeShort(settings.width());
        out.writeShort(settings.height());
    }

    private static void sendUpdate(RecordingEntry.Update update, DataOutputStream out)
            throws IOException {
        UpdateHeader header = update.header();
        out.writeByte(DeviceConnection.UPDATE);
        out.writeShort(header.x());
        out.writeShort(header.y());
        out.writeShort(header.width());
        out.writeShort(header.height());
        out.writeByte(header.quality());
        out.writeInt(update.payload().length);
        out.write(update.payload());
    }
}
