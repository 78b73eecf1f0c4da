package nn.qv.demo;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import nn.qv.example.Update;

/**
 * The updates of a stream file; docs/stream-file.md describes its bytes.
 *
 * @param width framebuffer width in pixels
 * @param height framebuffer height in pixels
 */
record StreamFile(int width, int height, List<Entry> entries) {
    /**
     * One update. Its data goes on behind the payload with bytes that belong to what follows in the
     * file, as on a connection, where a reader gets what happens to have arrived.
     */
    record Entry(Update update, int payloadBytes) {}

    private static final int MAGIC = 'R' | 'C' << 8 | 'S' << 16 | 'T' << 24;
    private static final int CODEC_TO_LAYOUT_BYTES = 4;
    private static final int UNTIL_END_OF_FILE = -1;
    private static final int FOLLOWING_BYTES = 256;

    static StreamFile load(Path path) throws IOException {
        byte[] file = Files.readAllBytes(path);
        ByteBuffer in = ByteBuffer.wrap(file).order(ByteOrder.LITTLE_ENDIAN);
        if (in.getInt() != MAGIC || u16(in) != 1) {
            throw new IOException(path + " is no stream file of version 1");
        }
        int headerBytes = u16(in);
        int updateHeaderBytes = u16(in);
        in.position(in.position() + CODEC_TO_LAYOUT_BYTES);
        int width = u16(in);
        int height = u16(in);
        int count = in.getInt();
        in.position(headerBytes);

        List<Entry> entries = new ArrayList<>();
        while (count == UNTIL_END_OF_FILE ? in.hasRemaining() : entries.size() < count) {
            entries.add(readEntry(file, in, updateHeaderBytes));
        }
        return new StreamFile(width, height, entries);
    }

    long payloadBytes() {
        return entries.stream().mapToLong(Entry::payloadBytes).sum();
    }

    private static Entry readEntry(byte[] file, ByteBuffer in, int headerBytes) {
        int payload = in.position() + headerBytes;
        int quality = in.getInt();
        int x = u16(in);
        int y = u16(in);
        int width = u16(in);
        int height = u16(in);
        int payloadBytes = in.getInt();
        int payloadEnd = payload + payloadBytes;
        in.position(payloadEnd);

        int end = Math.min(file.length, payloadEnd + FOLLOWING_BYTES);
        byte[] data = Arrays.copyOfRange(file, payload, end);
        return new Entry(new Update(quality, x, y, width, height, data), payloadBytes);
    }

    private static int u16(ByteBuffer in) {
        return in.getShort() & 0xFFFF;
    }
}
