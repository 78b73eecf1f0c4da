package nn.qv.tests;

import java.io.ByteArrayInputStream;
import java.io.FilterInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.channels.Channels;
import java.nio.channels.IllegalBlockingModeException;
import java.nio.channels.Pipe;
import java.nio.channels.ReadableByteChannel;
import java.util.Arrays;
import java.util.List;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * What a viewer's decoder draws and tells, and where its sources stand. Arguments: the folder of
 * the case files, the codec.
 */
final class ScreenDecoderTest extends ScreenDecoderFixture {
    private ScreenDecoderTest(String[] arguments) throws IOException {
        super(arguments);
    }

    public static void main(String[] arguments) throws IOException {
        ScreenDecoderTest tests = new ScreenDecoderTest(arguments);
        tests.results();
        tests.sources();
        tests.run.finish();
    }

    private void results() {
        test(
                "the changed rectangle is a real one",
                (decoder, framebuffer) ->
                        expectGood(decoder.decode(header(), data(), framebuffer), framebuffer));
        test(
                "an update away from the corner tells its place and size",
                (decoder, framebuffer) -> {
                    // The same macroblocks, drawn further right and down in a larger screen.
                    Framebuffer large =
                            Framebuffer.argb(framebuffer.width() + 64, framebuffer.height() + 48);
                    UpdateHeader h = header();
                    ChangedRectangle near = decoder.decode(h, data(), large);
                    UpdateHeader moved =
                            new UpdateHeader(
                                    h.x() + 32, h.y() + 16, h.width(), h.height(), h.quality());
                    ChangedRectangle far = decoder.decode(moved, data(), large);
                    TestRun.expectEqual(near.x() + 32, far.x(), "x");
                    TestRun.expectEqual(near.y() + 16, far.y(), "y");
                    TestRun.expectEqual(near.width(), far.width(), "width");
                    TestRun.expectEqual(near.height(), far.height(), "height");
                });
        test(
                "an update that codes nothing changes nothing",
                (decoder, framebuffer) -> {
                    ChangedRectangle changed = decoder.decode(CORNER, UNCHANGED, framebuffer);
                    TestRun.expect(changed.isEmpty(), "changed " + changed);
                });
    }

    private void sources() {
        test(
                "a stream of a known length stands behind the update",
                (decoder, framebuffer) -> {
                    byte[] bytes = dataBetween(3, 5);
                    InputStream in = new FilterInputStream(new ByteArrayInputStream(bytes)) {};
                    in.skipNBytes(3);
                    expectGood(
                            decoder.decode(header(), in, bytes.length - 8, framebuffer),
                            framebuffer);
                    TestRun.expectEqual(5, in.readAllBytes().length, "bytes left");
                });
        test(
                "a channel of a known length stands behind the update",
                (decoder, framebuffer) -> {
                    byte[] bytes = dataBetween(0, 5);
                    PieceStream in = new PieceStream(bytes, 0, 9);
                    expectGood(
                            decoder.decode(
                                    header(),
                                    (ReadableByteChannel) in,
                                    bytes.length - 5,
                                    framebuffer),
                            framebuffer);
                    TestRun.expectEqual(5, in.readAllBytes().length, "bytes left");
                });
        test(
                "two updates back to back are read one by one",
                (decoder, framebuffer) -> {
                    byte[] one = dataBetween(0, 0);
                    byte[] two = Arrays.copyOf(one, 2 * one.length);
                    System.arraycopy(one, 0, two, one.length, one.length);
                    ByteBuffer buffer = ByteBuffer.wrap(two);
                    InputStream stream = new ByteArrayInputStream(two);
                    for (int i = 0; i < 2; i++) {
                        Framebuffer fresh = framebuffer();
                        expectGood(decoder.decode(header(), buffer, fresh), fresh);
                        fresh.clear();
                        expectGood(decoder.decode(header(), stream, fresh), fresh);
                    }
                    TestRun.expectEqual(0, buffer.remaining(), "bytes left in the buffer");
                    TestRun.expectEqual(0, stream.available(), "bytes left in the stream");
                });
        test(
                "a stream without marks is refused, because it cannot be put behind the update",
                (decoder, framebuffer) -> {
                    InputStream in = Channels.newInputStream(new PieceStream(data(), 0, 9));
                    expectRefused(
                            "BufferedInputStream",
                            () -> decoder.decode(header(), in, framebuffer));
                });
        test(
                "a channel that does not block is refused",
                (decoder, framebuffer) -> {
                    Pipe.SourceChannel source = Pipe.open().source();
                    source.configureBlocking(false);
                    TestRun.expectThrown(
                            IllegalBlockingModeException.class,
                            () -> decoder.decode(header(), source, 5, framebuffer));
                });
        test(
                "a channel's buffer that is too small or read-only is refused",
                (decoder, framebuffer) -> {
                    PieceStream in = new PieceStream(data(), 0, 9);
                    for (ByteBuffer buffer :
                            List.of(
                                    ByteBuffer.allocate(31),
                                    ByteBuffer.allocate(64).asReadOnlyBuffer())) {
                        expectRefused(
                                "at least 32 bytes",
                                () -> decoder.decode(header(), in, buffer, framebuffer));
                    }
                });
        test(
                "a negative length is refused",
                (decoder, framebuffer) ->
                        expectRefused(
                                "negative",
                                () ->
                                        decoder.decode(
                                                header(),
                                                InputStream.nullInputStream(),
                                                -1,
                                                framebuffer)));
    }
}
