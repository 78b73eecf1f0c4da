package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.util.Arrays;
import java.util.logging.Level;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateHeader;
import nn.qv.imagedecoder.internal.NativeCodec;

/** What the tests of a viewer's decoder share: a codec and an update of it with known results. */
abstract class ScreenDecoderFixture {
    /** An update of 16x16 pixels without a coded macroblock, of protocol version 0. */
    static final byte[] UNCHANGED = {-1, -1};

    static final UpdateHeader CORNER = new UpdateHeader(0, 0, 16, 16, 7);

    final TestRun run = new TestRun();
    final LogCapture log = LogCapture.begin();
    final GoodUpdate good;
    final Codec codec;

    /** From a program's arguments: the folder of the case files, the codec. */
    ScreenDecoderFixture(String[] arguments) throws IOException {
        NativeLoader.load();
        codec = Codec.valueOf(arguments[1]);
        good = GoodUpdate.load(arguments[0], NativeCodec.valueOf(arguments[1]));
    }

    interface Body {
        void run(ScreenDecoder decoder, Framebuffer framebuffer) throws Exception;
    }

    /** A test with a decoder for the good update and a framebuffer of its size. */
    final void test(String sentence, Body body) {
        run.test(
                sentence,
                () -> {
                    try (ScreenDecoder decoder = open()) {
                        body.run(decoder, framebuffer());
                    }
                });
    }

    final ScreenDecoder open() throws IOException {
        ScreenDecoder decoder = ScreenDecoder.open(options().build());
        log.take(Level.FINE);
        return decoder;
    }

    final DecoderOptions.Builder options() {
        return good.life()
                .options()
                .forViewer()
                .contrast(good.life().contrast())
                .postprocessing(good.life().postprocessing());
    }

    final Framebuffer framebuffer() {
        return Framebuffer.argb(good.life().width(), good.life().height());
    }

    final UpdateHeader header() {
        return good.step().update().header();
    }

    final byte[] data() {
        return good.step().update().data();
    }

    /** The good update's bytes, between others. */
    final byte[] dataBetween(int before, int behind) {
        byte[] own = Arrays.copyOf(data(), good.step().consumedBytes());
        byte[] bytes = new byte[before + own.length + behind];
        System.arraycopy(own, 0, bytes, before, own.length);
        return bytes;
    }

    final void expectDecodes(ScreenDecoder decoder) throws IOException {
        Framebuffer framebuffer = framebuffer();
        expectGood(decoder.decode(header(), data(), framebuffer), framebuffer);
    }

    /** The case file's result is packed: unpacks it by the rule of its description. */
    final void expectGood(ChangedRectangle changed, Framebuffer framebuffer) {
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

    static void expectRefused(String message, TestRun.Body body) throws Exception {
        IllegalArgumentException e =
                TestRun.expectThrown(IllegalArgumentException.class, body);
        TestRun.expect(e.getMessage().contains(message), e.getMessage());
    }
}
