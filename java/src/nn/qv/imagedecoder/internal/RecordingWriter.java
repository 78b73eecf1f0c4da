package nn.qv.imagedecoder.internal;

import java.io.Closeable;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/**
 * Appends to a recording, one whole record at a time, so that what is on disk can always be read up
 * to the last one. After a failure only {@link #abandon} may be called.
 */
public final class RecordingWriter implements Closeable {
    /** Where an update's record begins in the file, and its time. */
    public record Entry(long offset, long timeMicros) {}

    private static final byte[] NOTHING = {};

    private final Path file;
    private final FileChannel channel;
    private final boolean created;
    private final int version;
    private final List<Entry> index;
    private long offset;

    private RecordingWriter(
            Path file,
            FileChannel channel,
            boolean created,
            int version,
            List<Entry> index,
            long offset) {
        this.file = file;
        this.channel = channel;
        this.created = created;
        this.version = version;
        this.index = new ArrayList<>(index);
        this.offset = offset;
    }

    /** Begins a file, which must not exist yet. */
    public static RecordingWriter create(Path file) throws IOException {
        FileChannel channel = RecordingChannel.create(file);
        return new RecordingWriter(
                file, channel, true, RecordingFormat.VERSION, List.of(), 0);
    }

    /**
     * Appends to a file.
     *
     * @param version that of the file
     * @param index its updates so far
     * @param size how many bytes it should have
     * @param end where its last good record ends; what follows is cut off
     */
    public static RecordingWriter resume(
            Path file, int version, List<Entry> index, long size, long end) throws IOException {
        FileChannel channel = RecordingChannel.resume(file, size, end);
        return new RecordingWriter(file, channel, false, version, index, end);
    }

    /** The file's version, which decides what may be written. */
    public int version() {
        return version;
    }

    /** Whether the header has been written. */
    public boolean begun() {
        return offset > 0;
    }

    /** Writes the header, of which the first bytes and the CRC are added here. */
    public void header(byte[] codes, byte[] settings, long startMicros, int threads)
            throws IOException {
        ByteBuffer header = RecordingFormat.allocate(RecordingFormat.HEADER_BYTES);
        header.put(RecordingFormat.MAGIC);
        header.putShort((short) version);
        header.putShort((short) RecordingFormat.HEADER_BYTES);
        header.put(codes).put(settings);
        header.putLong(startMicros).putInt(threads);
        append(header);
    }

    /** Writes an update's record; the fields are those that stand before the payload. */
    public void update(ByteBuffer fields, byte[] payload, long timeMicros) throws IOException {
        Entry entry = new Entry(offset, timeMicros);
        record(RecordingFormat.UPDATE, fields, payload);
        index.add(entry);
    }

    /** Writes a record of settings. */
    public void settings(byte[] settings) throws IOException {
        record(RecordingFormat.SETTINGS, ByteBuffer.wrap(settings), NOTHING);
    }

    /** Writes a picture's record; the fields are those that stand before the data. */
    public void picture(ByteBuffer fields, byte[] data) throws IOException {
        record(RecordingFormat.PICTURE, fields, data);
    }

    /** Writes a decoder's record. */
    public void decoder(ByteBuffer fields) throws IOException {
        record(RecordingFormat.DECODER, fields, NOTHING);
    }

    /** Writes a note. */
    public void note(String text) throws IOException {
        byte[] bytes = text.getBytes(StandardCharsets.UTF_8);
        record(RecordingFormat.NOTE, ByteBuffer.wrap(bytes), NOTHING);
    }

    /** Writes the index and closes the file; a new one without a header is deleted. */
    @Override
    public void close() throws IOException {
        if (begun() && channel.isOpen()) {
            writeIndex();
        }
        channel.close();
        deleteIfEmpty();
    }

    /** Cuts the file after its last whole record and closes it; deletes an empty new one. */
    public void abandon() throws IOException {
        try (channel) {
            channel.truncate(offset);
        }
        deleteIfEmpty();
    }

    private void deleteIfEmpty() throws IOException {
        if (created && !begun()) {
            Files.deleteIfExists(file);
        }
    }

    private void writeIndex() throws IOException {
        ByteBuffer body = RecordingFormat.allocate(4 + 16 * index.size() + 8);
        body.putInt(index.size());
        for (Entry entry : index) {
            body.putLong(entry.offset).putLong(entry.timeMicros);
        }
        body.putLong(offset).flip();
        record(RecordingFormat.INDEX, body, NOTHING);
    }

    private void record(int type, ByteBuffer fields, byte[] rest) throws IOException {
        long body = (long) fields.remaining() + rest.length;
        if (body > RecordingFormat.MOST_BODY_BYTES) {
            throw new IOException("A record of " + body + " bytes is too large");
        }
        int bytes =
                RecordingFormat.RECORD_HEADER_BYTES + (int) body + RecordingFormat.CRC_BYTES;
        ByteBuffer record = RecordingFormat.allocate(bytes);
        record.put(RecordingFormat.RECORD_MAGIC).put((byte) type).putInt((int) body);
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
