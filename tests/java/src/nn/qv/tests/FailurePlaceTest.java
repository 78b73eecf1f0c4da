package nn.qv.tests;

import java.io.IOException;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;

/**
 * What the message of a failed update says about the place: the bytes that it names decide the
 * failure, whatever follows them. Argument: the folder of the case files.
 */
final class FailurePlaceTest {
    private static final Pattern PLACE = Pattern.compile("within its first (\\d+) bytes: ");
    private static final int FLIPS = 40;
    private static final long SEED = 13;

    private final Random random = new Random(SEED);
    private int failures;

    private FailurePlaceTest() {}

    public static void main(String[] arguments) throws IOException {
        LogCapture.begin();
        List<CaseFile> lives =
                CaseFile.loadAll(Path.of(arguments[0])).stream()
                        .filter(ViewerCasesTest::fitsViewer)
                        .toList();
        TestRun run = new TestRun();
        FailurePlaceTest tests = new FailurePlaceTest();
        run.test(
                "a corrupt update fails again when all bytes after the named ones change",
                () -> {
                    for (CaseFile life : lives) {
                        tests.flipBits(life);
                    }
                    TestRun.expect(tests.failures >= 100, "only " + tests.failures);
                });
        run.finish();
    }

    private void flipBits(CaseFile life) throws IOException {
        Update update = life.steps().get(0).update();
        Framebuffer framebuffer = ViewerCasesTest.framebuffer(life);
        try (ScreenDecoder decoder = ScreenDecoder.open(life.options().forViewer().build())) {
            for (int i = 0; i < FLIPS; i++) {
                byte[] data = update.data().clone();
                Bits.flip(data, random.nextInt(8 * data.length));
                UpdateException failure = failureOf(decoder, update, data, framebuffer);
                if (failure != null && failure.reason() == UpdateException.Reason.CORRUPT) {
                    failures++;
                    int bytes = namedBytes(failure);
                    TestRun.expect(bytes <= data.length, failure.getMessage());
                    expectSame(life.name(), decoder, update, others(data, bytes), framebuffer);
                }
            }
        }
    }

    private static UpdateException failureOf(
            ScreenDecoder decoder, Update update, byte[] data, Framebuffer framebuffer) {
        try {
            decoder.decode(update.header(), data, framebuffer);
            return null;
        } catch (UpdateException e) {
            return e;
        }
    }

    private static int namedBytes(UpdateException failure) {
        Matcher matcher = PLACE.matcher(failure.getMessage());
        TestRun.expect(matcher.find(), failure.getMessage());
        return Integer.parseInt(matcher.group(1));
    }

    /** Other bytes from a place on, and some more of them. */
    private byte[] others(byte[] data, int from) {
        byte[] tail = new byte[data.length + 16 - from];
        random.nextBytes(tail);
        byte[] changed = Arrays.copyOf(data, data.length + 16);
        System.arraycopy(tail, 0, changed, from, tail.length);
        return changed;
    }

    private static void expectSame(
            String name,
            ScreenDecoder decoder,
            Update update,
            byte[] data,
            Framebuffer framebuffer) {
        UpdateException again = failureOf(decoder, update, data, framebuffer);
        TestRun.expect(again != null, name + " decodes with other bytes after the named ones");
        TestRun.expectEqual(UpdateException.Reason.CORRUPT, again.reason(), name);
    }
}
