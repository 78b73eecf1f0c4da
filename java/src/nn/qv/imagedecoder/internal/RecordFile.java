package nn.qv.imagedecoder.internal;

import java.io.Closeable;
import java.io.EOFException;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.channels.FileChannel.MapMode;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.Arrays;

/** The framing of a recording: header and records with their checksums, without their meaning. */
public final class RecordFile implements Closeable {
    /** What was found where a record should be. */
    public enum State {
        WHOLE,
        NONE,
        CUT,
        DAMAGED
    }

    /** A record, or why there is none: only a whole one has a type and a body. */
    public record Item(State state, int type, ByteBuffer body, long end) {
        private static Item none(State state) {
            return new Item(state, 0, null, 0);
        }
    }

    private final FileChannel channel;
    private final ByteBuffer header;
    private long position;

    private RecordFile(FileChannel channel, Path path) throws IOException {
        this.channel = channel;
        header = readHeader(path);
        position = header.limit() + RecordingFormat.CRC_BYTES;
    }

    /** Opens a file that begins with a good header. */
    public static RecordFile open(Path path) throws IOException {
        FileChannel channel = FileChannel.open(path, StandardOpenOption.READ);
        try {
            return new RecordFile(channel, path);
        } catch (IOException | RuntimeException e) {
            channel.close();
            throw e;
        }
    }

    /** The header without its CRC. */
    public ByteBuffer header() {
        return header.duplicate().order(header.order());
    }

    /** Behind the header and the records that were accepted. */
    public long position() {
        return position;
    }

    /** How many bytes the file has now. */
    public long size() throws IOException {
        return channel.size();
    }

    /** Reads what follows. */
    public Item next() throws IOException {
        return item(position);
    }

    /** Whether a whole record begins anywhere after the first byte of the next one. */
    public boolean goesOnLater() throws IOException {
        ByteBuffer rest = channel.map(MapMode.READ_ONLY, position, channel.size() - position);
        for (int at = 1; at < rest.limit() - RecordingFormat.RECORD_HEADER_BYTES; at++) {
            if (beginsWithMagic(rest, at) && item(position + at).state() == State.WHOLE) {
                return true;
            }
        }
        return false;
    }

    private static boolean beginsWithMagic(ByteBuffer bytes, int at) {
        byte[] magic = RecordingFormat.RECORD_MAGIC;
        return bytes.get(at) == magic[0]
                && bytes.get(at + 1) == magic[1]
                && bytes.get(at + 2) == magic[2];
    }

    private Item item(long at) throws IOException {
        long left = channel.size() - at;
        if (left == 0) {
            return Item.none(State.NONE);
        }
        int headerBytes = (int) Math.min(left, RecordingFormat.RECORD_HEADER_BYTES);
        ByteBuffer start = read(at, headerBytes);
        int magicBytes = Math.min(headerBytes, RecordingFormat.RECORD_MAGIC.length);
        if (!beginsWith(start, Arrays.copyOf(RecordingFormat.RECORD_MAGIC, magicBytes))) {
            return Item.none(State.DAMAGED);
        }
        if (headerBytes < RecordingFormat.RECORD_HEADER_BYTES) {
            return Item.none(State.CUT);
        }
        int bodyBytes = start.getInt(4);
        if (bodyBytes < 0 || bodyBytes > RecordingFormat.MOST_BODY_BYTES) {
            return Item.none(State.DAMAGED);
        }
        int bytes = headerBytes + bodyBytes + RecordingFormat.CRC_BYTES;
        return left < bytes ? Item.none(State.CUT) : whole(read(at, bytes), at);
    }

    /** Goes on behind a record. */
    public void accept(Item item) {
        position = item.end();
    }

    @Override
    public void close() throws IOException {
        channel.close();
    }

    private Item whole(ByteBuffer record, long at) {
        int end = record.limit() - RecordingFormat.CRC_BYTES;
        if (RecordingFormat.crc(record.array(), end) != record.getInt(end)) {
            return Item.none(State.DAMAGED);
        }
        int from = RecordingFormat.RECORD_HEADER_BYTES;
        ByteBuffer body = record.slice(from, end - from).order(record.order());
        return new Item(State.WHOLE, record.get(3) & 0xFF, body, at + record.limit());
    }

    private ByteBuffer readHeader(Path path) throws IOException {
        int sizeEnd = RecordingFormat.MAGIC.length + 2 * Short.BYTES;
        if (channel.size() >= RecordingFormat.HEADER_BYTES) {
            ByteBuffer start = read(0, sizeEnd);
            int bytes = start.getShort(sizeEnd - Short.BYTES) & 0xFFFF;
            if (beginsWith(start, RecordingFormat.MAGIC)
                    && bytes >= RecordingFormat.HEADER_BYTES
                    && bytes <= channel.size()) {
                ByteBuffer all = read(0, bytes);
                int end = bytes - RecordingFormat.CRC_BYTES;
                if (RecordingFormat.crc(all.array(), end) == all.getInt(end)) {
                    return all.limit(end);
                }
            }
        }
        throw new IOException(path + " is no recording, or was cut within its header");
    }

    private static boolean beginsWith(ByteBuffer bytes, byte[] magic) {
        return Arrays.equals(bytes.array(), 0, magic.length, magic, 0, magic.length);
    }

    private ByteBuffer read(long from, int bytes) throws IOException {
        ByteBuffer target = RecordingFormat.allocate(bytes);
        while (target.hasRemaining()) {
            if (channel.read(target, from + target.position()) < 0) {
                throw new EOFException("The file became shorter while it was read");
            }
        }
        return target.flip();
    }
}
