package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.ConnectionRecording;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.RecordingEntry;
import nn.qv.imagedecoder.RecordingPlayer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateHeader;

/** Updates of both codecs for one screen, from case files, and what was recorded of them. */
final class RecordedConnection {
    /** An update of 16x16 pixels without a coded macroblock, of protocol version 0. */
    static final byte[] UNCHANGED = {-1, -1};

    static final UpdateHeader CORNER = new UpdateHeader(0, 0, 16, 16, 7);

    private final CaseFile ict;
    private final CaseFile lbe;

    /** From the folder of the case files. */
    RecordedConnection(String cases) throws IOException {
        ict = CaseFile.load(Path.of(cases, "000-ict-v0-420-t0-nat.case"));
        lbe = CaseFile.load(Path.of(cases, "038-lbe-v2-420-t1-nat.case"));
    }

    /** One that both codecs' updates fit into. */
    Framebuffer screen() {
        return Framebuffer.argb(
                Math.max(ict.width(), lbe.width()), Math.max(ict.height(), lbe.height()));
    }

    DecoderOptions.Builder options(Codec codec) {
        return life(codec).options().forViewer();
    }

    ScreenDecoder open(Codec codec, ConnectionRecording recording) throws IOException {
        return ScreenDecoder.open(options(codec).record(recording).build());
    }

    /** Decodes a good update of the codec. */
    void decode(Codec codec, ScreenDecoder decoder, Framebuffer screen) throws IOException {
        Update update = life(codec).steps().get(0).update();
        decoder.decode(update.header(), update.data(), screen);
    }

    /** A whole connection of one decoder and one good update on a new screen. */
    void connect(Codec codec, ConnectionRecording recording) throws IOException {
        try (ScreenDecoder decoder = open(codec, recording)) {
            decode(codec, decoder, screen());
        }
    }

    private CaseFile life(Codec codec) {
        return codec == Codec.ICT ? ict : lbe;
    }

    /** The entries of a recording, updates with their decoder, and how it ends. */
    static String entries(Path file) throws IOException {
        List<String> kinds = new ArrayList<>();
        try (Recording recording = Recording.open(file)) {
            for (RecordingEntry e = recording.next(); e != null; e = recording.next()) {
                boolean isUpdate = e instanceof RecordingEntry.Update;
                String decoder = isUpdate ? " " + ((RecordingEntry.Update) e).decoder() : "";
                kinds.add(e.getClass().getSimpleName() + decoder);
            }
            return kinds + " " + recording.ending();
        }
    }

    /** When its updates began, in microseconds. */
    static List<Long> times(Path file) throws IOException {
        List<Long> times = new ArrayList<>();
        try (Recording recording = Recording.open(file)) {
            for (RecordingEntry e = recording.next(); e != null; e = recording.next()) {
                if (e instanceof RecordingEntry.Update update) {
                    times.add(update.timeMicros());
                }
            }
        }
        return times;
    }

    /** Plays a recording, which must end with a screen like this one. */
    static void expectPlays(Path file, Framebuffer screen) throws Exception {
        try (RecordingPlayer player = RecordingPlayer.open(file, 0)) {
            TestRun.expect(player.play(false), player.difference());
            TestRun.expectEqual(0L, player.failed(), "failures");
            TestRun.expectEqual(player.updates(), player.checksums(), "checksums");
            TestRun.expectEqual(screen.pixels(), player.framebuffer().pixels(), "pixels");
        }
    }

    /** The index at the end of a recording must lead to its updates. */
    static void expectIndexOf(int updates, Path file) throws IOException {
        ByteBuffer bytes =
                ByteBuffer.wrap(Files.readAllBytes(file)).order(ByteOrder.LITTLE_ENDIAN);
        int index = (int) bytes.getLong(bytes.limit() - 12);
        TestRun.expectEqual((byte) 128, bytes.get(index + 3), "type of the index");
        TestRun.expectEqual(updates, bytes.getInt(index + 8), "updates in the index");
        for (int i = 0; i < updates; i++) {
            int update = (int) bytes.getLong(index + 12 + 16 * i);
            TestRun.expectEqual((byte) 1, bytes.get(update + 3), "type of record " + i);
            TestRun.expectEqual(
                    bytes.getLong(update + 24), bytes.getLong(index + 20 + 16 * i), "its time");
        }
    }
}
