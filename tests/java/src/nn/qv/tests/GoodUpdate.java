package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Path;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * An update with known results, for tests that need a good one: the first of a case file's life,
 * decoded without threads by protocol version 0 into an ARGB framebuffer that is all zero.
 */
record GoodUpdate(CaseFile life) {
    /** The good update of a codec, from the folder of the case files. */
    static GoodUpdate load(String folder, NativeCodec codec) throws IOException {
        String name =
                codec == NativeCodec.ICT
                        ? "000-ict-v0-420-t0-nat.case"
                        : "024-lbe-v0-420-t0-nat.case";
        return new GoodUpdate(CaseFile.load(Path.of(folder, name)));
    }

    CaseFile.Step step() {
        return life.steps().get(0);
    }

    /** A transfer array that takes the whole update. */
    byte[] transfer() {
        return new byte[step().update().data().length];
    }

    GuardedFramebuffer framebuffer() {
        return GuardedFramebuffer.of(life);
    }

    /** A decoder of the case file's options, ready for the update. */
    RawDecoder decoder(MemoryFeed feed) throws IOException {
        RawDecoder decoder = new RawDecoder(feed, life.options());
        decoder.setContrastEnhance(life.contrast());
        decoder.setClientPostprocessingEnabled(life.postprocessing());
        feed.takeLog();
        return decoder;
    }

    /** Decodes the update into memory that is all zero, which must give the known pixels. */
    void expectDecodes(RawDecoder decoder, GuardedFramebuffer memory) {
        long result = decoder.decode(step().update(), memory.framebuffer(), transfer());
        expectDecoded(result, memory);
    }

    void expectDecoded(long result, GuardedFramebuffer memory) {
        TestRun.expectEqual(step().result(), result, "result");
        TestRun.expectEqual(step().crc(), memory.crc(), "framebuffer CRC");
        memory.expectGuardsUntouched();
    }
}
