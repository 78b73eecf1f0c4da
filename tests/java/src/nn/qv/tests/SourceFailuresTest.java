package nn.qv.tests;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.channels.ReadableByteChannel;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.function.Function;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;

/**
 * Streams and channels that end or give nothing amid an update. Arguments: the folder of the case
 * files, the codec.
 */
final class SourceFailuresTest extends ScreenDecoderFixture {
    private static final int MOST_EMPTY_READS = 1000;

    /** A way to give an update's bytes. */
    private interface Way {
        void decode(ScreenDecoder decoder, InputStream in, Framebuffer framebuffer)
                throws IOException;
    }

    /** A call of a decoder with a stream of the good update's bytes, or fewer. */
    private final Map<String, Way> ways = new LinkedHashMap<>();

    private SourceFailuresTest(String[] arguments) throws IOException {
        super(arguments);
        ways.put("a stream", (d, in, to) -> d.decode(header(), in, to));
        ways.put("a stream with a length", (d, in, to) -> d.decode(header(), in, length(), to));
        ways.put(
                "a channel with a length",
                (d, in, to) -> d.decode(header(), channel(in), length(), to));
        ways.put(
                "a channel with a buffer",
                (d, in, to) -> d.decode(header(), channel(in), empty(), to));
    }

    public static void main(String[] arguments) throws IOException {
        SourceFailuresTest tests = new SourceFailuresTest(arguments);
        tests.endings();
        tests.emptyReads();
        tests.newBuffers();
        tests.run.finish();
    }

    private int length() {
        return good.step().consumedBytes();
    }

    /** A channel of which each read is one read of a stream. */
    private static ReadableByteChannel channel(InputStream in) {
        return new ReadableByteChannel() {
            @Override
            public int read(ByteBuffer target) throws IOException {
                byte[] bytes = new byte[target.remaining()];
                int count = in.read(bytes, 0, bytes.length);
                target.put(bytes, 0, Math.max(0, count));
                return count;
            }

            @Override
            public boolean isOpen() {
                return true;
            }

            @Override
            public void close() {}
        };
    }

    private static ByteBuffer empty() {
        return ByteBuffer.allocate(64).limit(0);
    }

    private void forEveryWay(String sentence, Function<Way, Body> body) {
        ways.forEach((name, way) -> test(sentence + ": " + name, body.apply(way)));
    }

    private void endings() {
        int half = length() / 2;
        forEveryWay(
                "a connection that closes amid an update differs from bad data",
                way ->
                        (decoder, framebuffer) -> {
                            InputStream in =
                                    new ByteArrayInputStream(Arrays.copyOf(data(), half));
                            UpdateException e =
                                    TestRun.expectThrown(
                                            UpdateException.class,
                                            () -> way.decode(decoder, in, framebuffer));
                            TestRun.expectEqual(
                                    UpdateException.Reason.SOURCE_ENDED, e.reason(), "reason");
                            TestRun.expect(!e.sourceInStep(), "in step");
                            TestRun.expect(
                                    e.getMessage().contains(" was cut off after " + half + " "),
                                    e.getMessage());
                            TestRun.expectEqual(1L, decoder.statistics().refusals(), "refusals");
                            expectDecodes(decoder);
                        });
        test(
                "what is missing in a known length is bad data, and not the connection's end",
                (decoder, framebuffer) -> {
                    InputStream in = new ByteArrayInputStream(data());
                    UpdateException e =
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () -> decoder.decode(header(), in, half, framebuffer));
                    TestRun.expectEqual(UpdateException.Reason.TRUNCATED, e.reason(), "reason");
                    TestRun.expect(
                            e.getMessage().contains("needs more than its " + half + " bytes"),
                            e.getMessage());
                    TestRun.expect(e.sourceInStep(), "not in step");
                });
        test(
                "a length that is far too large takes no memory for what does not come",
                (decoder, framebuffer) -> {
                    InputStream in = new ByteArrayInputStream(new byte[100_000]);
                    UpdateException e =
                            TestRun.expectThrown(
                                    UpdateException.class,
                                    () ->
                                            decoder.decode(
                                                    header(), in, Integer.MAX_VALUE, framebuffer));
                    TestRun.expect(
                            e.getMessage().contains("after 100000 of 2147483647 bytes"),
                            e.getMessage());
                });
    }

    /** A stream that returns 0 some times before each byte of the good update. */
    private InputStream hesitating(int emptyReads) {
        return new ByteArrayInputStream(data()) {
            private int empty;

            @Override
            public int read(byte[] target, int offset, int length) {
                if (empty < emptyReads) {
                    empty++;
                    return 0;
                }
                empty = 0;
                return super.read(target, offset, Math.min(length, 100));
            }
        };
    }

    private void emptyReads() {
        forEveryWay(
                "a source that returns 0 a thousand times in succession fails the update",
                way ->
                        (decoder, framebuffer) -> {
                            IOException e =
                                    TestRun.expectThrown(
                                            IOException.class,
                                            () ->
                                                    way.decode(
                                                            decoder,
                                                            hesitating(MOST_EMPTY_READS),
                                                            framebuffer));
                            TestRun.expect(
                                    e.getMessage().contains("no bytes in 1000 reads"),
                                    e.getMessage());
                            expectDecodes(decoder);
                        });
        forEveryWay(
                "one that returns 0 less often is read to the end",
                way ->
                        (decoder, framebuffer) -> {
                            way.decode(decoder, hesitating(MOST_EMPTY_READS - 1), framebuffer);
                            Framebuffer right = framebuffer();
                            decoder.decode(header(), data(), right);
                            TestRun.expectEqual(right.pixels(), framebuffer.pixels(), "pixels");
                        });
    }

    private void newBuffers() {
        for (ByteBuffer buffer :
                new ByteBuffer[] {ByteBuffer.allocate(64), ByteBuffer.allocateDirect(4096)}) {
            test(
                    "a channel's new buffer without limit(0) is explained, and usable after it: "
                            + buffer,
                    (decoder, framebuffer) -> {
                        ReadableByteChannel channel = new PieceStream(data(), 0, 40);
                        expectRefused(
                                "Call limit(0)",
                                () -> decoder.decode(header(), channel, buffer, framebuffer));
                        decoder.decode(header(), channel, buffer.limit(0), framebuffer);
                        Framebuffer right = framebuffer();
                        decoder.decode(header(), data(), right);
                        TestRun.expectEqual(right.pixels(), framebuffer.pixels(), "pixels");
                    });
        }
        test(
                "a buffer full of zeros that came from the channel is not taken for a new one",
                (decoder, framebuffer) -> {
                    PieceStream channel = new PieceStream(data(), 0, 64);
                    ByteBuffer buffer = empty();
                    decoder.decode(header(), (ReadableByteChannel) channel, buffer, framebuffer);
                    buffer.clear().put(new byte[64]).flip();
                    try {
                        decoder.decode(
                                header(), (ReadableByteChannel) channel, buffer, framebuffer);
                    } catch (UpdateException e) {
                        // As good as decoding: the zeros were taken for the device's.
                    }
                });
    }
}
