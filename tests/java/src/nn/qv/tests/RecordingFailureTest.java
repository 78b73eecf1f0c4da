package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.logging.Level;
import java.util.stream.Collectors;
import java.util.stream.IntStream;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.ConnectionRecording;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;

/**
 * A recording that cannot be written any further. Arguments: the folder of the case files, the
 * class path, the shared object.
 */
final class RecordingFailureTest {
    /** A file of which nothing can be written. */
    private static final Path FULL = Path.of("/dev/full");

    private static final int HEADER_BYTES = 40;
    private static final int UPDATE_BYTES = 8 + 40 + RecordedConnection.UNCHANGED.length + 4;

    private final LogCapture log = LogCapture.begin();
    private final RecordingRun run = new RecordingRun();
    private final RecordedConnection connection;
    private final String classPath;
    private final String object;

    private RecordingFailureTest(String[] arguments) throws IOException {
        connection = new RecordedConnection(arguments[0]);
        classPath = arguments[1];
        object = arguments[2];
    }

    public static void main(String[] arguments) throws IOException {
        RecordingFailureTest tests = new RecordingFailureTest(arguments);
        tests.fullDevice();
        tests.listeners();
        tests.limitedFile();
        tests.run.finish();
    }

    private void fullDevice() {
        run.test(
                "a full disk ends the recording, whose failure can be read, and decoding goes on",
                file -> {
                    ConnectionRecording recording = ConnectionRecording.append(FULL);
                    Framebuffer screen = connection.screen();
                    Framebuffer unrecorded = connection.screen();
                    try (ScreenDecoder decoder = connection.open(Codec.LBE, recording);
                            ScreenDecoder other =
                                    ScreenDecoder.open(connection.options(Codec.LBE).build())) {
                        TestRun.expect(decoder.recordingFailure().isEmpty(), "fails too early");
                        log.take(Level.WARNING);
                        for (int i = 0; i < 3; i++) {
                            connection.decode(Codec.LBE, decoder, screen);
                            connection.decode(Codec.LBE, other, unrecorded);
                            TestRun.expectEqual(unrecorded.pixels(), screen.pixels(), "pixels");
                            expectFull(decoder.recordingFailure().orElseThrow());
                            expectFull(recording.failure().orElseThrow());
                        }
                        TestRun.expectEqual(1, log.take(Level.WARNING).size(), "warnings");
                        TestRun.expect(other.recordingFailure().isEmpty(), "not recorded at all");
                    }
                    expectFull(recording.failure().orElseThrow());
                    TestRun.expect(Files.exists(FULL), "the device is gone");
                });
        run.test(
                "the next connection tries again",
                file -> {
                    Path link = Files.createSymbolicLink(file, FULL);
                    ConnectionRecording recording = ConnectionRecording.append(link);
                    connection.connect(Codec.LBE, recording);
                    expectFull(recording.failure().orElseThrow());
                    Files.delete(link);
                    connection.connect(Codec.LBE, recording);
                    TestRun.expect(recording.failure().isEmpty(), "the old failure");
                    TestRun.expectEqual(
                            "[Update 0] COMPLETE", RecordedConnection.entries(file), "entries");
                });
    }

    private static void expectFull(IOException failure) {
        TestRun.expectEqual(
                "No space left on device", failure.getCause().getMessage(), "the cause");
        TestRun.expect(failure.getMessage().startsWith("The recording /"), failure.getMessage());
    }

    private void listeners() {
        run.test(
                "each decoder's listener is called once, on the thread that decodes",
                file -> {
                    List<String> calls = new ArrayList<>();
                    ConnectionRecording recording = ConnectionRecording.append(FULL);
                    try (ScreenDecoder ict = openListening(Codec.ICT, recording, calls);
                            ScreenDecoder lbe = openListening(Codec.LBE, recording, calls)) {
                        Framebuffer screen = connection.screen();
                        connection.decode(Codec.ICT, ict, screen);
                        TestRun.expectEqual("[ICT on main]", calls.toString(), "calls");
                        connection.decode(Codec.ICT, ict, screen);
                        connection.decode(Codec.LBE, lbe, screen);
                        connection.decode(Codec.LBE, lbe, screen);
                    }
                    TestRun.expectEqual("[ICT on main, LBE on main]", calls.toString(), "calls");
                });
        run.test(
                "a listener may use the decoder, and what it throws does not reach the viewer",
                file -> {
                    List<ScreenDecoder> decoders = new ArrayList<>();
                    decoders.add(
                            ScreenDecoder.open(
                                    connection
                                            .options(Codec.LBE)
                                            .record(ConnectionRecording.append(FULL))
                                            .onRecordingFailure(
                                                    e -> {
                                                        decoders.get(0).close();
                                                        throw new IllegalStateException();
                                                    })
                                            .build()));
                    connection.decode(Codec.LBE, decoders.get(0), connection.screen());
                    TestRun.expect(decoders.get(0).isClosed(), "still open");
                });
    }

    private ScreenDecoder openListening(
            Codec codec, ConnectionRecording recording, List<String> calls) throws IOException {
        return ScreenDecoder.open(
                connection
                        .options(codec)
                        .record(recording)
                        .onRecordingFailure(
                                e -> {
                                    expectFull(e);
                                    calls.add(codec + " on " + Thread.currentThread().getName());
                                })
                        .build());
    }

    /** In a process whose files cannot grow beyond a limit: a write at the limit is cut short. */
    private void limitedFile() {
        run.test(
                "an update that was written in part is cut off",
                file -> {
                    int whole = HEADER_BYTES + 7 * UPDATE_BYTES;
                    record(file, 10, whole + 20)
                            .expectSays("decoded 6\ntold: File too large\n"
                                    + "decoded 7\ndecoded 8\ndecoded 9\nfailure: true\n");
                    TestRun.expectEqual((long) whole, Files.size(file), "size");
                    TestRun.expectEqual(updates(7), RecordedConnection.entries(file), "entries");
                });
        run.test(
                "an index that was written in part is cut off, which closing reports",
                file -> {
                    int whole = HEADER_BYTES + 10 * UPDATE_BYTES;
                    record(file, 10, whole + 10)
                            .expectSays("decoded 9\ntold: File too large\nfailure: true\n");
                    TestRun.expectEqual((long) whole, Files.size(file), "size");
                    TestRun.expectEqual(updates(10), RecordedConnection.entries(file), "entries");
                });
        run.test(
                "a file without a whole header is deleted",
                file -> {
                    record(file, 1, HEADER_BYTES - 10).expectSays("told: File too large");
                    TestRun.expect(Files.notExists(file), "there is a file");
                });
    }

    private static String updates(int count) {
        return IntStream.range(0, count)
                .mapToObj(i -> "Update 0")
                .collect(Collectors.joining(", ", "[", "] COMPLETE"));
    }

    private ChildJvm.Result record(Path file, int updates, int limitBytes) throws Exception {
        return new ChildJvm(Path.of(System.getProperty("java.home")))
                .within("prlimit", "--fsize=" + limitBytes)
                .option("-XX:-UsePerfData", "-cp", classPath)
                .property("nn.qv.imagedecoder.path", object)
                .run(
                        "nn.qv.tests.RecordingFailureProbe",
                        file.toString(),
                        Integer.toString(updates))
                .expectStatus(0);
    }
}
