package nn.qv.imagedecoder.internal;

import java.io.Closeable;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.List;
import java.util.Set;

/**
 * Appends to a recording, one whole record at a time, so that what is on disk can always be read up
 * to the last one.
 */
public final class RecordingWriter implements Closeable {
    /** What an index knows of an update. */
    private record Entry(long offset, long timeMicros) {}

    /** What was on the screen is not for the other users of the machine. */
    private static final FileAttribute<?> OWNER_ONLY =
            PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString("rw-------"));

    private static final Set<StandardOpenOption> NEW_FILE =
            Set.of(StandardOpenOption.CREATE_NEW, StandardOpenOption.WRITE);

    private final FileChannel channel;
    private final List<Entry> index = new ArrayList<>();
    private long offset;

    /** Begins a file, which must not exist yet. */
    public RecordingWriter(Path file) throws IOException {
        channel = FileChannel.open(file, NEW_FILE, OWNER_ONLY);
    }

    /** Writes the header, of which the first bytes and the CRC are added here. */
    public void header(
            byte codec, byte version, byte chroma, byte layout, byte[] settings, long startMicros,
            int threads)
            throws IOException {
        ByteBuffer header = RecordingFormat.allocate(RecordingFormat.HEADER_BYTES);
        header.put(RecordingFormat.MAGIC);
        header.putShort((short) RecordingFormat.VERSION_OF_ONE_DECODER);
        header.putShort((short) RecordingFormat.HEADER_BYTES);
        header.put(codec).put(version).put(chroma).put(layout).put(settings);
        header.putLong(startMicros).putInt(threads);
        append(header);
    }

    /** Whether the header has been written. */
    public boolean begun() {
        return offset > 0;
    }

    /** Writes an update's record; the fields are those that stand before the payload. */
    public void update(ByteBuffer fields, byte[] payload, long timeMicros) throws IOException {
        index.add(new Entry(offset, timeMicros));
        record(RecordingFormat.UPDATE, fields, payload);
    }

    /** Writes a record of settings. */
    public void settings(byte[] settings) throws IOException {
        record(RecordingFormat.SETTINGS, ByteBuffer.wrap(settings), new byte[0]);
    }

    /** Writes a picture's record; the fields are those that stand before the data. */
    public void picture(ByteBuffer fields, byte[] data) throws IOException {
        record(RecordingFormat.PICTURE, fields, data);
    }

    /** Writes a note. */
    public void note(String text) throws IOException {
        byte[] bytes = text.getBytes(StandardCharsets.UTF_8);
        record(RecordingFormat.NOTE, ByteBuffer.wrap(bytes), new byte[0]);
    }

    /** Writes the index, if there is anything to find by it, and closes the file. */
    @Override
    public void close() throws IOException {
        try (channel) {
            if (begun() && channel.isOpen()) {
                writeIndex();
            }
        }
    }

    /** Closes the file as it is. */
    public void abandon() throws IOException {
        channel.close();
    }

    private void writeIndex() throws IOException {
        ByteBuffer body = RecordingFormat.allocate(4 + 16 * index.size() + 8);
        body.putInt(index.size());
        for (Entry entry : index) {
            body.putLong(entry.offset).putLong(entry.timeMicros);
        }
        body.putLong(offset).flip();
        record(RecordingFormat.INDEX, body, new byte[0]);
    }

    private void record(int type, ByteBuffer fields, byte[] rest) throws IOException {
        int body = Math.addExact(fields.remaining(), rest.length);
        if (body > RecordingFormat.MOST_BODY_BYTES) {
            throw new IOException("A record of " + body + " bytes is too large");
        }
        ByteBuffer record =
                RecordingFormat.allocate(
                        RecordingFormat.RECORD_HEADER_BYTES + body + RecordingFormat.CRC_BYTES);
        record.put(RecordingFormat.RECORD_MAGIC).put((byte) type).putInt(body);
        record.put(fields).put(rest);
        append(record);
    }

    /** Adds the CRC and writes it all. */
    private void append(ByteBuffer bytes) throws IOException {
        bytes.putInt(RecordingFormat.crc(bytes.array(), bytes.position())).flip();
        int count = bytes.remaining();
        while (bytes.hasRemaining()) {
            channel.write(bytes);
        }
        offset += count;
    }
}
