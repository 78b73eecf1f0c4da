package nn.qv.imagedecoder;

import java.nio.ByteBuffer;
import java.util.zip.CRC32;

/** CRC-32 of what a framebuffer shows, as a recording has it. */
final class PictureChecksum {
    private static final int CHUNK_BYTES = 1 << 16;

    private PictureChecksum() {}

    /** Of all pixels, or of the planes one after the other. */
    static int of(Framebuffer framebuffer) {
        CRC32 crc = new CRC32();
        framebuffer.memory().forEach(memory -> crc.update(memory.duplicate()));
        return (int) crc.getValue();
    }

    /** Of the pixels within an update's rectangle, row by row. */
    static int of(Framebuffer framebuffer, UpdateHeader header) {
        CRC32 crc = new CRC32();
        ByteBuffer pixels = framebuffer.memory().get(0);
        int columns = Math.min(header.width(), framebuffer.width() - header.x());
        int bottom = Math.min(header.y() + header.height(), framebuffer.height());
        for (int row = header.y(); columns > 0 && row < bottom; row++) {
            int start = Integer.BYTES * (row * framebuffer.width() + header.x());
            crc.update(pixels.slice(start, Integer.BYTES * columns));
        }
        return (int) crc.getValue();
    }

    /** Of a framebuffer of this size and kind into which nothing has been drawn. */
    static int ofBlank(Framebuffer framebuffer) {
        CRC32 crc = new CRC32();
        byte[] zeros = new byte[CHUNK_BYTES];
        long left = framebuffer.memory().stream().mapToLong(ByteBuffer::capacity).sum();
        while (left > 0) {
            int count = (int) Math.min(left, zeros.length);
            crc.update(zeros, 0, count);
            left -= count;
        }
        return (int) crc.getValue();
    }
}
