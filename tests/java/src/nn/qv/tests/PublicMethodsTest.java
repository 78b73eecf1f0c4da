package nn.qv.tests;

import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.InputStream;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.lang.reflect.Parameter;
import java.nio.ByteBuffer;
import java.nio.channels.Channels;
import java.nio.channels.ReadableByteChannel;
import java.nio.file.Path;
import java.util.Locale;
import java.util.Map;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.RecordLayout;
import nn.qv.imagedecoder.ScreenDecoder;
import nn.qv.imagedecoder.UpdateException;
import nn.qv.imagedecoder.UpdateHeader;

/** What all public methods of a viewer's classes do alike: null arguments, texts, numbers. */
final class PublicMethodsTest {
    private static final UpdateHeader HEADER = new UpdateHeader(0, 0, 16, 16, 7);
    private static final byte[] UNCHANGED = {-1, -1};

    private final TestRun run = new TestRun();
    private final Framebuffer framebuffer = Framebuffer.argb(32, 16);
    private final DecoderOptions options = DecoderOptions.builder(Codec.ICT).build();

    private PublicMethodsTest() {}

    public static void main(String[] arguments) {
        LogCapture.begin();
        PublicMethodsTest tests = new PublicMethodsTest();
        tests.nulls();
        tests.texts();
        tests.numbers();
        tests.run.finish();
    }

    private void nulls() {
        run.test(
                "an argument that is null is named by the exception",
                () -> {
                    int checked = 0;
                    try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
                        for (Object object :
                                new Object[] {
                                    decoder,
                                    framebuffer,
                                    ChangedRectangle.EMPTY,
                                    DecoderOptions.builder(Codec.ICT),
                                    options
                                }) {
                            checked += expectNullsNamed(object);
                        }
                        TestRun.expectEqual(0L, decoder.statistics().updates(), "updates");
                    }
                    TestRun.expect(checked >= 20, "only " + checked + " parameters");
                });
    }

    /** Passes null for each parameter that takes it; returns how many there are. */
    private int expectNullsNamed(Object object) throws IllegalAccessException {
        int checked = 0;
        for (Method method : object.getClass().getMethods()) {
            boolean own = method.getDeclaringClass() == object.getClass();
            boolean inherited = method.getName().equals("equals"); // Where null is right.
            Parameter[] parameters = method.getParameters();
            for (int i = 0; own && !inherited && i < parameters.length; i++) {
                if (!parameters[i].getType().isPrimitive()) {
                    expectNullNamed(object, method, i);
                    checked++;
                }
            }
        }
        return checked;
    }

    private void expectNullNamed(Object object, Method method, int index)
            throws IllegalAccessException {
        Object[] arguments = new Object[method.getParameterCount()];
        for (int i = 0; i < arguments.length; i++) {
            arguments[i] = i == index ? null : sample(method.getParameterTypes()[i]);
        }
        String name = method.getParameters()[index].getName();
        try {
            method.invoke(Modifier.isStatic(method.getModifiers()) ? null : object, arguments);
            throw new AssertionError(method + " takes null for " + name);
        } catch (InvocationTargetException e) {
            TestRun.expectEqual(NullPointerException.class, e.getCause().getClass(), "" + method);
            TestRun.expectEqual(name, e.getCause().getMessage(), method + " names");
        }
    }

    private Object sample(Class<?> type) {
        ByteBuffer buffer = ByteBuffer.allocate(64).limit(0);
        InputStream in = new ByteArrayInputStream(UNCHANGED);
        Map<Class<?>, Object> samples =
                Map.of(
                        int.class, 2,
                        byte[].class, UNCHANGED,
                        ByteBuffer.class, buffer,
                        InputStream.class, in,
                        ReadableByteChannel.class, Channels.newChannel(in),
                        UpdateHeader.class, HEADER,
                        Framebuffer.class, framebuffer,
                        ChangedRectangle.class, ChangedRectangle.EMPTY,
                        BufferedImage.class,
                                new BufferedImage(32, 16, BufferedImage.TYPE_INT_RGB));
        Object sample = samples.get(type);
        TestRun.expect(sample != null, "no sample of " + type);
        return sample;
    }

    private void texts() {
        run.test(
                "a framebuffer's text has its size and what a pixel is",
                () -> {
                    TestRun.expectEqual(
                            "Framebuffer[32x16, ARGB32]", framebuffer.toString(), "pixels");
                    TestRun.expectEqual(
                            "Framebuffer[64x48, planes YCBCR_422]",
                            Framebuffer.planes(64, 48, ChromaSubsampling.YCBCR_422).toString(),
                            "planes");
                });
        run.test(
                "the options' text has every option",
                () -> {
                    TestRun.expectEqual(
                            "DecoderOptions[ICT, V0, YCBCR_420, PADDED, threads=0, contrast=0,"
                                    + " postprocessing=false]",
                            options.toString(),
                            "defaults");
                    TestRun.expectEqual(
                            "DecoderOptions[LBE, V2, YCBCR_444, IN_PLACE, threads=3, contrast=20,"
                                    + " postprocessing=true, recording=bug.rcrec]",
                            DecoderOptions.builder(Codec.LBE)
                                    .protocolVersion(ProtocolVersion.V2)
                                    .chromaSubsampling(ChromaSubsampling.YCBCR_444)
                                    .recordLayout(RecordLayout.IN_PLACE)
                                    .threads(3)
                                    .contrast(20)
                                    .postprocessing(true)
                                    .record(Path.of("bug.rcrec"))
                                    .build()
                                    .toString(),
                            "others");
                });
        run.test(
                "a decoder's text has its state, its figures and its options",
                () -> {
                    ScreenDecoder decoder = ScreenDecoder.open(options);
                    decoder.decode(HEADER, UNCHANGED, framebuffer);
                    expectFails(decoder);
                    TestRun.expectEqual(
                            "ScreenDecoder[open, updates=1, refusals=1, " + options + "]",
                            decoder.toString(),
                            "open");
                    decoder.close();
                    TestRun.expect(
                            decoder.toString().startsWith("ScreenDecoder[closed, "), "" + decoder);
                });
    }

    private UpdateException expectFails(ScreenDecoder decoder) throws Exception {
        return TestRun.expectThrown(
                UpdateException.class, () -> decoder.decode(HEADER, new byte[1], framebuffer));
    }

    private void numbers() {
        run.test(
                "numbers in messages do not follow the locale",
                () -> {
                    Locale before = Locale.getDefault();
                    Locale.setDefault(Locale.forLanguageTag("ar-EG-u-nu-arab"));
                    try (ScreenDecoder decoder = ScreenDecoder.open(options)) {
                        TestRun.expectEqual("\u0667", String.format("%d", 7), "the locale's 7");
                        expectAscii(expectFails(decoder));
                        UpdateHeader outside = new UpdateHeader(999, 0, 16, 16, 7);
                        expectAscii(
                                TestRun.expectThrown(
                                        UpdateException.class,
                                        () -> decoder.decode(outside, UNCHANGED, framebuffer)));
                        expectAscii(
                                TestRun.expectThrown(
                                        UpdateException.class,
                                        () ->
                                                decoder.decode(
                                                        HEADER,
                                                        new ByteArrayInputStream(UNCHANGED),
                                                        100,
                                                        framebuffer)));
                        expectAscii(
                                TestRun.expectThrown(
                                        IllegalArgumentException.class,
                                        () -> Framebuffer.argb(0, 5)));
                    } finally {
                        Locale.setDefault(before);
                    }
                });
    }

    private static void expectAscii(Exception e) {
        boolean ascii = e.getMessage().chars().allMatch(c -> c < 0x80);
        TestRun.expect(ascii, e.getMessage());
    }
}
