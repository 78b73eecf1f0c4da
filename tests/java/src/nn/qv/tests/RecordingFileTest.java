package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.HexFormat;
import java.util.function.Consumer;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingPlayer;
import nn.qv.imagedecoder.internal.RecordingFormat;

/** The bytes of a recording: the documented example as it is, cut, spoiled and changed. */
final class RecordingFileTest {
    /** The example of docs/recording.md: one update that says that nothing changed. */
    private static final String EXAMPLE =
            "52435245430d0a1a0100280000020001100010000000000000401e1824"
                    + "0a06000200000059d48d8a5243520127000000240001010a00000000000000"
                    + "10001000c40900000000000000000000000000002eafb5efffffc068a774ff"
                    + "524352801c000000010000002800000000000000c4090000000000005b0000"
                    + "0000000000cadc69de";

    private static final int FIELDS_OFFSET = 40 + 8;

    private final RecordingRun run = new RecordingRun();

    private RecordingFileTest() {}

    public static void main(String[] arguments) {
        LogCapture.begin();
        RecordingFileTest tests = new RecordingFileTest();
        tests.reading();
        tests.arguments();
        tests.run.finish();
    }

    private void reading() {
        run.test(
                "the documented example is understood",
                file -> {
                    Files.write(file, example());
                    try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                        TestRun.expectEqual(Codec.ICT, player.recording().codec(), "codec");
                        TestRun.expect(player.step() && !player.step(), "not one update");
                        TestRun.expectEqual("", player.difference(), "difference");
                        TestRun.expectEqual(2500L, player.lastUpdate().timeMicros(), "time");
                        TestRun.expectEqual(1L, player.checksums(), "checksums");
                    }
                });
        run.test(
                "a recording cut anywhere gives its whole entries and says that it was cut",
                file -> {
                    byte[] whole = example();
                    int header = 40;
                    int update = header + 51;
                    for (int size = 0; size < whole.length; size++) {
                        Files.write(file, Arrays.copyOf(whole, size));
                        if (size < header) {
                            TestRun.expectThrown(IOException.class, () -> Recording.open(file));
                            continue;
                        }
                        try (Recording recording = Recording.open(file)) {
                            boolean found = recording.next() != null;
                            TestRun.expectEqual(size >= update, found, "update of " + size);
                            TestRun.expect(recording.next() == null, "too many entries");
                            boolean atEdge = size == header || size == update;
                            TestRun.expectEqual(
                                    atEdge ? Recording.Ending.COMPLETE : Recording.Ending.CUT,
                                    recording.ending(),
                                    "ending at " + size);
                        }
                    }
                });
        run.test(
                "a wrong bit anywhere is noticed",
                file -> {
                    byte[] whole = example();
                    for (int bit = 0; bit < 8 * whole.length; bit++) {
                        byte[] spoiled = whole.clone();
                        Bits.flip(spoiled, bit);
                        Files.write(file, spoiled);
                        expectNotComplete(file, bit);
                    }
                });
        run.test(
                "in real time an update waits until it is due",
                file -> {
                    int timeOffset = 40 + 8 + 16;
                    int micros = 300_000;
                    Files.write(file, exampleWith(timeOffset, micros));
                    try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                        long start = System.nanoTime();
                        TestRun.expect(player.play(true), player.difference());
                        long taken = System.nanoTime() - start;
                        TestRun.expect(taken >= 1000L * micros, "only " + taken + " ns");
                    }
                });
        expectNotShown(
                "a screen larger than a framebuffer can be is refused, with its size",
                "20000x16 pixels",
                header -> header.putShort(16, (short) 20000));
        expectNotShown(
                "planes are refused for LBE",
                "LBE updates cannot be drawn into planes",
                header -> header.put(12, (byte) 1).put(22, (byte) 1));
        run.test(
                "the checksum of a rectangle of planes, which have none, is passed over",
                file -> {
                    int coveringRectangle = 0x02010024;
                    byte[] recording = exampleWith(FIELDS_OFFSET, coveringRectangle);
                    Files.write(file, withHeader(recording, header -> header.put(22, (byte) 1)));
                    try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                        TestRun.expect(player.play(false), player.difference());
                        TestRun.expectEqual(0L, player.checksums(), "checksums");
                    }
                });
        run.test(
                "a difference is told",
                file -> {
                    Files.write(file, exampleOfAnotherPicture());
                    try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                        TestRun.expect(!player.play(false), "no difference");
                        TestRun.expectEqual(1L, player.differing(), "differences");
                    }
                });
    }

    private void arguments() {
        run.test(
                "a number of threads out of range is refused, with the range",
                file -> {
                    Files.write(file, example());
                    for (int threads : new int[] {-1, Integer.MIN_VALUE, 65}) {
                        IllegalArgumentException e =
                                TestRun.expectThrown(
                                        IllegalArgumentException.class,
                                        () -> RecordingPlayer.open(file, threads));
                        TestRun.expectEqual(
                                "The number of threads must be 0 to 64, not " + threads,
                                e.getMessage(),
                                "message");
                    }
                });
    }

    /** The example with a header that is whole and makes no sense. */
    private void expectNotShown(String sentence, String message, Consumer<ByteBuffer> change) {
        run.test(
                sentence,
                file -> {
                    Files.write(file, withHeader(example(), change));
                    IOException e =
                            TestRun.expectThrown(
                                    IOException.class, () -> RecordingPlayer.open(file, 0));
                    TestRun.expect(e.getMessage().contains(message), e.getMessage());
                });
    }

    /** The recording with another header, whose CRC is right again. */
    private static byte[] withHeader(byte[] recording, Consumer<ByteBuffer> change) {
        int headerEnd = 36;
        ByteBuffer header = ByteBuffer.wrap(recording).order(ByteOrder.LITTLE_ENDIAN);
        change.accept(header);
        header.putInt(headerEnd, RecordingFormat.crc(recording, headerEnd));
        return recording;
    }

    private static void expectNotComplete(Path file, int bit) throws IOException {
        try (Recording recording = Recording.open(file)) {
            while (recording.next() != null) {
                // What comes before the wrong bit is still good.
            }
            TestRun.expect(
                    recording.ending() != Recording.Ending.COMPLETE, "bit " + bit + " passed");
        } catch (IOException e) {
            TestRun.expect(bit < 8 * 40, "bit " + bit + ": " + e);
        }
    }

    /** The example with a checksum that its picture does not have. */
    static byte[] exampleOfAnotherPicture() {
        int crcOffset = 40 + 8 + 32;
        return exampleWith(crcOffset, 0x12345678);
    }

    /** The example with an update that failed when it was recorded, and can be decoded. */
    static byte[] exampleOfRecordedFailure() {
        int resultOffset = 40 + 8 + 24;
        byte[] example = exampleWith(resultOffset, -1);
        return exampleWith(example, resultOffset + Integer.BYTES, -1);
    }

    /** The example with an update that changed 16x16 pixels when it was recorded. */
    static byte[] exampleOfAnotherResult() {
        int resultOffset = 40 + 8 + 24;
        return exampleWith(resultOffset, 16 << 16 | 16);
    }

    /** The example with an update that cannot be decoded: it is larger than the framebuffer. */
    static byte[] exampleThatFails() {
        int sizeOffset = 40 + 8 + 12;
        return exampleWith(sizeOffset, 16 << 16 | 4096);
    }

    /** The same, and nothing says whether it failed when it was recorded. */
    static byte[] exampleThatFailsWithoutResult() {
        return withoutResult(exampleThatFails());
    }

    /** The example without a result and without a checksum. */
    static byte[] exampleWithNothingToCompare() {
        return withoutResult(example());
    }

    /** The example without a result, and with the checksum of a picture by portable kernels. */
    static byte[] exampleWithOtherKernels() {
        int onlyTheChecksum = 0x01000024;
        byte[] recording = exampleWith(FIELDS_OFFSET, onlyTheChecksum);
        return withHeader(recording, header -> header.put(23, (byte) 1));
    }

    /** The example with a record in the place of its index that only a later version knows. */
    static byte[] exampleOfLaterVersion() {
        byte[] recording = example();
        int start = 91;
        recording[start + 3] = 5;
        return withRecordCrc(recording, start, 127);
    }

    private static byte[] withoutResult(byte[] recording) {
        int nothingKnown = 0x24;
        return exampleWith(recording, FIELDS_OFFSET, nothingKnown);
    }

    /** The example with another word in its update's record, whose CRC is right again. */
    private static byte[] exampleWith(int offset, int word) {
        return exampleWith(example(), offset, word);
    }

    private static byte[] exampleWith(byte[] recording, int offset, int word) {
        ByteBuffer.wrap(recording).order(ByteOrder.LITTLE_ENDIAN).putInt(offset, word);
        return withRecordCrc(recording, 40, 87);
    }

    /** end: where the record's CRC stands. */
    private static byte[] withRecordCrc(byte[] recording, int start, int end) {
        byte[] record = Arrays.copyOfRange(recording, start, end);
        ByteBuffer.wrap(recording)
                .order(ByteOrder.LITTLE_ENDIAN)
                .putInt(end, RecordingFormat.crc(record, record.length));
        return recording;
    }

    static byte[] example() {
        return HexFormat.of().parseHex(EXAMPLE);
    }
}
