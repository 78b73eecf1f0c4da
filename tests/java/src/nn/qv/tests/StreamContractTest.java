package nn.qv.tests;

import java.io.IOException;
import java.util.List;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * How the library pulls an update's bytes and gives the rest back, with feeds that keep the
 * contract and feeds that break it. Arguments: the folder of the case files, the codec.
 */
final class StreamContractTest {
    private static final int SIDE = 32;

    private final TestRun run = new TestRun();
    private final NativeCodec codec;
    private final GoodUpdate good;

    private StreamContractTest(NativeCodec codec, GoodUpdate good) {
        this.codec = codec;
        this.good = good;
    }

    public static void main(String[] arguments) throws IOException {
        NativeLoader.load();
        NativeCodec codec = NativeCodec.valueOf(arguments[1]);
        StreamContractTest tests =
                new StreamContractTest(codec, GoodUpdate.load(arguments[0], codec));
        tests.givingBack();
        tests.pieces();
        tests.failingReads();
        tests.misstatedLengths();
        tests.run.finish();
    }

    private void givingBack() {
        run.test(
                "bytes behind an update's end come back at their place in the transfer array",
                () -> {
                    // Version 0 ends an update by 16 one bits, so 8 of the 10 bytes are left.
                    byte[] transfer = new byte[100];
                    byte[] data = {-1, -1, 1, 2, 3, 4, 5, 6, 7, 8};
                    ScriptedFeed feed = decodeEmpty(0, data, transfer);
                    TestRun.expectEqual(1, feed.stalls().size(), "calls of stall");
                    ScriptedFeed.Stall stall = feed.stalls().get(0);
                    TestRun.expect(stall.source() == transfer, "stall got another array");
                    TestRun.expectEqual(2, stall.offset(), "offset");
                    TestRun.expectEqual(8, stall.count(), "count");
                });
        run.test(
                "the bits of a byte that an update has begun stay with the update",
                () -> {
                    // Versions 1 and 2 end an update by 18 one bits: two of the third byte's.
                    ScriptedFeed feed = decodeEmpty(1, new byte[] {-1, -1, -1, 9}, new byte[4]);
                    TestRun.expectEqual(1, feed.stalls().size(), "calls of stall");
                    TestRun.expectEqual(3, feed.stalls().get(0).offset(), "offset");
                    TestRun.expectEqual(1, feed.stalls().get(0).count(), "count");
                });
        run.test(
                "an update that used up its bytes gives nothing back",
                () -> {
                    ScriptedFeed feed = decodeEmpty(0, new byte[] {-1, -1}, new byte[100]);
                    TestRun.expectEqual(List.of(), feed.stalls(), "calls of stall");
                });
    }

    private void pieces() {
        run.test(
                "reads of one byte each give the same pixels as one read of all",
                () -> expectGoodWith(feed -> (target, capacity) -> feed.regularRead(target, 1)));
        run.test(
                "a collection of garbage during a read does no harm",
                () ->
                        expectGoodWith(
                                feed ->
                                        (target, capacity) -> {
                                            System.gc();
                                            return feed.regularRead(target, Math.min(64, capacity));
                                        }));
        run.test(
                "every read is offered the whole transfer array",
                () -> {
                    ScriptedFeed feed = decodeEmpty(0, new byte[] {-1, -1}, new byte[77]);
                    TestRun.expectEqual(List.of(77), feed.capacities(), "capacities");
                });
    }

    private void failingReads() {
        String unreadable = "Unable to read from java buffer!";
        expectFails("a negative read", unreadable, (target, capacity) -> -1);
        expectFails("the most negative read", unreadable, (target, capacity) -> Integer.MIN_VALUE);
        expectFails("a read beyond the capacity", unreadable, (target, capacity) -> capacity + 1);
        expectFails("the largest read", unreadable, (target, capacity) -> Integer.MAX_VALUE);
        expectFails("a read of 0", "Stream has no more bytes!", (target, capacity) -> 0);
    }

    /** The length of the transfer array that a perform call tells, against the real one. */
    private void misstatedLengths() {
        int real = good.transfer().length;
        expectSurvives("far too large", real, real + (64 << 20));
        expectSurvives("one too large", real, real + 1);
        expectSurvives("one too small", real, real - 1);
        expectSurvives("0", real, 0);
        expectSurvives("too large for an empty array", 0, 16);
    }

    /** Reads store as many bytes as both the told and the real length allow. */
    private void expectSurvives(String what, int realLength, int toldLength) {
        run.test(
                "a transfer array's length told as " + what + " neither harms nor draws wrongly",
                () -> {
                    ScriptedFeed feed = new ScriptedFeed();
                    GuardedFramebuffer memory = good.framebuffer();
                    long blank = memory.crc();
                    try (RawDecoder decoder = good.decoder(feed)) {
                        feed.script(
                                (target, capacity) ->
                                        feed.regularRead(
                                                target, Math.min(capacity, target.length)));
                        long result =
                                decoder.decode(
                                        good.step().update(),
                                        memory.framebuffer(),
                                        new byte[realLength],
                                        toldLength);
                        if (result == -1) {
                            TestRun.expectEqual(1, feed.takeLog().size(), "log lines");
                            TestRun.expectEqual(blank, memory.crc(), "framebuffer CRC");
                        } else {
                            good.expectDecoded(result, memory);
                        }
                        memory.expectGuardsUntouched();
                        feed.script(null);
                        memory.clear();
                        good.expectDecodes(decoder, memory);
                    }
                });
    }

    /** The update must fail with the text, draw nothing, and leave the decoder as good as new. */
    private void expectFails(String what, String error, ScriptedFeed.Read read) {
        run.test(
                what + " fails the update with \"" + error + "\" and the next one decodes right",
                () -> {
                    ScriptedFeed feed = new ScriptedFeed();
                    GuardedFramebuffer memory = good.framebuffer();
                    long blank = memory.crc();
                    try (RawDecoder decoder = good.decoder(feed)) {
                        feed.script(read);
                        long result =
                                decoder.decode(
                                        good.step().update(),
                                        memory.framebuffer(),
                                        good.transfer());
                        TestRun.expectEqual(-1L, result, "result");
                        TestRun.expectEqual(
                                List.of(CaseLife.errorLine(codec, error)),
                                feed.takeLog(),
                                "log lines");
                        TestRun.expectEqual(1, feed.capacities().size(), "reads");
                        TestRun.expectEqual(List.of(), feed.stalls(), "calls of stall");
                        TestRun.expectEqual(blank, memory.crc(), "framebuffer CRC");

                        feed.script(null);
                        good.expectDecodes(decoder, memory);
                        TestRun.expectEqual(List.of(), feed.takeLog(), "log lines");
                    }
                });
    }

    /** Makes the reads of a feed. */
    private interface Script {
        ScriptedFeed.Read of(ScriptedFeed feed);
    }

    private void expectGoodWith(Script script) throws IOException {
        ScriptedFeed feed = new ScriptedFeed();
        feed.script(script.of(feed));
        try (RawDecoder decoder = good.decoder(feed)) {
            good.expectDecodes(decoder, good.framebuffer());
        }
    }

    /** Decodes an update that consists of an end marker and bytes that are not its own. */
    private ScriptedFeed decodeEmpty(int protocolVersion, byte[] data, byte[] transfer)
            throws IOException {
        ScriptedFeed feed = new ScriptedFeed();
        RawOptions options = new RawOptions(codec, protocolVersion, 0, 0);
        try (RawDecoder decoder = new RawDecoder(feed, options)) {
            GuardedFramebuffer memory = GuardedFramebuffer.ofArgb(SIDE, SIDE);
            Update update = new Update(7, 0, 0, SIDE, SIDE, data);
            TestRun.expectEqual(
                    0L, decoder.decode(update, memory.framebuffer(), transfer), "result");
        }
        return feed;
    }
}
