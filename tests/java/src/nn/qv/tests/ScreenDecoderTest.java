package nn.qv.tests;

import java.io.ByteArrayInputStream;
import java.io.EOFException;
import java.io.FilterInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.channels.Channels;
import java.nio.channels.IllegalBlockingModeException;
import java.nio.channels.Pipe;
import java.nio.channels.ReadableByteChannel;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.logging.Level;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderClosedException;
import nn.qv.imagedecoder.DecoderInUseException;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.DecoderStatistics;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;
import nn.qv.imagedecoder.internal.NativeCodec;

/**
 * A viewer's decoder: its sources, failures, life and threads. Arguments: the folder of the case
 * files, the codec.
 */
final class ScreenDecoderTest {
    /** An update of 16x16 pixels without a coded macroblock, of protocol version 0. */
    private static final byte[] UNCHANGED = {-1, -1};

    private static final UpdateHeader CORNER = new UpdateHeader(0, 0, 16, 16, 7);

    private final TestRun run = new TestRun();
    private final LogCapture log = LogCapture.begin();
    private final GoodUpdate good;
    private final Codec codec;

    private ScreenDecoderTest(Codec codec, GoodUpdate good) {
        this.codec = codec;
        this.good = good;
    }

    public static void main(String[] arguments) throws IOException {
        NativeLoader.load();
        NativeCodec codec = NativeCodec.valueOf(arguments[1]);
        ScreenDecoderTest tests =
                new ScreenDecoderTest(
                        Codec.valueOf(arguments[1]), GoodUpdate.load(arguments[0], codec));
        tests.results();
        tests.sources();
        tests.failures();
        tests.refusedUpdates();
        tests.life();
        tests.threads();
        tests.figures();
        tests.run.finish();
    }

    private interface Body {
        void run(ScreenDecoder decoder, Framebuffer framebuffer) throws Exception;
    }

    /** A test with a decoder for the good update and a framebuffer of its size. */
    private void test(String sentence, Body body) {
        run.test(
                sentence,
                () -> {
                    try (ScreenDecoder decoder = open()) {
                        body.run(decoder, framebuffer());
                    }
                });
    }

    private ScreenDecoder open() throws IOException {
        ScreenDecoder decoder = ScreenDecoder.open(options().build());
        log.take(Level.FINE);
        return decoder;
    }

    private DecoderOptions.Builder options() {
        return good.life()
                .options()
                .forViewer()
                .contrast(good.life().contrast())
                .postprocessing(good.life().postprocessing());
    }

    private Framebuffer framebuffer() {
        return Framebuffer.argb(good.life().width(), good.life().height());
    }

    private UpdateHeader header() {
        return good.step().update().header();
    }

    private byte[] data() {
        return good.step().update().data();
    }

    /** The good update's bytes, between others. */
    private byte[] dataBetween(int before, int behind) {
        byte[] own = Arrays.copyOf(data(), good.step().consumedBytes());
        byte[] bytes = new byte[before + own.length + behind];
        System.arraycopy(own, 0, bytes, before, own.length);
        return bytes;
    }

    private void expectDecodes(ScreenDecoder decoder) throws IOException {
        Framebuffer framebuffer = framebuffer();
        expectGood(decoder.decode(header(), data(), framebuffer), framebuffer);
    }

    /** The case file's result is packed: unpacks it by the rule of its description. */
    private void expectGood(ChangedRectangle changed, Framebuffer framebuffer) {
        long packed = good.step().result();
        int left = (int) (packed >>> 48);
        int top = (int) (packed >>> 32 & 0xFFFF);
        int width = (int) (packed >>> 16 & 0xFFFF) - header().x();
        int height = (int) (packed & 0xFFFF) - header().y();
        width = Math.min(width, framebuffer.width() - left);
        height = Math.min(height, framebuffer.height() - top);
        TestRun.expectEqual(new ChangedRectangle(left, top, width, height), changed, "changed");
        GuardedFramebuffer right = good.framebuffer();
        ByteBuffer bytes = right.framebuffer().argb();
        bytes.order(ByteOrder.nativeOrder()).asIntBuffer().put(framebuffer.pixels());
        TestRun.expectEqual(good.step().crc(), right.crc(), "framebuffer CRC");
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

    private void failures() {
        test(
                "an update that ends too early is truncated, is logged once, and draws nothing",
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
                    TestRun.expectEqual(1, log.take(Level.WARNING).size(), "log lines");
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
        test(
                "a stream that ends within a known length says how far it came",
                (decoder, framebuffer) -> {
                    EOFException e =
                            TestRun.expectThrown(
                                    EOFException.class,
                                    () ->
                                            decoder.decode(
                                                    header(),
                                                    new ByteArrayInputStream(new byte[3]),
                                                    5,
                                                    framebuffer));
                    TestRun.expectEqual(
                            "The stream ended after 3 of 5 bytes", e.getMessage(), "message");
                    expectDecodes(decoder);
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

    private static InputStream throwing(Exception thrown) {
        return new ByteArrayInputStream(new byte[0]) {
            @Override
            public int read(byte[] target, int offset, int length) {
                return ScreenDecoderTest.<RuntimeException>raise(thrown);
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

    private void life() {
        run.test(
                "a new decoder says how it works, for debugging",
                () -> {
                    ScreenDecoder.open(options().build()).close();
                    String line = "Using singlethreaded " + codec + " decoder.";
                    TestRun.expect(log.take(Level.FINE).contains(line), "no line " + line);
                });
        test(
                "a closed decoder can be closed again, and refuses everything else",
                (decoder, framebuffer) -> {
                    TestRun.expect(!decoder.isClosed(), "closed too early");
                    decoder.close();
                    decoder.close();
                    TestRun.expect(decoder.isClosed(), "not closed");
                    List<TestRun.Body> calls =
                            List.of(
                                    () -> decoder.decode(header(), data(), framebuffer),
                                    () -> decoder.setContrast(1),
                                    () -> decoder.setPostprocessing(true));
                    for (TestRun.Body call : calls) {
                        TestRun.expectThrown(DecoderClosedException.class, call);
                    }
                    TestRun.expectEqual(0L, decoder.statistics().updates(), "updates");
                });
        test(
                "a contrast level out of range is refused",
                (decoder, framebuffer) -> {
                    expectRefused("0 to 100", () -> decoder.setContrast(101));
                    expectRefused("0 to 100", () -> decoder.setContrast(-1));
                });
        if (codec == Codec.ICT) { // The good update of LBE has no levels between.
            test(
                    "contrast changes later updates, and 0 takes that back",
                    (decoder, framebuffer) -> {
                        decoder.setContrast(100);
                        decoder.decode(header(), data(), framebuffer);
                        Framebuffer plain = framebuffer();
                        decoder.setContrast(0);
                        decoder.decode(header(), data(), plain);
                        boolean same = plain.pixels().equals(framebuffer.pixels());
                        TestRun.expect(!same, "no difference");
                        decoder.setContrast(good.life().contrast());
                        expectDecodes(decoder);
                    });
        }
    }

    private void threads() {
        test(
                "while an update waits for its bytes, another thread can neither decode nor close",
                (decoder, framebuffer) -> {
                    CountDownLatch reading = new CountDownLatch(1);
                    CountDownLatch proceed = new CountDownLatch(1);
                    InputStream in = waiting(reading, proceed);
                    Framebuffer[] drawn = {framebuffer()};
                    ChangedRectangle[] changed = new ChangedRectangle[1];
                    Thread thread =
                            new Thread(
                                    () -> {
                                        try {
                                            changed[0] = decoder.decode(header(), in, drawn[0]);
                                        } catch (IOException e) {
                                            throw new IllegalStateException(e);
                                        }
                                    },
                                    "network");
                    thread.start();
                    reading.await();
                    try {
                        List<TestRun.Body> calls =
                                List.of(
                                        () -> decoder.decode(header(), data(), framebuffer),
                                        () -> decoder.setContrast(1),
                                        decoder::close);
                        for (TestRun.Body call : calls) {
                            DecoderInUseException e =
                                    TestRun.expectThrown(DecoderInUseException.class, call);
                            TestRun.expect(e.getMessage().contains("\"network\""), e.getMessage());
                        }
                        TestRun.expect(!decoder.isClosed(), "closed");
                    } finally {
                        proceed.countDown();
                        thread.join();
                    }
                    expectGood(changed[0], drawn[0]);
                    expectDecodes(decoder);
                });
        test(
                "a source cannot close the decoder that reads from it",
                (decoder, framebuffer) -> {
                    InputStream in =
                            new ByteArrayInputStream(data()) {
                                @Override
                                public int read(byte[] target, int offset, int length) {
                                    decoder.close();
                                    return super.read(target, offset, length);
                                }
                            };
                    DecoderInUseException e =
                            TestRun.expectThrown(
                                    DecoderInUseException.class,
                                    () -> decoder.decode(header(), in, framebuffer));
                    TestRun.expect(e.getMessage().contains("this very thread"), e.getMessage());
                    expectDecodes(decoder);
                });
    }

    private InputStream waiting(CountDownLatch reading, CountDownLatch proceed) {
        return new ByteArrayInputStream(data()) {
            @Override
            public int read(byte[] target, int offset, int length) {
                reading.countDown();
                try {
                    proceed.await();
                } catch (InterruptedException e) {
                    throw new IllegalStateException(e);
                }
                return super.read(target, offset, length);
            }
        };
    }

    private void figures() {
        test(
                "updates, bytes, refusals and times are counted",
                (decoder, framebuffer) -> {
                    expectDecodes(decoder);
                    expectDecodes(decoder);
                    TestRun.expectThrown(
                            UpdateException.class,
                            () -> decoder.decode(header(), new byte[0], framebuffer));
                    DecoderStatistics figures = decoder.statistics();
                    TestRun.expectEqual(2L, figures.updates(), "updates");
                    TestRun.expectEqual(1L, figures.refusals(), "refusals");
                    TestRun.expectEqual(
                            2L * good.step().consumedBytes(), figures.bytes(), "bytes");
                    TestRun.expect(figures.decodeNanos() > 0, "no time for decoding");
                    TestRun.expect(figures.feedNanos() > 0, "no time for feeding");
                });
        test(
                "waiting for bytes counts as feeding, not as decoding",
                (decoder, framebuffer) -> {
                    InputStream slow =
                            new ByteArrayInputStream(data()) {
                                @Override
                                public int read(byte[] target, int offset, int length) {
                                    long end = System.nanoTime() + 50_000_000;
                                    while (System.nanoTime() < end) {
                                        Thread.onSpinWait();
                                    }
                                    return super.read(target, offset, length);
                                }
                            };
                    long start = System.nanoTime();
                    decoder.decode(header(), slow, framebuffer);
                    long all = System.nanoTime() - start;
                    DecoderStatistics figures = decoder.statistics();
                    TestRun.expect(figures.feedNanos() >= 50_000_000, "feed " + figures);
                    long told = figures.feedNanos() + figures.decodeNanos();
                    TestRun.expect(told <= all, figures + " of " + all);
                });
    }

    private static void expectRefused(String message, TestRun.Body body) throws Exception {
        IllegalArgumentException e =
                TestRun.expectThrown(IllegalArgumentException.class, body);
        TestRun.expect(e.getMessage().contains(message), e.getMessage());
    }
}
