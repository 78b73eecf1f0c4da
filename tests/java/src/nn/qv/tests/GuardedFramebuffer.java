package nn.qv.tests;

import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.List;
import java.util.zip.CRC32;
import nn.qv.example.Framebuffer;

/** A framebuffer in slices of larger direct buffers, whose other bytes must never change. */
final class GuardedFramebuffer {
    private static final int GUARD_BYTES = 4096;
    private static final byte GUARD_VALUE = (byte) 0xA5;

    private final List<ByteBuffer> memories = new ArrayList<>();
    private final List<ByteBuffer> slices = new ArrayList<>();
    private final Framebuffer framebuffer;

    static GuardedFramebuffer ofArgb(int width, int height) {
        return new GuardedFramebuffer(width, height, false, 0);
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
            framebuffer = new Framebuffer(width, height, null, yPlane, cbPlane, crPlane);
        } else {
            framebuffer = Framebuffer.ofArgb(width, height, allocate(4 * width * height));
        }
    }

    Framebuffer framebuffer() {
        return framebuffer;
    }

    /** CRC-32 of the framebuffer's bytes in memory order, the planes one after the other. */
    long crc() {
        CRC32 crc = new CRC32();
        slices.forEach(slice -> crc.update(slice.duplicate()));
        return crc.getValue();
    }

    void expectGuardsUntouched() {
        for (int i = 0; i < memories.size(); i++) {
            ByteBuffer memory = memories.get(i);
            int afterSlice = GUARD_BYTES + slices.get(i).capacity();
            for (int k = 0; k < GUARD_BYTES; k++) {
                boolean whole =
                        memory.get(k) == GUARD_VALUE && memory.get(afterSlice + k) == GUARD_VALUE;
                TestRun.expect(whole, "wrote outside buffer " + i + ", guard byte " + k);
            }
        }
    }

    private ByteBuffer allocate(int size) {
        ByteBuffer memory = ByteBuffer.allocateDirect(GUARD_BYTES + size + GUARD_BYTES);
        for (int k = 0; k < GUARD_BYTES; k++) {
            memory.put(k, GUARD_VALUE);
            memory.put(GUARD_BYTES + size + k, GUARD_VALUE);
        }
        ByteBuffer slice = memory.slice(GUARD_BYTES, size);
        memories.add(memory);
        slices.add(slice);
        return slice;
    }
}
