package nn.qv.tests;

import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.List;
import java.util.zip.CRC32;
import nn.qv.imagedecoder.internal.NativeTarget;

/** A framebuffer in slices of larger direct buffers, whose other bytes must never change. */
final class GuardedFramebuffer {
    private static final int GUARD_BYTES = 4096;
    private static final byte GUARD_VALUE = (byte) 0xA5;
    private static final ByteBuffer WHOLE_GUARD = wholeGuard();
    private static ByteBuffer zeros = ByteBuffer.allocateDirect(0);

    private final List<ByteBuffer> memories = new ArrayList<>();
    private final List<ByteBuffer> slices = new ArrayList<>();
    private final NativeTarget framebuffer;

    static GuardedFramebuffer ofArgb(int width, int height) {
        return new GuardedFramebuffer(width, height, false, 0);
    }

    static GuardedFramebuffer ofPlanes(int width, int height, int chromaSubsampling) {
        return new GuardedFramebuffer(width, height, true, chromaSubsampling);
    }

    static GuardedFramebuffer of(CaseFile life) {
        return new GuardedFramebuffer(
                life.width(), life.height(), life.planes(), life.options().chromaSubsampling());
    }

    private GuardedFramebuffer(int width, int height, boolean planes, int chromaSubsampling) {
        if (planes) {
            int chromaWidth = chromaSubsampling == 2 ? width : width / 2;
            int chromaHeight = chromaSubsampling == 0 ? height / 2 : height;
            ByteBuffer yPlane = allocate(width * height);
            ByteBuffer cbPlane = allocate(chromaWidth * chromaHeight);
            ByteBuffer crPlane = allocate(chromaWidth * chromaHeight);
            framebuffer = new NativeTarget(width, height, null, yPlane, cbPlane, crPlane);
        } else {
            framebuffer = new NativeTarget(
                            width, height, allocate(4 * width * height), null, null, null);
        }
    }

    NativeTarget framebuffer() {
        return framebuffer;
    }

    /** CRC-32 of the framebuffer's bytes in memory order, the planes one after the other. */
    long crc() {
        CRC32 crc = new CRC32();
        slices.forEach(slice -> crc.update(slice.duplicate()));
        return crc.getValue();
    }

    /** Makes every byte of the framebuffer zero again. */
    void clear() {
        for (ByteBuffer slice : slices) {
            slice.put(0, blank(slice.capacity()), 0, slice.capacity());
        }
    }

    void expectBlank() {
        for (ByteBuffer slice : slices) {
            TestRun.expectEqual(-1, blank(slice.capacity()).mismatch(slice), "first byte drawn");
        }
    }

    /** In an ARGB framebuffer: expects all pixels outside the rectangle to be zero. */
    void expectBlankOutside(int x, int y, int width, int height) {
        ByteBuffer argb = slices.get(0);
        int columns = framebuffer.width();
        int left = Math.min(x, columns);
        int right = Math.min(x + width, columns);
        int from = 0;
        int bottom = Math.min(y + height, framebuffer.height());
        for (int row = Math.min(y, framebuffer.height()); row < bottom; row++) {
            expectBlank(argb, from, row * columns + left);
            from = row * columns + right;
        }
        expectBlank(argb, from, columns * framebuffer.height());
    }

    void expectGuardsUntouched() {
        for (int i = 0; i < memories.size(); i++) {
            ByteBuffer memory = memories.get(i);
            expectWhole(memory, 0, "before buffer " + i);
            expectWhole(memory, GUARD_BYTES + slices.get(i).capacity(), "after buffer " + i);
        }
    }

    private static void expectWhole(ByteBuffer memory, int at, String where) {
        int mismatch = WHOLE_GUARD.mismatch(memory.slice(at, GUARD_BYTES));
        if (mismatch != -1) {
            throw new AssertionError("wrote " + where + ", guard byte " + mismatch);
        }
    }

    private static void expectBlank(ByteBuffer argb, int fromPixel, int toPixel) {
        int bytes = 4 * (toPixel - fromPixel);
        int mismatch = blank(bytes).mismatch(argb.slice(4 * fromPixel, bytes));
        if (mismatch != -1) {
            int pixel = fromPixel + mismatch / 4;
            throw new AssertionError("drew outside the rectangle, at pixel " + pixel);
        }
    }

    /** Zeros to compare and copy, of which the largest framebuffer so far decides the number. */
    private static ByteBuffer blank(int bytes) {
        if (zeros.capacity() < bytes) {
            zeros = ByteBuffer.allocateDirect(bytes);
        }
        return zeros.slice(0, bytes);
    }

    private static ByteBuffer wholeGuard() {
        ByteBuffer guard = ByteBuffer.allocateDirect(GUARD_BYTES);
        for (int k = 0; k < GUARD_BYTES; k++) {
            guard.put(k, GUARD_VALUE);
        }
        return guard;
    }

    private ByteBuffer allocate(int size) {
        ByteBuffer memory = ByteBuffer.allocateDirect(GUARD_BYTES + size + GUARD_BYTES);
        memory.put(0, WHOLE_GUARD, 0, GUARD_BYTES);
        memory.put(GUARD_BYTES + size, WHOLE_GUARD, 0, GUARD_BYTES);
        ByteBuffer slice = memory.slice(GUARD_BYTES, size);
        memories.add(memory);
        slices.add(slice);
        return slice;
    }
}
