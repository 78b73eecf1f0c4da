package nn.qv.tests;

import java.io.IOException;
import java.util.List;

/**
 * What a seed's update gives in memory that is all zero.
 *
 * @param result value of the perform call
 * @param crc CRC-32 of the framebuffer afterwards
 */
record SoakReference(SoakSeed seed, long result, long crc) {
    /** By a fresh decoder, which must agree with the case file where that knows. */
    static SoakReference byFreshDecoder(SoakSeed seed, GuardedFramebuffer memory)
            throws IOException {
        MemoryFeed feed = new MemoryFeed();
        try (RawDecoder decoder = new RawDecoder(feed, seed.options())) {
            decoder.setContrastEnhance(seed.contrast());
            decoder.setClientPostprocessingEnabled(seed.postprocessing());
            feed.takeLog();
            memory.clear();
            long result = decode(decoder, seed, memory);
            TestRun.expectEqual(List.of(), feed.takeLog(), "log lines of " + seed.name());
            if (seed.knownCrc() != -1) {
                TestRun.expectEqual(seed.knownCrc(), memory.crc(), "CRC of " + seed.name());
            }
            return new SoakReference(seed, result, memory.crc());
        }
    }

    /** Decodes the update again, by a decoder that has seen others. */
    void expectDecodes(RawDecoder decoder, MemoryFeed feed, GuardedFramebuffer memory) {
        memory.clear();
        long actual = decode(decoder, seed, memory);
        TestRun.expectEqual(List.of(), feed.takeLog(), "log lines of the good update");
        TestRun.expectEqual(result, actual, "result of the good update");
        TestRun.expectEqual(crc, memory.crc(), "framebuffer CRC of the good update");
        memory.expectGuardsUntouched();
    }

    private static long decode(RawDecoder decoder, SoakSeed seed, GuardedFramebuffer memory) {
        byte[] transfer = new byte[Math.max(1, seed.update().data().length)];
        return decoder.decode(seed.update(), memory.framebuffer(), transfer);
    }
}
