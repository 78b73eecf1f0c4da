package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.ScreenDecoder;

/**
 * That a source stands exactly behind an update, wherever its bytes were cut into pieces. Argument:
 * the folder of the case files.
 *
 * <p>Most updates end with a marker longer than what a bit reader looks ahead. The ones made here
 * end with a skip code of a single bit behind their last macroblock, so that the reader has looked
 * up to two bytes into the next message.
 */
final class GivingBackTest {
    /** Bytes of the next message. */
    private static final byte[] NEXT = {0x5A, 0x17, -1, 0, 0x33, 0x44, 0x55, 0x66, 0x77};

    private static final int MOST_BYTES = 3000;
    private static final int MOST_PIECE = 16;

    /** An update and the number of its bytes, which is known from its making. */
    private record LookingAhead(CaseFile life, Update update, int bytes) {}

    private final List<LookingAhead> updates = new ArrayList<>();

    private GivingBackTest() {}

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        NativeLoader.load();
        GivingBackTest tests = new GivingBackTest();
        for (CaseFile life : CaseFile.loadAll(Path.of(arguments[0]))) {
            tests.collect(life);
        }
        TestRun run = new TestRun();
        run.test("there are updates that look ahead", tests::expectMany);
        run.test("the native methods alone lose bytes between pieces", tests::expectLoss);
        run.test("a stream stands behind the update for every cut near its end", tests::streams);
        run.test("a channel's buffer does, too", tests::channels);
        run.test("the picture is that of an update in one piece", tests::pictures);
        run.test("nothing is missing where nothing follows the update", tests::endings);
        run.finish();
    }

    private void collect(CaseFile life) throws IOException {
        CaseFile.Step step = life.steps().get(0);
        boolean usable =
                step.error().isEmpty()
                        && step.result() > 0
                        && !life.planes()
                        && life.options().threads() == 0
                        && step.consumedBytes() > 4
                        && step.consumedBytes() < MOST_BYTES;
        if (!usable) {
            return;
        }
        byte[] payload = Arrays.copyOf(step.update().data(), step.consumedBytes());
        int markerBits = life.options().protocolVersion() == 0 ? 16 : 18;
        int markerEnd = 8 * payload.length;
        while (Bits.get(payload, markerEnd - 1, 1) == 0) {
            markerEnd--;
        }
        int marker = markerEnd - markerBits;
        int bytes = marker / 8 + 1;
        byte[] data = Arrays.copyOf(payload, bytes + NEXT.length);
        for (int bit = marker; bit < 8 * bytes; bit++) {
            Bits.put(data, bit, 1, 0);
        }
        System.arraycopy(NEXT, 0, data, bytes, NEXT.length);
        Update u = step.update();
        Update update = new Update(u.quality(), u.x(), u.y(), u.width(), u.height(), data);
        if (decodesWhole(life, update, bytes)) {
            updates.add(new LookingAhead(life, update, bytes));
        }
    }

    /** Only if the last macroblock is coded does the update end there. */
    private static boolean decodesWhole(CaseFile life, Update update, int bytes)
            throws IOException {
        return consumedNatively(life, update, update.data().length) == bytes;
    }

    /** What the native methods take for the update when reads are limited; -1 if it fails. */
    private static int consumedNatively(CaseFile life, Update update, int piece)
            throws IOException {
        MemoryFeed feed = new MemoryFeed();
        try (RawDecoder decoder = new RawDecoder(feed, life.options())) {
            GuardedFramebuffer memory = GuardedFramebuffer.of(life);
            long result = decoder.decode(update, memory.framebuffer(), new byte[piece]);
            return result == -1 ? -1 : feed.consumedBytes();
        }
    }

    private void expectMany() {
        TestRun.expect(updates.size() >= 5, "only " + updates.size());
    }

    private void expectLoss() throws IOException {
        int lost = 0;
        for (LookingAhead update : updates) {
            for (int piece = 1; piece <= Math.min(MOST_PIECE, update.bytes()); piece++) {
                int consumed = consumedNatively(update.life(), update.update(), piece);
                lost += consumed > update.bytes() ? 1 : 0;
            }
        }
        TestRun.expect(lost > 0, "no piece size loses a byte, so this test shows nothing");
    }

    private void streams() throws IOException {
        for (LookingAhead update : updates) {
            try (ScreenDecoder decoder = open(update)) {
                Framebuffer framebuffer = framebuffer(update);
                for (int[] cut : cuts(update)) {
                    PieceStream in = new PieceStream(update.update().data(), cut[0], cut[1]);
                    decoder.decode(update.update().header(), in, framebuffer);
                    expectNext(update, cut, in.readAllBytes());
                }
            }
        }
    }

    private void channels() throws IOException {
        for (LookingAhead update : updates) {
            try (ScreenDecoder decoder = open(update)) {
                Framebuffer framebuffer = framebuffer(update);
                for (int[] cut : cuts(update)) {
                    PieceStream in = new PieceStream(update.update().data(), cut[0], cut[1]);
                    ByteBuffer buffer = ByteBuffer.allocate(4096).limit(0);
                    decoder.decode(update.update().header(), in, buffer, framebuffer);
                    byte[] unread = in.readAllBytes();
                    byte[] rest = new byte[buffer.remaining() + unread.length];
                    int buffered = buffer.remaining();
                    buffer.get(rest, 0, buffered);
                    System.arraycopy(unread, 0, rest, buffered, unread.length);
                    expectNext(update, cut, rest);
                }
            }
        }
    }

    private void pictures() throws IOException {
        for (LookingAhead update : updates) {
            try (ScreenDecoder decoder = open(update)) {
                Framebuffer whole = framebuffer(update);
                decoder.decode(update.update().header(), update.update().data(), whole);
                for (int[] cut : cuts(update)) {
                    PieceStream in = new PieceStream(update.update().data(), cut[0], cut[1]);
                    Framebuffer pieces = framebuffer(update);
                    decoder.decode(update.update().header(), in, pieces);
                    TestRun.expectEqual(whole.pixels(), pieces.pixels(), describe(update, cut));
                }
            }
        }
    }

    /** The decoder looks for more, and takes the end for an answer. */
    private void endings() throws IOException {
        for (LookingAhead update : updates) {
            byte[] own = Arrays.copyOf(update.update().data(), update.bytes());
            try (ScreenDecoder decoder = open(update)) {
                Framebuffer whole = framebuffer(update);
                decoder.decode(update.update().header(), update.update().data(), whole);
                for (int piece = 1; piece <= Math.min(MOST_PIECE, own.length); piece++) {
                    PieceStream in = new PieceStream(own, 0, piece);
                    Framebuffer ending = framebuffer(update);
                    decoder.decode(update.update().header(), in, ending);
                    String where = update.life().name() + " in pieces of " + piece;
                    TestRun.expectEqual(whole.pixels(), ending.pixels(), where);
                    TestRun.expectEqual(own.length, in.position(), where);
                }
            }
        }
    }

    /** Sizes of the first piece and of the others. */
    private static List<int[]> cuts(LookingAhead update) {
        List<int[]> cuts = new ArrayList<>();
        for (int first = Math.max(0, update.bytes() - 4); first < update.bytes() + 4; first++) {
            for (int others : new int[] {1, 2, 3, 100}) {
                cuts.add(new int[] {first, others});
            }
        }
        return cuts;
    }

    private static void expectNext(LookingAhead update, int[] cut, byte[] rest) {
        TestRun.expectEqual(
                Arrays.toString(NEXT), Arrays.toString(rest), describe(update, cut));
    }

    private static String describe(LookingAhead update, int[] cut) {
        return update.life().name() + " cut at " + cut[0] + ", then every " + cut[1];
    }

    private static ScreenDecoder open(LookingAhead update) throws IOException {
        return ScreenDecoder.open(update.life().options().forViewer().build());
    }

    private static Framebuffer framebuffer(LookingAhead update) {
        return Framebuffer.argb(update.life().width(), update.life().height());
    }
}
