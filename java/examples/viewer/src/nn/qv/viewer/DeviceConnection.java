package nn.qv.viewer;

import java.io.BufferedInputStream;
import java.io.Closeable;
import java.io.DataInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.net.InetSocketAddress;
import java.net.Socket;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.RecordLayout;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * A connection to a device: takes the messages apart, and leaves the bytes of the updates to a
 * decoder. The protocol is this example's own; {@link RecordingServer} is the other end.
 */
final class DeviceConnection implements Closeable {
    static final int SCREEN_SIZE = 1;
    static final int UPDATE = 2;

    private static final int CONNECT_MILLIS = 5000;
    private static final int WORKER_THREADS = 2;

    private final Socket socket;
    private final DataInputStream in;
    private final DecoderOptions options;

    private DeviceConnection(Socket socket) throws IOException {
        this.socket = socket;
        in = new DataInputStream(new BufferedInputStream(socket.getInputStream(), 1 << 16));
        options = readOptions();
    }

    static DeviceConnection open(InetSocketAddress device) throws IOException {
        Socket socket = new Socket();
        try {
            socket.connect(device, CONNECT_MILLIS);
            return new DeviceConnection(socket);
        } catch (IOException | RuntimeException e) {
            socket.close();
            throw e;
        }
    }

    /** What the device has stated at the start: the options of a decoder for its updates. */
    DecoderOptions options() {
        return options;
    }

    /** The stream that an update's bytes are read from, right after its message. */
    InputStream input() {
        return in;
    }

    /** Reads the next message; null when the device has closed the connection. */
    DeviceMessage next() throws IOException {
        int type = in.read();
        return switch (type) {
            case -1 -> null;
            case SCREEN_SIZE ->
                    new DeviceMessage.ScreenSize(in.readUnsignedShort(), in.readUnsignedShort());
            case UPDATE -> readUpdate();
            default -> throw new IOException("The device sent a message of unknown type " + type);
        };
    }

    /** Ends a read that is blocked, too. */
    @Override
    public void close() throws IOException {
        socket.close();
    }

    private DeviceMessage readUpdate() throws IOException {
        UpdateHeader header =
                new UpdateHeader(
                        in.readUnsignedShort(),
                        in.readUnsignedShort(),
                        in.readUnsignedShort(),
                        in.readUnsignedShort(),
                        in.readUnsignedByte());
        int length = in.readInt();
        if (length < 0) {
            throw new IOException("The device sent an update of negative length");
        }
        return new DeviceMessage.Update(header, length);
    }

    private DecoderOptions readOptions() throws IOException {
        Codec codec = value(Codec.values());
        ProtocolVersion version = value(ProtocolVersion.values());
        ChromaSubsampling subsampling = value(ChromaSubsampling.values());
        RecordLayout layout = value(RecordLayout.values());
        // Threads have work in version 2 only, and continuous updates must be decoded without.
        boolean threads = version == ProtocolVersion.V2 && layout != RecordLayout.CONTINUOUS;
        return DecoderOptions.builder(codec)
                .protocolVersion(version)
                .chromaSubsampling(subsampling)
                .recordLayout(layout)
                .threads(threads ? WORKER_THREADS : 0)
                .build();
    }

    private <T> T value(T[] values) throws IOException {
        int index = in.readUnsignedByte();
        if (index >= values.length) {
            throw new IOException("The device stated an unknown option " + index);
        }
        return values[index];
    }
}
