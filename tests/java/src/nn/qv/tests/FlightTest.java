package nn.qv.tests;

import com.sun.management.ThreadMXBean;
import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.nio.file.Path;
import java.util.List;
import jdk.jfr.Recording;
import jdk.jfr.consumer.RecordedEvent;
import jdk.jfr.consumer.RecordingFile;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;
import nn.qv.imagedecoder.internal.UpdateTrace;

/** The flight recorder's events of updates. */
final class FlightTest {
    private static final UpdateHeader HEADER = new UpdateHeader(16, 0, 32, 16, 7);
    private static final byte[] UNCHANGED = {-1, -1};
    private static final int UPDATES = 10_000;

    private FlightTest() {}

    public static void main(String[] arguments) {
        LogCapture.begin();
        TestRun run = new TestRun();
        run.test("each update is an event while a flight recording runs", FlightTest::events);
        run.test("while nobody listens, asking for one makes no object", FlightTest::idle);
        run.finish();
    }

    private static void events() throws IOException {
        Framebuffer framebuffer = Framebuffer.argb(64, 64);
        try (Scratch scratch = Scratch.make();
                ScreenDecoder decoder =
                        ScreenDecoder.open(DecoderOptions.builder(Codec.ICT).build())) {
            decoder.decode(HEADER, UNCHANGED, framebuffer); // Nobody listens yet.
            Path file = scratch.resolve("flight.jfr");
            try (Recording recording = new Recording()) {
                recording.enable("nn.qv.imagedecoder.Update");
                recording.start();
                decoder.decode(HEADER, UNCHANGED, framebuffer);
                try {
                    decoder.decode(HEADER, new byte[1], framebuffer);
                    throw new AssertionError("the update did not fail");
                } catch (UpdateException e) {
                    // As it should.
                }
                recording.stop();
                recording.dump(file);
            }
            expectEvents(RecordingFile.readAllEvents(file));
        }
    }

    private static void idle() {
        UpdateTrace trace = UpdateTrace.create();
        ThreadMXBean threads = (ThreadMXBean) ManagementFactory.getThreadMXBean();
        ask(trace, 1); // Whatever is made once.
        long before = threads.getCurrentThreadAllocatedBytes();
        ask(trace, UPDATES);
        long bytes = threads.getCurrentThreadAllocatedBytes() - before;
        TestRun.expect(bytes < UPDATES, bytes + " bytes");
    }

    private static void ask(UpdateTrace trace, int updates) {
        for (int i = 0; i < updates; i++) {
            TestRun.expect(trace.begin() == null, "an event although nobody listens");
        }
    }

    private static void expectEvents(List<RecordedEvent> events) {
        List<RecordedEvent> updates =
                events.stream()
                        .filter(e -> e.getEventType().getName().equals("nn.qv.imagedecoder.Update"))
                        .toList();
        TestRun.expectEqual(2, updates.size(), "events");
        RecordedEvent good = updates.get(0);
        TestRun.expectEqual("ICT", good.getString("codec"), "codec");
        TestRun.expectEqual(16, good.getInt("x"), "x");
        TestRun.expectEqual(32, good.getInt("width"), "width");
        TestRun.expectEqual(7, good.getInt("quality"), "quality");
        TestRun.expectEqual(2, good.getInt("bytes"), "bytes");
        TestRun.expect(good.getLong("decodeTime") > 0, "no time for decoding");
        TestRun.expectEqual(null, good.getString("failure"), "failure");
        String failure = updates.get(1).getString("failure");
        TestRun.expect(failure.contains("no more bytes"), "failure: " + failure);
    }
}
