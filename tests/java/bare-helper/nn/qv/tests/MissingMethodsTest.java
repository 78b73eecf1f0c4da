package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderICTNative;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;
import nn.qv.imagedecoder.NativeLoader;

/** What becomes of a viewer whose helper lacks a method that the library looks up by name. */
final class MissingMethodsTest {
    private static final int SIDE = 32;

    /** A logger without {@code print}, a stream without {@code read} and {@code stall}. */
    private static final class Bare extends NativeImageDecodingHelper {}

    private static final class Logger extends NativeImageDecodingHelper {
        @SuppressWarnings("unused") // The library calls it.
        void print(String line) {}
    }

    /** Delivers one update without blocks, again and again. */
    private static final class Stream extends NativeImageDecodingHelper {
        @SuppressWarnings("unused") // The library calls it.
        int read(byte[] target, int capacity) {
            target[0] = -1;
            target[1] = -1;
            return 2;
        }
    }

    private MissingMethodsTest() {}

    public static void main(String[] arguments) {
        NativeLoader.load();
        TestRun run = new TestRun();
        run.test(
                "a log line for a helper without print leaves a NoSuchMethodError",
                () -> {
                    long logger = new Bare().createLogger();
                    NoSuchMethodError error =
                            TestRun.expectThrown(
                                    NoSuchMethodError.class,
                                    () -> NativeImageDecodingHelper.createRCRenderer(logger));
                    expectNames("print", error);
                });
        run.test(
                "an update from a helper without read leaves a NoSuchMethodError",
                () -> {
                    NoSuchMethodError error =
                            TestRun.expectThrown(
                                    NoSuchMethodError.class, () -> decodeEmptyFrom(new Bare()));
                    expectNames("read", error);
                });
        run.test(
                "a helper without stall serves an update that uses up its bytes",
                () -> TestRun.expectEqual(0L, decodeEmptyFrom(new Stream()), "result"));
        run.finish();
    }

    private static void expectNames(String method, NoSuchMethodError error) {
        TestRun.expect(error.getMessage().contains(method), "message: " + error.getMessage());
    }

    /** Decodes an update; the objects are deleted however it ends. */
    private static long decodeEmptyFrom(NativeImageDecodingHelper source) throws IOException {
        long logger = new Logger().createLogger();
        long stream = source.createStreambuffer(logger);
        long renderer = NativeImageDecodingHelper.createRCRenderer(logger);
        long decoder = ImageDecoderICTNative.createImageDecoder(renderer, stream, logger, 0, 0, 0);
        try {
            ByteBuffer argb = ByteBuffer.allocateDirect(4 * SIDE * SIDE);
            byte[] transfer = new byte[2];
            return ImageDecoderICTNative.performICT(
                    transfer.length, argb, null, null, null, transfer, 7, SIDE, SIDE, 0, 0, 0, 0,
                    SIDE, SIDE, stream, renderer, decoder, logger);
        } finally {
            ImageDecoderICTNative.deleteImageDecoder(decoder);
            NativeImageDecodingHelper.deleteStreambuffer(stream);
            NativeImageDecodingHelper.deleteRCRenderer(renderer);
            NativeImageDecodingHelper.deleteLogger(logger);
        }
    }
}
