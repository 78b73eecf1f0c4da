package nn.qv.tests;

import java.io.IOException;
import java.util.List;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.internal.NativeCodec;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderICTNative;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderLBENative;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;

/** How native objects come and go. Arguments: the folder of the case files, the codec. */
final class CreationTest {
    private final TestRun run = new TestRun();
    private final NativeCodec codec;
    private final GoodUpdate good;

    private CreationTest(NativeCodec codec, GoodUpdate good) {
        this.codec = codec;
        this.good = good;
    }

    public static void main(String[] arguments) throws IOException {
        NativeLoader.load();
        NativeCodec codec = NativeCodec.valueOf(arguments[1]);
        CreationTest tests = new CreationTest(codec, GoodUpdate.load(arguments[0], codec));
        tests.objects();
        tests.refusals();
        tests.threadingModes();
        tests.run.finish();
    }

    private void objects() {
        run.test(
                "the interface has version 9",
                () ->
                        TestRun.expectEqual(
                                9, NativeImageDecodingHelper.getVersion(), "getVersion()"));
        run.test("loading the library twice is fine", NativeLoader::load);
        run.test(
                "deleting handle 0 does nothing",
                () -> {
                    NativeImageDecodingHelper.deleteLogger(0);
                    NativeImageDecodingHelper.deleteStreambuffer(0);
                    NativeImageDecodingHelper.deleteRCRenderer(0);
                    ImageDecoderICTNative.deleteImageDecoder(0);
                    ImageDecoderLBENative.deleteImageDecoder(0);
                });
    }

    private void refusals() {
        expectRefused("protocol version 3", 0, 3, 0);
        expectRefused("protocol version -1", 0, -1, 0);
        expectRefused("chroma subsampling 3", 0, 1, 3);
        expectRefused("chroma subsampling -1", 0, 1, -1);
        expectRefused("1025 threads", 1025, 2, 0);
        expectRefused("-1 threads", -1, 2, 0);
    }

    private void threadingModes() {
        expectLogged("singlethreaded without threads", 0, 2, "Using singlethreaded %s decoder.");
        expectLogged("singlethreaded before version 2", 2, 1, "Using singlethreaded %s decoder.");
        expectLogged(
                "multithreaded with one thread",
                1,
                2,
                "Using multithreaded parallel %s decoder with 1 threads.");
    }

    private void expectRefused(String what, int threads, int protocolVersion, int chroma) {
        run.test(
                what + " fails the creation with an IOException, and a good decoder follows",
                () -> {
                    MemoryFeed feed = new MemoryFeed();
                    RawOptions options =
                            new RawOptions(codec, protocolVersion, chroma, threads);
                    IOException refusal =
                            TestRun.expectThrown(
                                    IOException.class,
                                    () -> new RawDecoder(feed, options).close());
                    TestRun.expectEqual(
                            "JNI init IImageDecoder failed", refusal.getMessage(), "message");
                    try (RawDecoder decoder = good.decoder(feed)) {
                        good.expectDecodes(decoder, good.framebuffer());
                    }
                });
    }

    private void expectLogged(String what, int threads, int protocolVersion, String format) {
        run.test(
                "a new decoder logs that it is " + what,
                () -> {
                    MemoryFeed feed = new MemoryFeed();
                    new RawDecoder(feed, new RawOptions(codec, protocolVersion, 0, threads))
                            .close();
                    List<String> log = feed.takeLog();
                    TestRun.expect(
                            log.contains(String.format(format, codec)), "not in the log: " + log);
                });
    }
}
