package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HexFormat;
import java.util.List;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingPlayer;

/** The bytes of recordings of several decoders, read and played. */
final class RecordingDecodersTest {
    /**
     * A 16x16 screen. Decoder 0: ICT 4:2:0, protocol version 2, pool, two threads. An update of it,
     * decoder 1 (LBE, protocol version 0, continuous), an update of that, the index.
     */
    private static final String EXAMPLE =
            "52435245430d0a1a0200280000020001100010000000000000401e18240a"
                    + "0600020000007ed35388524352012b000000280001010a00000000000000"
                    + "10001000c40900000000000000000000000000002eafb5ef00000000ffff"
                    + "c0ab06025d524352040c000000010100000000000000000000e0ac80e152"
                    + "4352012a0000002800010107000000000000001000100088130000000000"
                    + "0000000000000000002eafb5ef01000000ffffd025a6ef524352802c0000"
                    + "00020000002800000000000000c409000000000000770000000000000088"
                    + "13000000000000ad000000000000008e1bf458";

    private static final String OF_DECODER_0 = "00000000";
    private static final String OF_DECODER_1 = "01000000";

    private final RecordingRun run = new RecordingRun();

    private RecordingDecodersTest() {}

    public static void main(String[] arguments) {
        LogCapture.begin();
        RecordingDecodersTest tests = new RecordingDecodersTest();
        tests.reading();
        tests.damage();
        tests.planes();
        tests.threads();
        tests.run.finish();
    }

    private void reading() {
        run.test(
                "a recording of two decoders reports both and plays them on one screen",
                file -> {
                    Files.write(file, example());
                    try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                        TestRun.expect(player.play(false), player.difference());
                        TestRun.expectEqual(2L, player.updates(), "updates");
                        TestRun.expectEqual(2L, player.checksums(), "checksums");
                        TestRun.expectEqual(2L, player.statistics().updates(), "statistics");
                        TestRun.expectEqual(1, player.lastUpdate().decoder(), "decoder");
                        TestRun.expectEqual(
                                "[Decoder[index=0, codec=ICT, protocolVersion=V2,"
                                        + " chromaSubsampling=YCBCR_420, recordLayout=PADDED,"
                                        + " threads=2], Decoder[index=1, codec=LBE,"
                                        + " protocolVersion=V0, chromaSubsampling=YCBCR_420,"
                                        + " recordLayout=CONTINUOUS, threads=0]]",
                                player.recording().decoders().toString(),
                                "decoders");
                    }
                });
        run.test(
                "its text names the file, the size and the decoders",
                file -> {
                    Files.write(file, example());
                    try (Recording recording = Recording.open(file)) {
                        while (recording.next() != null) {
                            // The second decoder is described among the entries.
                        }
                        TestRun.expectEqual(
                                file
                                        + " (version 2, 16x16, ICT V2 YCBCR_420 PADDED,"
                                        + " LBE V0 YCBCR_420 CONTINUOUS)",
                                recording.toString(),
                                "text");
                    }
                });
        expectReads(
                "an update without an index, and any of version 1, is of the first decoder",
                "[Update 0, Update 0] COMPLETE",
                new RecordingBytes(2, RecordingBytes.LBE, RecordingBytes.PIXELS).update(""),
                new RecordingBytes(1, RecordingBytes.LBE, RecordingBytes.PIXELS)
                        .update(OF_DECODER_1));
        expectReads(
                "fields that a later version appends to a decoder are passed over",
                "[Decoder, Update 1] COMPLETE",
                twoDecoders("010100000000000000000000" + "1234").update(OF_DECODER_1));
    }

    private void damage() {
        for (String body :
                List.of(
                        "000100000000000000000000", // the first one's index
                        "020100000000000000000000", // 1 was left out
                        "010200000000000000000000", // no codec
                        "010103000000000000000000", // no protocol version
                        "010100030000000000000000", // no chroma subsampling
                        "010100000300000000000000", // no layout
                        "0101000000000000000000")) { // a byte short
            expectReads(
                    "the decoder " + body + " is damage",
                    "[] DAMAGED",
                    twoDecoders(body).update(OF_DECODER_0));
        }
        expectReads(
                "an index that is used twice is damage",
                "[Decoder] DAMAGED",
                twoDecoders("010100000000000000000000").decoder(1, RecordingBytes.LBE));
        expectReads(
                "an update of a decoder that was not described before is damage",
                "[] DAMAGED",
                new RecordingBytes(2, RecordingBytes.ICT, RecordingBytes.PIXELS)
                        .update(OF_DECODER_1)
                        .decoder(1, RecordingBytes.LBE));
        expectReads(
                "a decoder in a recording of version 1 is an entry that only a later release knows",
                "[] TOO_NEW",
                new RecordingBytes(1, RecordingBytes.ICT, RecordingBytes.PIXELS)
                        .decoder(1, RecordingBytes.LBE));
        run.test(
                "255 decoders can follow the first one",
                file -> {
                    RecordingBytes bytes =
                            new RecordingBytes(2, RecordingBytes.ICT, RecordingBytes.PIXELS);
                    for (int index = 1; index <= 255; index++) {
                        bytes.decoder(index, RecordingBytes.LBE);
                    }
                    Files.write(file, bytes.update("ff000000").bytes());
                    expectEnd("Decoder, Update 255] COMPLETE", file);
                    Files.write(file, bytes.decoder(0, RecordingBytes.LBE).bytes());
                    expectEnd("Update 255] DAMAGED", file);
                });
        run.test(
                "a later version of the file is refused by its number",
                file -> {
                    Files.write(
                            file,
                            new RecordingBytes(3, RecordingBytes.ICT, RecordingBytes.PIXELS)
                                    .bytes());
                    IOException e =
                            TestRun.expectThrown(IOException.class, () -> Recording.open(file));
                    TestRun.expect(e.getMessage().contains("version 3"), e.getMessage());
                });
    }

    private void planes() {
        expectNotShown(
                "an LBE decoder that joins planes is refused",
                new RecordingBytes(2, RecordingBytes.ICT, RecordingBytes.PLANES)
                        .decoder(1, RecordingBytes.LBE));
        expectNotShown(
                "planes after an LBE decoder are refused",
                twoDecoders("010100000000000000000000")
                        .record(RecordingBytes.SETTINGS, RecordingBytes.PLANES));
    }

    static byte[] example() {
        return HexFormat.of().parseHex(EXAMPLE);
    }

    private void threads() {
        run.test(
                "a number of threads that a later decoder cannot have stops there, with the reason",
                file -> {
                    String lbe2Continuous = "01020000";
                    Files.write(
                            file,
                            new RecordingBytes(2, RecordingBytes.ICT, RecordingBytes.PIXELS)
                                    .update(OF_DECODER_0)
                                    .decoder(1, lbe2Continuous)
                                    .update(OF_DECODER_1)
                                    .bytes());
                    try (RecordingPlayer player = RecordingPlayer.open(file, 2)) {
                        TestRun.expect(player.step(), "no update");
                        IOException e = TestRun.expectThrown(IOException.class, player::step);
                        TestRun.expect(
                                e.getMessage().contains("without threads, not with 2"),
                                e.getMessage());
                    }
                });
    }

    private static RecordingBytes twoDecoders(String body) {
        return new RecordingBytes(2, RecordingBytes.ICT, RecordingBytes.PIXELS)
                .record(RecordingBytes.DECODER, body);
    }

    /** What one recording reads as, or several joined by commas. */
    private void expectReads(String sentence, String expected, RecordingBytes... recordings) {
        run.test(
                sentence,
                file -> {
                    List<String> read = new ArrayList<>();
                    for (RecordingBytes recording : recordings) {
                        Files.write(file, recording.bytes());
                        read.add(RecordedConnection.entries(file));
                    }
                    String all = String.join(", ", read).replace("] COMPLETE, [", ", ");
                    TestRun.expectEqual(expected, all, "entries and ending");
                });
    }

    private static void expectEnd(String expected, Path file) throws IOException {
        String entries = RecordedConnection.entries(file);
        TestRun.expect(entries.endsWith(expected), entries);
    }

    private void expectNotShown(String sentence, RecordingBytes recording) {
        run.test(
                sentence,
                file -> {
                    Files.write(file, recording.bytes());
                    try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
                        IOException e = TestRun.expectThrown(IOException.class, player::step);
                        TestRun.expect(
                                e.getMessage().contains("LBE updates cannot be drawn into planes"),
                                e.getMessage());
                    }
                });
    }
}
