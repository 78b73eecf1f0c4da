package nn.qv.tests;

import java.io.BufferedInputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.ReadableByteChannel;
import java.nio.file.Path;
import java.util.List;
import java.util.zip.CRC32;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * Every case file through a viewer's decoder, from every kind of source. Argument: the folder of
 * the files.
 */
final class ViewerCasesTest {
    /** A kind of source; checks where it stands afterwards. */
    private interface Source {
        ChangedRectangle decode(
                ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
                throws IOException;
    }

    private ViewerCasesTest() {}

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        TestRun run = new TestRun();
        List<CaseFile> lives =
                CaseFile.loadAll(Path.of(arguments[0])).stream()
                        .filter(ViewerCasesTest::fitsViewer)
                        .toList();
        all(run, lives, "an array", ViewerCasesTest::fromArray);
        all(run, lives, "a heap buffer", ViewerCasesTest::fromHeapBuffer);
        all(run, lives, "a direct buffer", ViewerCasesTest::fromDirectBuffer);
        all(run, lives, "a stream of single bytes", ViewerCasesTest::fromSingleBytes);
        all(run, lives, "a stream of 7 bytes at a time", ViewerCasesTest::fromSevens);
        all(run, lives, "a buffered stream", ViewerCasesTest::fromBufferedStream);
        all(run, lives, "a channel by a small buffer", ViewerCasesTest::fromChannel);
        run.finish();
    }

    /** Planes are for ICT, and must be drawn from their corner. */
    static boolean fitsViewer(CaseFile life) {
        return !life.planes()
                || life.options().codec() == NativeCodec.ICT
                        && life.steps().stream()
                                .allMatch(step -> step.update().x() == 0 && step.update().y() == 0);
    }

    private static void all(TestRun run, List<CaseFile> lives, String what, Source source) {
        run.test(
                "all " + lives.size() + " case files decode right from " + what,
                () -> {
                    for (CaseFile life : lives) {
                        try {
                            expectRight(life, source);
                        } catch (AssertionError | IOException e) {
                            throw new AssertionError(life.name() + ": " + e.getMessage(), e);
                        }
                    }
                });
    }

    /** One of the kind and size of a case file. */
    static Framebuffer framebuffer(CaseFile life) {
        return life.planes()
                ? Framebuffer.planes(
                        life.width(),
                        life.height(),
                        ChromaSubsampling.values()[life.options().chromaSubsampling()])
                : Framebuffer.argb(life.width(), life.height());
    }

    private static void expectRight(CaseFile life, Source source) throws IOException {
        Framebuffer framebuffer = framebuffer(life);
        try (ScreenDecoder decoder =
                ScreenDecoder.open(
                        life.options()
                                .forViewer()
                                .contrast(life.contrast())
                                .postprocessing(life.postprocessing())
                                .build())) {
            for (int i = 0; i < life.steps().size(); i++) {
                CaseFile.Step step = life.steps().get(i);
                // The native methods alone may lose a byte between pieces.
                boolean exact = life.pieceSize() == 0 && step.result() != -1;
                int own = exact ? step.consumedBytes() : -1;
                expectRight(step, own, "update " + i + ", ", decoder, framebuffer, source);
            }
        }
    }

    private static void expectRight(
            CaseFile.Step step,
            int own,
            String where,
            ScreenDecoder decoder,
            Framebuffer framebuffer,
            Source source)
            throws IOException {
        Update update = step.update();
        boolean fails = step.result() == -1;
        try {
            ChangedRectangle changed =
                    source.decode(decoder, update.header(), update.data(), own, framebuffer);
            TestRun.expect(!fails, where + "did not fail");
            TestRun.expectEqual(step.result() == 0, changed.isEmpty(), where + "emptiness");
        } catch (UpdateException e) {
            TestRun.expect(fails, where + e.getMessage());
            TestRun.expect(e.getMessage().endsWith(step.error()), where + e.getMessage());
        }
        TestRun.expectEqual(step.crc(), crc(framebuffer), where + "framebuffer CRC");
    }

    private static long crc(Framebuffer framebuffer) {
        CRC32 crc = new CRC32();
        if (framebuffer.chromaSubsampling().isPresent()) {
            framebuffer.planes().forEach(crc::update);
        } else {
            for (int pixel : framebuffer.copy(all(framebuffer))) {
                crc.update(ByteBuffer.allocate(4).putInt(0, Integer.reverseBytes(pixel)));
            }
        }
        return crc.getValue();
    }

    private static ChangedRectangle all(Framebuffer framebuffer) {
        return new ChangedRectangle(0, 0, framebuffer.width(), framebuffer.height());
    }

    private static ChangedRectangle fromArray(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        return decoder.decode(header, data, to);
    }

    private static ChangedRectangle fromHeapBuffer(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        return fromBuffer(decoder, header, ByteBuffer.wrap(data), own, to);
    }

    private static ChangedRectangle fromSingleBytes(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        return fromStream(decoder, header, data, own, to, 1);
    }

    private static ChangedRectangle fromSevens(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        return fromStream(decoder, header, data, own, to, 7);
    }

    private static ChangedRectangle fromBuffer(
            ScreenDecoder decoder, UpdateHeader header, ByteBuffer data, int own, Framebuffer to)
            throws IOException {
        int start = data.position();
        try {
            ChangedRectangle changed = decoder.decode(header, data, to);
            expectPosition(own, data.position() - start);
            return changed;
        } catch (UpdateException e) {
            TestRun.expectEqual(start, data.position(), "position after a failure");
            throw e;
        }
    }

    private static ChangedRectangle fromDirectBuffer(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        ByteBuffer direct = ByteBuffer.allocateDirect(data.length + 3).put(new byte[3]).put(data);
        return fromBuffer(decoder, header, direct.position(3), own, to);
    }

    private static ChangedRectangle fromStream(
            ScreenDecoder decoder,
            UpdateHeader header,
            byte[] data,
            int own,
            Framebuffer to,
            int pieces)
            throws IOException {
        PieceStream in = new PieceStream(data, 0, pieces);
        try {
            ChangedRectangle changed = decoder.decode(header, in, to);
            expectPosition(own, in.position());
            return changed;
        } catch (UpdateException e) {
            TestRun.expectEqual(0, in.position(), "position after a failure");
            throw e;
        }
    }

    private static ChangedRectangle fromBufferedStream(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        BufferedInputStream in = new BufferedInputStream(new PieceStream(data, 0, 5), 16);
        ChangedRectangle changed = decoder.decode(header, in, to);
        expectPosition(own, data.length - in.readAllBytes().length);
        return changed;
    }

    private static ChangedRectangle fromChannel(
            ScreenDecoder decoder, UpdateHeader header, byte[] data, int own, Framebuffer to)
            throws IOException {
        PieceStream stream = new PieceStream(data, 0, 40);
        ReadableByteChannel channel = stream;
        ByteBuffer buffer = ByteBuffer.allocate(32).limit(0);
        ChangedRectangle changed = decoder.decode(header, channel, buffer, to);
        expectPosition(own, stream.position() - buffer.remaining());
        return changed;
    }

    private static void expectPosition(int own, int actual) {
        if (own != -1) {
            TestRun.expectEqual(own, actual, "bytes consumed");
        }
    }
}
