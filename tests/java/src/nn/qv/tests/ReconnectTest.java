package nn.qv.tests;

import java.io.IOException;
import java.io.InputStream;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.HexFormat;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.ConnectionRecording;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.Recording;
import nn.qv.imagedecoder.ScreenDecoder;

/**
 * One connection after the other, recorded with the same options. Argument: the folder of the case
 * files.
 */
final class ReconnectTest {
    private final RecordingRun run = new RecordingRun();
    private final RecordedConnection connection;

    private ReconnectTest(String cases) throws IOException {
        connection = new RecordedConnection(cases);
    }

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        ReconnectTest tests = new ReconnectTest(arguments[0]);
        tests.sameOptions();
        tests.blockedSource();
        tests.names();
        tests.appending();
        tests.olderVersion();
        tests.spoiledFiles();
        tests.run.finish();
    }

    private void sameOptions() {
        run.test(
                "options with a file serve a reconnect: its updates are appended",
                file -> {
                    DecoderOptions options = connection.options(Codec.LBE).record(file).build();
                    Framebuffer screen = connection.screen();
                    for (int i = 0; i < 3; i++) {
                        try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
                            connection.decode(Codec.LBE, decoder, screen);
                        }
                    }
                    TestRun.expectEqual(
                            "[Update 0, Decoder, Picture, Update 1, Decoder, Picture, Update 2]"
                                    + " COMPLETE",
                            RecordedConnection.entries(file),
                            "entries");
                    RecordedConnection.expectPlays(file, screen);
                    RecordedConnection.expectIndexOf(3, file);
                });
        run.test(
                "they serve one decoder at a time, and the refusal names ConnectionRecording",
                file -> {
                    DecoderOptions options = connection.options(Codec.LBE).record(file).build();
                    try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
                        IOException e =
                                TestRun.expectThrown(
                                        IOException.class, () -> ScreenDecoder.open(options));
                        TestRun.expect(
                                e.getMessage().contains("ConnectionRecording"), e.getMessage());
                        connection.decode(Codec.LBE, decoder, connection.screen());
                    }
                    TestRun.expectEqual(
                            "[Update 0] COMPLETE", RecordedConnection.entries(file), "entries");
                });
        run.test(
                "a connection without updates leaves nothing, and the next one begins the file",
                file -> {
                    ConnectionRecording recording = ConnectionRecording.create(file);
                    connection.open(Codec.ICT, recording).close();
                    TestRun.expect(Files.notExists(file), "there is a file");
                    connection.connect(Codec.LBE, recording);
                    TestRun.expectEqual(
                            "[Update 0] COMPLETE", RecordedConnection.entries(file), "entries");
                });
        run.test(
                "an existing file is neither overwritten nor appended to by create",
                file -> {
                    connection.connect(Codec.LBE, ConnectionRecording.create(file));
                    byte[] before = Files.readAllBytes(file);
                    TestRun.expectThrown(
                            FileAlreadyExistsException.class,
                            () -> connection.open(Codec.LBE, ConnectionRecording.create(file)));
                    expectBytes(before, file);
                });
        run.test(
                "the time of updates goes on from connection to connection",
                file -> {
                    ConnectionRecording recording = ConnectionRecording.create(file);
                    connection.connect(Codec.LBE, recording);
                    Thread.sleep(30);
                    connection.connect(Codec.LBE, recording);
                    List<Long> times = RecordedConnection.times(file);
                    TestRun.expect(
                            times.get(1) - times.get(0) >= 25_000, "microseconds: " + times);
                });
    }

    private void blockedSource() {
        run.test(
                "a decoder closed while its source is blocked does not hold up the next connection",
                file -> {
                    DecoderOptions options = connection.options(Codec.LBE).record(file).build();
                    Framebuffer screen = connection.screen();
                    ScreenDecoder blocked = ScreenDecoder.open(options);
                    CountDownLatch reading = new CountDownLatch(1);
                    CountDownLatch socketClosed = new CountDownLatch(1);
                    InputStream source =
                            new InputStream() {
                                @Override
                                public int read() throws IOException {
                                    reading.countDown();
                                    try {
                                        socketClosed.await();
                                    } catch (InterruptedException e) {
                                        throw new IOException(e);
                                    }
                                    return -1;
                                }
                            };
                    ExecutorService thread = Executors.newSingleThreadExecutor();
                    Future<?> update =
                            thread.submit(
                                    () ->
                                            blocked.decode(
                                                    RecordedConnection.CORNER, source, 9, screen));
                    reading.await();
                    blocked.close();
                    try (ScreenDecoder next = ScreenDecoder.open(options)) {
                        connection.decode(Codec.LBE, next, screen);
                    }
                    socketClosed.countDown();
                    TestRun.expectThrown(ExecutionException.class, update::get);
                    thread.shutdown();
                    RecordedConnection.expectPlays(file, screen);
                    TestRun.expectEqual(1, RecordedConnection.times(file).size(), "updates");
                });
    }

    private void names() {
        run.test(
                "a pattern gives each connection the least number without a file",
                file -> {
                    Path second = file.resolveSibling("50%-2.rcrec");
                    Files.createFile(second);
                    ConnectionRecording recording =
                            ConnectionRecording.perConnection(
                                    file.resolveSibling("50%%-%n.rcrec"));
                    TestRun.expect(recording.file().isEmpty(), "a file before the first decoder");
                    for (String name : List.of("50%-1.rcrec", "50%-3.rcrec")) {
                        connection.connect(Codec.LBE, recording);
                        Path own = file.resolveSibling(name);
                        TestRun.expectEqual(own, recording.file().orElseThrow(), "file");
                        TestRun.expectEqual(
                                "[Update 0] COMPLETE", RecordedConnection.entries(own), "entries");
                    }
                    TestRun.expectEqual(0L, Files.size(second), "bytes of the existing file");
                });
        run.test(
                "decoders that are open together share the connection's file",
                file -> {
                    ConnectionRecording recording =
                            ConnectionRecording.perConnection(file.resolveSibling("%n.rcrec"));
                    Framebuffer screen = connection.screen();
                    try (ScreenDecoder ict = connection.open(Codec.ICT, recording)) {
                        connection.decode(Codec.ICT, ict, screen);
                        try (ScreenDecoder lbe = connection.open(Codec.LBE, recording)) {
                            connection.decode(Codec.LBE, lbe, screen);
                        }
                        connection.decode(Codec.ICT, ict, screen);
                    }
                    RecordedConnection.expectPlays(file.resolveSibling("1.rcrec"), screen);
                    TestRun.expectEqual(1, Scratch.files(file.getParent()).size(), "files");
                });
        run.test(
                "the time in a name is the local one, to the second",
                file -> {
                    ConnectionRecording recording =
                            ConnectionRecording.perConnection(file.resolveSibling("%t-%n"));
                    connection.connect(Codec.LBE, recording);
                    String name = recording.file().orElseThrow().getFileName().toString();
                    TestRun.expect(name.matches("20\\d{6}-[0-2]\\d[0-5]\\d[0-5]\\d-1"), name);
                });
        run.test(
                "a pattern without a number, and one with other letters, are refused",
                file -> {
                    for (String name : List.of("a.rcrec", "%t.rcrec", "%%n", "%n%x", "%n%", "/")) {
                        TestRun.expectThrown(
                                IllegalArgumentException.class,
                                () -> ConnectionRecording.perConnection(Path.of(name)));
                    }
                });
    }

    private void appending() {
        run.test(
                "append continues a recording, with its screen and its index",
                file -> {
                    Framebuffer screen = connection.screen();
                    for (Codec codec : List.of(Codec.LBE, Codec.ICT, Codec.LBE)) {
                        ConnectionRecording recording = ConnectionRecording.append(file);
                        try (ScreenDecoder decoder = connection.open(codec, recording)) {
                            connection.decode(codec, decoder, screen);
                        }
                    }
                    RecordedConnection.expectPlays(file, screen);
                    RecordedConnection.expectIndexOf(3, file);
                    try (Recording recording = Recording.open(file)) {
                        TestRun.expectEqual(2, recording.version(), "version");
                    }
                });
        run.test(
                "append begins an empty file",
                file -> {
                    Files.createFile(file);
                    connection.connect(Codec.LBE, ConnectionRecording.append(file));
                    TestRun.expectEqual(
                            "[Update 0] COMPLETE", RecordedConnection.entries(file), "entries");
                });
        run.test(
                "two recordings do not write one file at a time",
                file -> {
                    connection.connect(Codec.LBE, ConnectionRecording.append(file));
                    ConnectionRecording first = ConnectionRecording.append(file);
                    try (ScreenDecoder decoder = connection.open(Codec.LBE, first)) {
                        IOException e =
                                TestRun.expectThrown(
                                        IOException.class,
                                        () ->
                                                connection.open(
                                                        Codec.LBE,
                                                        ConnectionRecording.append(file)));
                        TestRun.expect(
                                e.getMessage().contains("is being written"), e.getMessage());
                        connection.decode(Codec.LBE, decoder, connection.screen());
                    }
                    RecordedConnection.expectIndexOf(2, file);
                });
        run.test(
                "after 256 decoders the recording ends with the reason, and stays whole",
                file -> {
                    RecordingBytes full =
                            new RecordingBytes(2, RecordingBytes.ICT, RecordingBytes.PIXELS);
                    for (int index = 1; index <= 255; index++) {
                        full.decoder(index, RecordingBytes.LBE);
                    }
                    Files.write(file, full.bytes());
                    ConnectionRecording recording = ConnectionRecording.append(file);
                    connection.connect(Codec.LBE, recording);
                    String reason = recording.failure().orElseThrow().getMessage();
                    TestRun.expect(reason.contains("256 decoders"), reason);
                    TestRun.expect(
                            RecordedConnection.entries(file).endsWith("COMPLETE"), "not whole");
                });
    }

    private void olderVersion() {
        run.test(
                "what is appended to version 1 stays version 1",
                file -> {
                    byte[] before = blankOfVersion1();
                    Files.write(file, before);
                    Framebuffer screen = Framebuffer.argb(16, 16);
                    DecoderOptions options =
                            DecoderOptions.builder(Codec.LBE)
                                    .record(ConnectionRecording.append(file))
                                    .build();
                    try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
                        decoder.decode(
                                RecordedConnection.CORNER, RecordedConnection.UNCHANGED, screen);
                    }
                    byte[] after = Files.readAllBytes(file);
                    TestRun.expectEqual(
                            HexFormat.of().formatHex(before),
                            HexFormat.of().formatHex(after, 0, before.length),
                            "bytes before");
                    TestRun.expectEqual(
                            "[Update 0, Picture, Update 0] COMPLETE",
                            RecordedConnection.entries(file),
                            "entries");
                    int fieldsBytesAtEnd = after.length - (8 + 4 + 2 * 16 + 8 + 4) - 4 - 2 - 36;
                    TestRun.expectEqual(36, (int) after[fieldsBytesAtEnd], "size of the fields");
                    RecordedConnection.expectIndexOf(2, file);
                    RecordedConnection.expectPlays(file, screen);
                });
        run.test(
                "another codec, protocol version or second decoder is refused there",
                file -> {
                    Files.write(file, blankOfVersion1());
                    ConnectionRecording recording = ConnectionRecording.append(file);
                    DecoderOptions.Builder same =
                            DecoderOptions.builder(Codec.LBE).record(recording);
                    DecoderOptions.Builder ict =
                            DecoderOptions.builder(Codec.ICT).record(recording);
                    DecoderOptions.Builder other =
                            DecoderOptions.builder(Codec.LBE)
                                    .protocolVersion(ProtocolVersion.V1)
                                    .record(recording);
                    expectRefused("encode it again, or record to another file", ict);
                    expectRefused("LBE V0 YCBCR_420", other);
                    try (ScreenDecoder decoder = ScreenDecoder.open(same.build())) {
                        expectRefused("holds one decoder alone", same);
                        TestRun.expect(!decoder.isClosed(), "the first one was closed");
                    }
                    TestRun.expectEqual(
                            "[Update 0] COMPLETE", RecordedConnection.entries(file), "entries");
                });
    }

    private static byte[] blankOfVersion1() {
        return new RecordingBytes(1, RecordingBytes.LBE, RecordingBytes.PIXELS)
                .update("")
                .bytes();
    }

    private void spoiledFiles() {
        run.test(
                "the part of an entry at the end of a cut recording is dropped",
                file -> {
                    connection.connect(Codec.LBE, ConnectionRecording.create(file));
                    byte[] whole = Files.readAllBytes(file);
                    Files.write(file, Arrays.copyOf(whole, whole.length - 5));
                    connection.connect(Codec.LBE, ConnectionRecording.append(file));
                    TestRun.expectEqual(
                            "[Update 0, Decoder, Picture, Update 1] COMPLETE",
                            RecordedConnection.entries(file),
                            "entries");
                    RecordedConnection.expectIndexOf(2, file);
                });
        run.test(
                "append refuses what is damaged, has a wrong size amid it, or is no recording",
                file -> {
                    int firstUpdate = 40;
                    byte[] wrongPayload = blankOfVersion1();
                    wrongPayload[wrongPayload.length - 6] ^= 1;
                    byte[] wrongSize =
                            new RecordingBytes(2, RecordingBytes.LBE, RecordingBytes.PIXELS)
                                    .update("00000000")
                                    .update("00000000")
                                    .bytes();
                    wrongSize[firstUpdate + 6] = 0x7F; // Seems to be cut amid the first one.
                    for (byte[] spoiled :
                            List.of(wrongPayload, wrongSize, "something else".getBytes())) {
                        Files.write(file, spoiled);
                        TestRun.expectThrown(
                                IOException.class,
                                () ->
                                        ScreenDecoder.open(
                                                DecoderOptions.builder(Codec.LBE)
                                                        .record(ConnectionRecording.append(file))
                                                        .build()));
                        expectBytes(spoiled, file);
                    }
                });
    }

    private static void expectRefused(String message, DecoderOptions.Builder options)
            throws Exception {
        IOException e =
                TestRun.expectThrown(
                        IOException.class, () -> ScreenDecoder.open(options.build()));
        TestRun.expect(e.getMessage().contains(message), e.getMessage());
    }

    private static void expectBytes(byte[] expected, Path file) throws IOException {
        TestRun.expect(Arrays.equals(expected, Files.readAllBytes(file)), "other bytes");
    }
}
