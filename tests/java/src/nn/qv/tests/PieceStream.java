package nn.qv.tests;

import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.channels.ReadableByteChannel;

/**
 * A stream and channel over memory that delivers a first piece of one size and others of another.
 */
final class PieceStream extends InputStream implements ReadableByteChannel {
    private final byte[] bytes;
    private final int firstPiece;
    private final int otherPieces;
    private int position;
    private int mark;

    PieceStream(byte[] bytes, int firstPiece, int otherPieces) {
        this.bytes = bytes;
        this.firstPiece = firstPiece;
        this.otherPieces = otherPieces;
    }

    int position() {
        return position;
    }

    @Override
    public int read() {
        return position < bytes.length ? bytes[position++] & 0xFF : -1;
    }

    @Override
    public int read(byte[] target, int offset, int length) {
        int most = position < firstPiece ? firstPiece - position : otherPieces;
        int count = Math.min(Math.min(most, length), bytes.length - position);
        System.arraycopy(bytes, position, target, offset, count);
        position += count;
        return count == 0 ? -1 : count;
    }

    @Override
    public int read(ByteBuffer target) {
        byte[] piece = new byte[target.remaining()];
        int count = read(piece, 0, piece.length);
        if (count > 0) {
            target.put(piece, 0, count);
        }
        return count;
    }

    @Override
    public boolean markSupported() {
        return true;
    }

    @Override
    public void mark(int limit) {
        mark = position;
    }

    @Override
    public void reset() {
        position = mark;
    }

    @Override
    public boolean isOpen() {
        return true;
    }

    @Override
    public void close() {}
}
