package nn.qv.tests;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.logging.Level;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderClosedException;
import nn.qv.imagedecoder.DecoderInUseException;
import nn.qv.imagedecoder.DecoderStatistics;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;

/**
 * Opening, using and closing a viewer's decoder, and its figures. Arguments: the folder of the
 * case files, the codec.
 */
final class DecoderLifeTest extends ScreenDecoderFixture {
    private DecoderLifeTest(String[] arguments) throws IOException {
        super(arguments);
    }

    public static void main(String[] arguments) throws IOException {
        DecoderLifeTest tests = new DecoderLifeTest(arguments);
        tests.life();
        tests.threads();
        tests.figures();
        tests.run.finish();
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
                "while an update waits for its bytes, another thread cannot use the decoder",
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
                                        () -> decoder.setContrast(1));
                        for (TestRun.Body call : calls) {
                            DecoderInUseException e =
                                    TestRun.expectThrown(DecoderInUseException.class, call);
                            TestRun.expect(e.getMessage().contains("\"network\""), e.getMessage());
                        }
                    } finally {
                        proceed.countDown();
                        thread.join();
                    }
                    expectGood(changed[0], drawn[0]);
                    expectDecodes(decoder);
                });
        test(
                "a source cannot use the decoder that reads from it",
                (decoder, framebuffer) -> {
                    InputStream in =
                            new ByteArrayInputStream(data()) {
                                @Override
                                public int read(byte[] target, int offset, int length) {
                                    decoder.setContrast(1);
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
}
