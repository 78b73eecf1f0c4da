package nn.qv.tests;

import java.io.IOException;
import java.io.InputStream;
import java.net.InetAddress;
import java.net.ServerSocket;
import java.net.Socket;
import java.nio.ByteBuffer;
import java.nio.channels.Channels;
import java.nio.channels.ReadableByteChannel;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.TimeUnit;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderClosedException;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateHeader;

/** A decoder that another thread closes while an update is read. */
final class ClosingTest {
    private static final UpdateHeader HEADER = new UpdateHeader(0, 0, 16, 16, 7);
    /** Ends an update of protocol version 2 at once: 18 ones. */
    private static final byte[] UNCHANGED = {-1, -1, -1};

    private static final int THREADS = 3;
    private static final int LIMIT_SECONDS = 20;

    private final TestRun run = new TestRun();
    private final Framebuffer framebuffer = Framebuffer.argb(16, 16);

    private ClosingTest() {}

    public static void main(String[] arguments) {
        LogCapture.begin();
        ClosingTest tests = new ClosingTest();
        tests.blockedReads();
        tests.otherReads();
        tests.run.finish();
    }

    /** Lets a source wait for the test, or the test for the source. */
    private static final class Gate extends InputStream {
        final CountDownLatch reading = new CountDownLatch(1);
        final CountDownLatch proceed = new CountDownLatch(1);

        @Override
        public int read() {
            return -1;
        }

        @Override
        public int read(byte[] target, int offset, int length) throws IOException {
            reading.countDown();
            try {
                proceed.await();
            } catch (InterruptedException e) {
                throw new IOException(e);
            }
            target[offset] = 0;
            return 1;
        }

        @Override
        public boolean markSupported() {
            return true;
        }

        @Override
        public void mark(int limit) {}

        @Override
        public void reset() {}
    }

    /** A call of decode. */
    private interface Decoding {
        void run(ScreenDecoder decoder, Gate gate) throws IOException;
    }

    private void blockedReads() {
        testClosing(
                "a stream of unknown length",
                (decoder, gate) -> decoder.decode(HEADER, (InputStream) gate, framebuffer));
        testClosing(
                "a stream of known length",
                (decoder, gate) -> decoder.decode(HEADER, (InputStream) gate, 100, framebuffer));
        testClosing(
                "a channel of known length",
                (decoder, gate) ->
                        decoder.decode(HEADER, Channels.newChannel(gate), 100, framebuffer));
        testClosing(
                "a channel by way of a buffer",
                (decoder, gate) ->
                        decoder.decode(
                                HEADER,
                                Channels.newChannel(gate),
                                ByteBuffer.allocate(64).limit(0),
                                framebuffer));
    }

    private void testClosing(String source, Decoding decoding) {
        run.test(
                "close() returns at once while " + source
                        + " blocks; the update fails after the read, and frees the threads",
                () -> {
                    ScreenDecoder decoder = open();
                    Gate gate = new Gate();
                    CompletableFuture<Void> update = start(() -> decoding.run(decoder, gate));
                    gate.reading.await();
                    decoder.close();
                    TestRun.expect(decoder.isClosed(), "not closed");
                    TestRun.expectEqual(THREADS, ProcessState.workers(), "workers in use");
                    TestRun.expectThrown(
                            DecoderClosedException.class,
                            () -> decoder.decode(HEADER, UNCHANGED, framebuffer));
                    decoder.close();
                    gate.proceed.countDown();
                    expectClosed(update);
                    TestRun.expectEqual(0, ProcessState.workers(), "workers left");
                    TestRun.expectEqual(1L, decoder.statistics().refusals(), "refusals");
                });
    }

    private void otherReads() {
        run.test(
                "closing decoder and socket ends a blocked read, so that a program can end",
                () -> {
                    try (ServerSocket server =
                            new ServerSocket(0, 1, InetAddress.getLoopbackAddress())) {
                        CompletableFuture<Void> update;
                        Socket socket =
                                new Socket(server.getInetAddress(), server.getLocalPort());
                        try (socket;
                                ScreenDecoder decoder = open()) {
                            InputStream in = socket.getInputStream();
                            CountDownLatch started = new CountDownLatch(1);
                            update =
                                    start(
                                            () -> {
                                                started.countDown();
                                                decoder.decode(HEADER, in, 100, framebuffer);
                                            });
                            started.await();
                            Thread.sleep(50); // Most likely it reads by now; either way is right.
                        }
                        expectClosed(update);
                        TestRun.expectEqual(0, ProcessState.workers(), "workers left");
                    }
                });
        run.test(
                "a source may close the decoder that reads from it",
                () -> {
                    ScreenDecoder decoder = open();
                    ReadableByteChannel channel =
                            Channels.newChannel(
                                    new InputStream() {
                                        @Override
                                        public int read() {
                                            decoder.close();
                                            return 0;
                                        }
                                    });
                    TestRun.expectThrown(
                            DecoderClosedException.class,
                            () -> decoder.decode(HEADER, channel, 2, framebuffer));
                    TestRun.expectEqual(0, ProcessState.workers(), "workers left");
                });
    }

    private static ScreenDecoder open() throws IOException {
        TestRun.expectEqual(0, ProcessState.workers(), "workers at the start");
        return ScreenDecoder.open(
                DecoderOptions.builder(Codec.ICT)
                        .protocolVersion(ProtocolVersion.V2)
                        .threads(THREADS)
                        .build());
    }

    private static CompletableFuture<Void> start(TestRun.Body body) {
        CompletableFuture<Void> result = new CompletableFuture<>();
        Thread thread =
                new Thread(
                        () -> {
                            try {
                                body.run();
                                result.complete(null);
                            } catch (Throwable e) {
                                result.completeExceptionally(e);
                            }
                        });
        thread.setDaemon(true);
        thread.start();
        return result;
    }

    private static void expectClosed(CompletableFuture<Void> update) throws Exception {
        try {
            update.get(LIMIT_SECONDS, TimeUnit.SECONDS);
            throw new AssertionError("the update was decoded");
        } catch (ExecutionException e) {
            TestRun.expectEqual(DecoderClosedException.class, e.getCause().getClass(), "thrown");
        }
    }
}
