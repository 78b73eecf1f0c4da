package nn.qv.tests;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.UncheckedIOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.HexFormat;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.ConnectionRecording;
import nn.qv.imagedecoder.DecoderInUseException;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateHeader;

/** Several decoders in one recording. Argument: the folder of the case files. */
final class ConnectionRecordingTest {
    private final RecordingRun run = new RecordingRun();
    private final RecordedConnection connection;

    private ConnectionRecordingTest(String cases) throws IOException {
        connection = new RecordedConnection(cases);
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        ConnectionRecordingTest tests = new ConnectionRecordingTest(arguments[0]);
        tests.decoders();
        tests.threads();
        tests.stopping();
        tests.run.finish();
    }

    private interface Body {
        void run(Path file, ConnectionRecording recording, ScreenDecoder ict, ScreenDecoder lbe)
                throws Exception;
    }

    /** A test with a decoder of each codec that record to a new file. */
    private void test(String sentence, Body body) {
        run.test(
                sentence,
                file -> {
                    ConnectionRecording recording = ConnectionRecording.create(file);
                    try (ScreenDecoder ict = connection.open(Codec.ICT, recording);
                            ScreenDecoder lbe = connection.open(Codec.LBE, recording)) {
                        body.run(file, recording, ict, lbe);
                    }
                });
    }

    private void decoders() {
        test(
                "both codecs of a connection are recorded in one file and play on one screen",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    connection.decode(Codec.LBE, lbe, screen);
                    connection.decode(Codec.ICT, ict, screen);
                    connection.decode(Codec.LBE, lbe, screen);
                    ict.close();
                    connection.decode(Codec.LBE, lbe, screen);
                    lbe.close();
                    TestRun.expectEqual(
                            "[Update 0, Decoder, Update 1, Update 0, Update 0] COMPLETE",
                            RecordedConnection.entries(file),
                            "entries");
                    RecordedConnection.expectPlays(file, screen);
                    RecordedConnection.expectIndexOf(4, file);
                });
        run.test(
                "the file has the documented bytes",
                file -> {
                    ConnectionRecording recording = ConnectionRecording.create(file);
                    DecoderOptions padded =
                            DecoderOptions.builder(Codec.ICT)
                                    .protocolVersion(ProtocolVersion.V2)
                                    .threads(2)
                                    .record(recording)
                                    .build();
                    try (ScreenDecoder ict = ScreenDecoder.open(padded);
                            ScreenDecoder lbe =
                                    ScreenDecoder.open(
                                            DecoderOptions.builder(Codec.LBE)
                                                    .record(recording)
                                                    .build())) {
                        Framebuffer screen = Framebuffer.argb(16, 16);
                        byte[] longCount = {-1, -1, (byte) 0xC0};
                        ict.decode(new UpdateHeader(0, 0, 16, 16, 10), longCount, screen);
                        lbe.decode(
                                RecordedConnection.CORNER, RecordedConnection.UNCHANGED, screen);
                    }
                    TestRun.expectEqual(
                            timeless(RecordingDecodersTest.example()),
                            timeless(Files.readAllBytes(file)),
                            "bytes");
                });
        test(
                "contrast and post-processing are those of each decoder",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    ict.setContrast(80);
                    lbe.setPostprocessing(true);
                    connection.decode(Codec.ICT, ict, screen);
                    connection.decode(Codec.LBE, lbe, screen);
                    connection.decode(Codec.ICT, ict, screen);
                    TestRun.expectEqual(
                            "[Update 0, Settings, Decoder, Update 1, Settings, Update 0] COMPLETE",
                            RecordedConnection.entries(file),
                            "entries");
                    RecordedConnection.expectPlays(file, screen);
                });
        test(
                "each decoder may have a framebuffer of its own",
                (file, recording, ict, lbe) -> {
                    Framebuffer wide = Framebuffer.argb(connection.screen().width() + 16, 256);
                    connection.decode(Codec.ICT, ict, connection.screen());
                    connection.decode(Codec.LBE, lbe, wide);
                    RecordedConnection.expectPlays(file, wide);
                });
        test(
                "planes beside an LBE decoder end the recording, with the reason",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    connection.decode(Codec.LBE, lbe, screen);
                    ict.decode(
                            RecordedConnection.CORNER,
                            RecordedConnection.UNCHANGED,
                            Framebuffer.planes(16, 16, ChromaSubsampling.YCBCR_420));
                    String reason = recording.failure().orElseThrow().getMessage();
                    TestRun.expect(
                            reason.contains("Planes of YCBCR_420 cannot be recorded beside"),
                            reason);
                    RecordedConnection.expectPlays(file, screen);
                });
    }

    /** Without what depends on time: the start, the updates' times, and the checksums over them. */
    private static String timeless(byte[] recording) {
        int header = 40;
        int decoder = header + 55;
        int update = decoder + 24;
        int index = update + 54;
        int recordHeader = 8;
        clear(recording, 24, 8);
        clear(recording, header - 4, 4);
        clear(recording, header + recordHeader + 16, 8);
        clear(recording, decoder - 4, 4);
        clear(recording, update + recordHeader + 16, 8);
        clear(recording, index - 4, 4);
        clear(recording, index + recordHeader + 12, 8);
        clear(recording, index + recordHeader + 28, 8);
        clear(recording, recording.length - 4, 4);
        return HexFormat.of().formatHex(recording);
    }

    private static void clear(byte[] bytes, int from, int count) {
        Arrays.fill(bytes, from, from + count, (byte) 0);
    }

    private void threads() {
        test(
                "decoders may be driven by a thread each; their updates follow one another",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    ExecutorService threads = Executors.newFixedThreadPool(2);
                    Future<?> first =
                            threads.submit(() -> decodeOften(Codec.ICT, ict, screen));
                    Future<?> second =
                            threads.submit(() -> decodeOften(Codec.LBE, lbe, screen));
                    first.get();
                    second.get();
                    threads.shutdown();
                    RecordedConnection.expectPlays(file, screen);
                });
        test(
                "a source that calls another decoder of the recording gets an exception",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    InputStream source =
                            new ByteArrayInputStream(RecordedConnection.UNCHANGED) {
                                @Override
                                public synchronized int read(byte[] to, int from, int count) {
                                    try {
                                        connection.decode(Codec.LBE, lbe, screen);
                                    } catch (IOException e) {
                                        throw new UncheckedIOException(e);
                                    }
                                    return super.read(to, from, count);
                                }
                            };
                    DecoderInUseException e =
                            TestRun.expectThrown(
                                    DecoderInUseException.class,
                                    () -> ict.decode(RecordedConnection.CORNER, source, screen));
                    TestRun.expect(e.getMessage().contains("same recording"), e.getMessage());
                    connection.decode(Codec.LBE, lbe, screen);
                    TestRun.expectEqual(
                            "[Update 0, Decoder, Update 1] COMPLETE",
                            RecordedConnection.entries(file),
                            "the failed update and the good one");
                });
    }

    private Void decodeOften(Codec codec, ScreenDecoder decoder, Framebuffer screen)
            throws IOException {
        for (int i = 0; i < 50; i++) {
            connection.decode(codec, decoder, screen);
        }
        return null;
    }

    private void stopping() {
        test(
                "a recording that is closed is complete, and decoding goes on",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    connection.decode(Codec.ICT, ict, screen);
                    Framebuffer shown = connection.screen();
                    shown.pixels().put(screen.pixels());
                    recording.close();
                    recording.close();
                    RecordedConnection.expectIndexOf(1, file);
                    connection.decode(Codec.LBE, lbe, screen);
                    RecordedConnection.expectPlays(file, shown);
                    TestRun.expect(recording.failure().isEmpty(), "a failure");
                    IOException e =
                            TestRun.expectThrown(
                                    IOException.class,
                                    () -> connection.open(Codec.ICT, recording));
                    TestRun.expect(e.getMessage().endsWith("is closed"), e.getMessage());
                });
        test(
                "closing it while an update is decoded does not wait, and leaves the update in",
                (file, recording, ict, lbe) -> {
                    Framebuffer screen = connection.screen();
                    connection.decode(Codec.LBE, lbe, screen);
                    CountDownLatch reading = new CountDownLatch(1);
                    CountDownLatch stopped = new CountDownLatch(1);
                    InputStream source =
                            new ByteArrayInputStream(RecordedConnection.UNCHANGED) {
                                @Override
                                public synchronized int read(byte[] to, int from, int count) {
                                    reading.countDown();
                                    awaitUninterrupted(stopped);
                                    return super.read(to, from, count);
                                }
                            };
                    ExecutorService thread = Executors.newSingleThreadExecutor();
                    Future<?> update =
                            thread.submit(
                                    () -> ict.decode(RecordedConnection.CORNER, source, screen));
                    reading.await();
                    recording.close();
                    stopped.countDown();
                    update.get();
                    thread.shutdown();
                    connection.decode(Codec.LBE, lbe, screen);
                    TestRun.expectEqual(
                            "[Update 0, Decoder, Update 1] COMPLETE",
                            RecordedConnection.entries(file),
                            "entries");
                    RecordedConnection.expectIndexOf(2, file);
                });
    }

    private static void awaitUninterrupted(CountDownLatch latch) {
        try {
            latch.await();
        } catch (InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }
}
