package nn.qv.tests;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.logging.Level;
import java.util.logging.LogRecord;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;

/**
 * Updates that a viewer's decoder cannot decode, or refuses. Arguments: the folder of the case
 * files, the codec.
 */
final class DecoderFailuresTest extends ScreenDecoderFixture {
    private DecoderFailuresTest(String[] arguments) throws IOException {
        super(arguments);
    }

    public static void main(String[] arguments) throws IOException {
        DecoderFailuresTest tests = new DecoderFailuresTest(arguments);
        tests.failures();
        tests.logs();
        tests.brokenLogs();
        tests.refusedUpdates();
        tests.run.finish();
    }

    private void failures() {
        test(
                "an update that ends too early is truncated, and draws nothing",
                (decoder, framebuffer) -> {
                    byte[] cut = Arrays.copyOf(data(), good.step().consumedBytes() / 2);
                    ByteBuffer buffer = ByteBuffer.wrap(cut);
                    UpdateException e =
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () -> decoder.decode(header(), buffer, framebuffer));
                    TestRun.expectEqual(UpdateException.Reason.TRUNCATED, e.reason(), "reason");
                    TestRun.expect(!e.sourceInStep(), "in step");
                    TestRun.expectEqual(0, buffer.position(), "position");
                    TestRun.expect(e.getMessage().contains(header().toString()), e.getMessage());
                    TestRun.expectEqual(framebuffer().pixels(), framebuffer.pixels(), "pixels");
                    expectDecodes(decoder);
                });
        test(
                "a failed update of a known length leaves the stream behind it",
                (decoder, framebuffer) -> {
                    InputStream in = new ByteArrayInputStream(data());
                    UpdateException e =
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () -> decoder.decode(header(), in, 3, framebuffer));
                    TestRun.expect(e.sourceInStep(), "not in step");
                    TestRun.expectEqual(data().length - 3, in.available(), "bytes left");
                });
        for (Exception thrown :
                List.of(new IOException("broken"), new IllegalStateException("broken"))) {
            test(
                    "an " + thrown.getClass().getSimpleName() + " of the source comes through",
                    (decoder, framebuffer) -> {
                        Exception e =
                                TestRun.expectThrown(
                                        thrown.getClass(),
                                        () ->
                                                decoder.decode(
                                                        header(), throwing(thrown), framebuffer));
                        TestRun.expect(e == thrown, "another exception: " + e);
                        expectDecodes(decoder);
                    });
        }
    }

    private void logs() {
        test(
                "the first failed update of a decoder is a warning, the others are for debugging",
                (decoder, framebuffer) -> {
                    List<String> messages = new ArrayList<>();
                    for (int i = 0; i < 3; i++) {
                        UpdateException e =
                                TestRun.expectThrown(
                                        UpdateException.class,
                                        () -> decoder.decode(header(), new byte[1], framebuffer));
                        messages.add(e.getMessage());
                    }
                    List<LogRecord> lines = log.takeAll();
                    List<String> warnings = LogCapture.messages(lines, Level.WARNING);
                    List<String> others = LogCapture.messages(lines, Level.FINE);
                    TestRun.expectEqual(1, warnings.size(), "warnings");
                    String warning = warnings.get(0);
                    TestRun.expect(warning.startsWith(messages.get(0)), warning);
                    TestRun.expect(!warning.contains("Java_"), warning);
                    TestRun.expect(others.containsAll(messages.subList(1, 3)), "" + others);
                    long nativeLines =
                            others.stream().filter(line -> line.contains("occured in")).count();
                    TestRun.expectEqual(3L, nativeLines, "lines of the library");
                    TestRun.expectEqual(3L, decoder.statistics().refusals(), "refusals");
                });
        test(
                "what the source throws is not logged as a warning",
                (decoder, framebuffer) -> {
                    TestRun.expectThrown(
                            IOException.class,
                            () ->
                                    decoder.decode(
                                            header(),
                                            throwing(new IOException("broken")),
                                            framebuffer));
                    TestRun.expectEqual(0, log.take(Level.WARNING).size(), "warnings");
                });
    }

    private void brokenLogs() {
        test(
                "a log handler that throws an exception does not replace the update's failure",
                (decoder, framebuffer) -> {
                    log.breakBy(new IllegalStateException("broken log"));
                    UpdateException e =
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () -> decoder.decode(header(), new byte[1], framebuffer));
                    TestRun.expectEqual(UpdateException.Reason.TRUNCATED, e.reason(), "reason");
                    log.breakBy(null);
                    expectDecodes(decoder);
                });
        test(
                "an error of a log handler comes through once the native method has returned",
                (decoder, framebuffer) -> {
                    Error thrown = new LinkageError("broken log");
                    log.breakBy(thrown);
                    LinkageError e =
                            TestRun.expectThrown(
                                    LinkageError.class,
                                    () -> decoder.decode(header(), new byte[1], framebuffer));
                    log.breakBy(null);
                    TestRun.expect(e == thrown, "another error: " + e);
                    TestRun.expectEqual(1L, decoder.statistics().refusals(), "refusals");
                    expectDecodes(decoder);
                });
    }

    private static InputStream throwing(Exception thrown) {
        return new ByteArrayInputStream(new byte[0]) {
            @Override
            public int read(byte[] target, int offset, int length) {
                return DecoderFailuresTest.<RuntimeException>raise(thrown);
            }
        };
    }

    @SuppressWarnings("unchecked") // Lets a method throw what it does not declare.
    private static <T extends Exception> int raise(Exception thrown) throws T {
        throw (T) thrown;
    }

    private void refusedUpdates() {
        int width = good.life().width();
        int height = good.life().height();
        expectRectangleRefused("begins right of", new UpdateHeader(width, 0, 16, 16, 7));
        expectRectangleRefused("begins below", new UpdateHeader(0, height, 16, 16, 7));
        expectRectangleRefused("is wider than", new UpdateHeader(0, 0, width + 16, 16, 7));
        expectRectangleRefused("is higher than", new UpdateHeader(0, 0, 16, height + 16, 7));
        if (codec == Codec.LBE) {
            test(
                    "a quality that LBE does not have is refused",
                    (decoder, framebuffer) -> {
                        UpdateHeader header = new UpdateHeader(0, 0, 16, 16, 1);
                        UpdateException e =
                                TestRun.expectThrown(
                                        UpdateException.class,
                                        () -> decoder.decode(header, data(), framebuffer));
                        TestRun.expectEqual(UpdateException.Reason.QUALITY, e.reason(), "reason");
                    });
            test(
                    "planes are refused for LBE",
                    (decoder, framebuffer) ->
                            expectRefused(
                                    "LBE updates cannot be drawn into planes",
                                    () -> decoder.decode(header(), data(), planes(0))));
        } else {
            test(
                    "planes of another subsampling are refused",
                    (decoder, framebuffer) ->
                            expectRefused(
                                    "YCBCR_444",
                                    () -> decoder.decode(header(), data(), planes(2))));
            test(
                    "an update away from the corner is refused for planes",
                    (decoder, framebuffer) -> {
                        UpdateHeader header = new UpdateHeader(16, 0, 16, 16, 7);
                        UpdateException e =
                                TestRun.expectThrown(
                                        UpdateException.class,
                                        () -> decoder.decode(header, UNCHANGED, planes(0)));
                        TestRun.expectEqual(
                                UpdateException.Reason.RECTANGLE, e.reason(), "reason");
                    });
        }
        run.test(
                "a rectangle with numbers beyond 16 bits is refused",
                () -> {
                    expectRefused("outside 0 to 65535", () -> new UpdateHeader(-1, 0, 16, 16, 7));
                    expectRefused("outside", () -> new UpdateHeader(0, 65536, 16, 16, 7));
                });
    }

    private Framebuffer planes(int chroma) {
        return Framebuffer.planes(
                good.life().width(),
                good.life().height(),
                ChromaSubsampling.values()[chroma]);
    }

    private void expectRectangleRefused(String how, UpdateHeader header) {
        test(
                "an update that " + how + " the framebuffer is refused",
                (decoder, framebuffer) -> {
                    UpdateException e =
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () -> decoder.decode(header, data(), framebuffer));
                    TestRun.expectEqual(UpdateException.Reason.RECTANGLE, e.reason(), "reason");
                    TestRun.expect(e.getMessage().contains(header.toString()), e.getMessage());
                    TestRun.expectEqual(1L, decoder.statistics().refusals(), "refusals");
                    expectDecodes(decoder);
                });
    }
}
