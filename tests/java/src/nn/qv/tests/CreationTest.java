package nn.qv.tests;

import java.io.IOException;
import java.util.List;
import nn.qv.example.Codec;
import nn.qv.example.DecoderOptions;
import nn.qv.example.UpdateDecoder;
import nn.qv.example.UpdateFeed;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderICTNative;
import nn.qv.rccore.impl.rfb.img.hive.ImageDecoderLBENative;
import nn.qv.rccore.impl.rfb.img.hive.NativeImageDecodingHelper;
import nn.qv.rccore.impl.rfb.img.hive.NativeLibrary;

/** How native objects come and go. Arguments: the folder of the case files, the codec. */
final class CreationTest {
    private final TestRun run = new TestRun();
    private final Codec codec;
    private final GoodUpdate good;

    private CreationTest(Codec codec, GoodUpdate good) {
        this.codec = codec;
        this.good = good;
    }

    public static void main(String[] arguments) throws IOException {
        NativeLibrary.load();
        Codec codec = Codec.valueOf(arguments[1]);
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
        run.test("loading the library twice is fine", NativeLibrary::load);
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
                    UpdateFeed feed = new UpdateFeed();
                    DecoderOptions options =
                            new DecoderOptions(codec, protocolVersion, chroma, threads);
                    IOException refusal =
                            TestRun.expectThrown(
                                    IOException.class,
                                    () -> new UpdateDecoder(feed, options).close());
                    TestRun.expectEqual(
                            "JNI init IImageDecoder failed", refusal.getMessage(), "message");
                    try (UpdateDecoder decoder = good.decoder(feed)) {
                        good.expectDecodes(decoder, good.framebuffer());
                    }
                });
    }

    private void expectLogged(String what, int threads, int protocolVersion, String format) {
        run.test(
                "a new decoder logs that it is " + what,
                () -> {
                    UpdateFeed feed = new UpdateFeed();
                    new UpdateDecoder(feed, new DecoderOptions(codec, protocolVersion, 0, threads))
                            .close();
                    List<String> log = feed.takeLog();
                    TestRun.expect(
                            log.contains(String.format(format, codec)), "not in the log: " + log);
                });
    }
}
