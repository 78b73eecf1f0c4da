package nn.qv.tests;

import java.io.IOException;
import java.lang.ref.WeakReference;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateHeader;

/** What becomes of decoders that are forgotten without being closed. */
final class LeakTest {
    private static final int DECODERS = 40;
    private static final int THREADS = 3;
    private static final int SIDE = 2048;
    /** What the planes of a decoder take, 4:2:0. */
    private static final long PLANES_KIB = SIDE * SIDE * 3L / 2 / 1024;

    private static final int SECONDS = 30;
    /** Ends an update of protocol version 2 at once: 18 ones. */
    private static final byte[] UNCHANGED = {-1, -1, -1};

    private final Framebuffer framebuffer = Framebuffer.argb(SIDE, SIDE);

    private LeakTest() {}

    public static void main(String[] arguments) {
        LogCapture.begin();
        TestRun run = new TestRun();
        run.test(
                "forgotten decoders give back threads, native memory and JNI references",
                () -> new LeakTest().forget());
        run.test(
                "a forgotten decoder ends its recording as close() would",
                () -> new LeakTest().forgetRecording());
        run.test("a decoder that is being used is not collected", () -> new LeakTest().use());
        run.finish();
    }

    private void forget() throws Exception {
        use(); // Whatever the JVM keeps for good after the first update.
        System.gc();
        long references = ProcessState.globalReferences();
        openAndForget(references);
        long kib = ProcessState.residentKib(); // With what the allocator keeps for the next time.
        openAndForget(references);
        long rise = ProcessState.residentKib() - kib;
        TestRun.expect(rise < DECODERS * PLANES_KIB / 4, "memory rose by " + rise + " KiB");
    }

    private void openAndForget(long references) throws Exception {
        List<ScreenDecoder> decoders = openAndUse();
        TestRun.expectEqual(DECODERS * THREADS, ProcessState.workers(), "worker threads");
        TestRun.expect(
                ProcessState.globalReferences() >= references + 2 * DECODERS,
                "no references to begin with");
        List<WeakReference<ScreenDecoder>> forgotten = new ArrayList<>();
        decoders.forEach(decoder -> forgotten.add(new WeakReference<>(decoder)));
        decoders.clear();
        collect(references);

        TestRun.expectEqual(0, ProcessState.workers(), "worker threads left");
        TestRun.expect(
                ProcessState.globalReferences() <= references,
                ProcessState.globalReferences() + " references, not " + references);
        forgotten.forEach(decoder -> TestRun.expect(decoder.get() == null, "a decoder is left"));
    }

    private void forgetRecording() throws Exception {
        try (Scratch scratch = Scratch.make()) {
            Path closed = scratch.resolve("closed.rcrec");
            Path forgotten = scratch.resolve("forgotten.rcrec");
            record(closed).close();
            record(forgotten);
            TestRun.expect(Files.size(closed) > Files.size(forgotten), "ended too early");
            long deadline = System.nanoTime() + TimeUnit.SECONDS.toNanos(SECONDS);
            while (Files.size(forgotten) < Files.size(closed) && System.nanoTime() < deadline) {
                System.gc();
                Thread.sleep(50);
            }
            TestRun.expectEqual(Files.size(closed), Files.size(forgotten), "size with an index");
        }
    }

    /** Not closed yet; its listener refers to the decoder, as a viewer's may. */
    private ScreenDecoder record(Path file) throws IOException {
        List<ScreenDecoder> known = new ArrayList<>();
        ScreenDecoder decoder =
                ScreenDecoder.open(
                        DecoderOptions.builder(Codec.ICT)
                                .record(file)
                                .onRecordingFailure(e -> known.clear())
                                .build());
        known.add(decoder);
        decoder.decode(header(), UNCHANGED, framebuffer);
        return decoder;
    }

    private void use() throws IOException {
        try (ScreenDecoder decoder = open()) {
            for (int i = 0; i < 20; i++) {
                System.gc();
                decoder.decode(header(), UNCHANGED, framebuffer);
            }
        }
    }

    private List<ScreenDecoder> openAndUse() throws IOException {
        List<ScreenDecoder> decoders = new ArrayList<>();
        for (int i = 0; i < DECODERS; i++) {
            ScreenDecoder decoder = open();
            ChangedRectangle changed = decoder.decode(header(), UNCHANGED, framebuffer);
            TestRun.expect(changed.isEmpty(), "changed " + changed);
            decoders.add(decoder);
        }
        return decoders;
    }

    private static ScreenDecoder open() throws IOException {
        return ScreenDecoder.open(
                DecoderOptions.builder(Codec.ICT)
                        .protocolVersion(ProtocolVersion.V2)
                        .threads(THREADS)
                        .build());
    }

    private static UpdateHeader header() {
        return new UpdateHeader(0, 0, SIDE, SIDE, 7);
    }

    /** Until the cleaner has deleted everything, or for long enough. */
    private static void collect(long references) throws Exception {
        long deadline = System.nanoTime() + TimeUnit.SECONDS.toNanos(SECONDS);
        do {
            System.gc();
            Thread.sleep(50);
        } while ((ProcessState.workers() > 0 || ProcessState.globalReferences() > references)
                && System.nanoTime() < deadline);
    }
}
