package nn.qv.tests;

import java.awt.image.BufferedImage;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.IntBuffer;
import java.util.Arrays;
import java.util.List;
import nn.qv.imagedecoder.ChangedRectangle;
import nn.qv.imagedecoder.ChromaSubsampling;
import nn.qv.imagedecoder.Codec;
import nn.qv.imagedecoder.DecoderOptions;
import nn.qv.imagedecoder.Framebuffer;
import nn.qv.imagedecoder.ProtocolVersion;
import nn.qv.imagedecoder.RecordLayout;

/** Framebuffers, rectangles and options: what can be made, seen and copied, and what is refused. */
final class FramebufferTest {
    private static final int RED = 0xFFFF0000;
    private static final int BLUE = 0xFF0000FF;

    private final TestRun run = new TestRun();

    private FramebufferTest() {}

    public static void main(String[] arguments) {
        FramebufferTest tests = new FramebufferTest();
        tests.sizes();
        tests.memory();
        tests.copies();
        tests.planes();
        tests.rectangles();
        tests.options();
        tests.run.finish();
    }

    private void refused(String sentence, String message, TestRun.Body body) {
        run.test(
                sentence,
                () -> {
                    IllegalArgumentException e =
                            TestRun.expectThrown(IllegalArgumentException.class, body);
                    TestRun.expect(e.getMessage().contains(message), e.getMessage());
                });
    }

    private void sizes() {
        refused("a width of 0 is refused", "1 to 16384", () -> Framebuffer.argb(0, 1));
        refused("a height below 0 is refused", "1 to 16384", () -> Framebuffer.argb(1, -1));
        refused("a side above the maximum is refused", "16385", () -> Framebuffer.argb(16385, 1));
        refused(
                "two sides that have too many pixels together are refused",
                "at most 67108864 pixels",
                () -> Framebuffer.argb(8192, 8193));
        run.test(
                "the longest sides are fine",
                () -> {
                    TestRun.expectEqual(16384, Framebuffer.argb(16384, 1).width(), "width");
                    TestRun.expectEqual(16384, Framebuffer.argb(1, 16384).height(), "height");
                });
    }

    private void memory() {
        refused(
                "memory on the heap is refused",
                "allocateDirect",
                () -> Framebuffer.argb(4, 4, nativeOrder(ByteBuffer.allocate(64))));
        refused(
                "memory that cannot be written is refused",
                "read-only",
                () -> Framebuffer.argb(4, 4, nativeOrder(direct(64).asReadOnlyBuffer())));
        refused(
                "memory of the other byte order is refused",
                "order(ByteOrder.nativeOrder())",
                () -> Framebuffer.argb(4, 4, direct(64).order(ByteOrder.BIG_ENDIAN)));
        refused(
                "memory a byte too small is refused",
                "63 bytes left where 64 are needed",
                () -> Framebuffer.argb(4, 4, direct(63)));
        refused(
                "memory that has too little behind its position is refused",
                "60 bytes left",
                () -> Framebuffer.argb(4, 4, direct(64).position(4)));
        refused(
                "memory at an odd address is refused",
                "divisible by 4",
                () -> Framebuffer.argb(4, 4, direct(66).position(2)));
        run.test(
                "the viewer's own memory is used in place, from its position on",
                () -> {
                    ByteBuffer memory = direct(68).position(4);
                    Framebuffer framebuffer = Framebuffer.argb(4, 4, memory);
                    framebuffer.pixels().put(0, BLUE);
                    TestRun.expectEqual(BLUE, memory.getInt(4), "first pixel");
                    TestRun.expectEqual(16, framebuffer.pixels().remaining(), "pixels");
                });
        run.test(
                "views share the memory and have positions of their own",
                () -> {
                    Framebuffer framebuffer = Framebuffer.argb(2, 1);
                    IntBuffer first = framebuffer.pixels();
                    first.put(RED);
                    TestRun.expectEqual(RED, framebuffer.pixels().get(), "pixel");
                    TestRun.expectEqual(0, framebuffer.pixels().position(), "position");
                    framebuffer.clear();
                    TestRun.expectEqual(0, framebuffer.pixels().get(), "cleared pixel");
                });
    }

    private static ByteBuffer direct(int bytes) {
        return nativeOrder(ByteBuffer.allocateDirect(bytes));
    }

    private static ByteBuffer nativeOrder(ByteBuffer buffer) {
        return buffer.order(ByteOrder.nativeOrder());
    }

    /** Pixel (x, y) is y * 16 + x, opaque. */
    private static Framebuffer numbered() {
        Framebuffer framebuffer = Framebuffer.argb(5, 4);
        IntBuffer pixels = framebuffer.pixels();
        for (int i = 0; i < 20; i++) {
            pixels.put(0xFF000000 | i / 5 * 16 + i % 5);
        }
        return framebuffer;
    }

    private void copies() {
        run.test(
                "a region is copied row by row",
                () ->
                        TestRun.expectEqual(
                                "[ff000012, ff000013, ff000022, ff000023]",
                                hex(numbered().copy(new ChangedRectangle(2, 1, 2, 2))),
                                "pixels"));
        for (ChangedRectangle outside :
                List.of(
                        new ChangedRectangle(4, 0, 2, 1),
                        new ChangedRectangle(0, 3, 1, 2),
                        new ChangedRectangle(0, 0, Integer.MAX_VALUE, 1))) {
            run.test(
                    "a region that reaches outside is refused: " + outside,
                    () ->
                            TestRun.expectThrown(
                                    IndexOutOfBoundsException.class,
                                    () -> numbered().copy(outside)));
        }
        run.test(
                "a picture has the framebuffer's pixels, opaque",
                () -> {
                    BufferedImage image = numbered().toBufferedImage();
                    TestRun.expectEqual(5, image.getWidth(), "width");
                    TestRun.expectEqual(4, image.getHeight(), "height");
                    TestRun.expectEqual(0xFF000034, image.getRGB(4, 3), "last pixel");
                });
        for (int type :
                new int[] {
                    BufferedImage.TYPE_INT_RGB,
                    BufferedImage.TYPE_INT_ARGB,
                    BufferedImage.TYPE_INT_ARGB_PRE,
                    BufferedImage.TYPE_3BYTE_BGR
                }) {
            run.test(
                    "the changed region alone is copied to a picture of type " + type,
                    () -> {
                        BufferedImage image = new BufferedImage(6, 6, type);
                        int blank = image.getRGB(0, 0);
                        numbered().copyTo(image, new ChangedRectangle(1, 1, 2, 3));
                        TestRun.expectEqual(0xFF000011, image.getRGB(1, 1), "first pixel");
                        TestRun.expectEqual(0xFF000032, image.getRGB(2, 3), "last pixel");
                        TestRun.expectEqual(blank, image.getRGB(0, 1), "pixel to the left");
                        TestRun.expectEqual(blank, image.getRGB(3, 3), "pixel to the right");
                        TestRun.expectEqual(blank, image.getRGB(2, 4), "pixel below");
                    });
        }
        run.test(
                "a large region is copied whole",
                () -> {
                    Framebuffer framebuffer = Framebuffer.argb(1000, 700);
                    framebuffer.pixels().put(1000 * 700 - 1, RED);
                    BufferedImage image = framebuffer.toBufferedImage();
                    TestRun.expectEqual(RED, image.getRGB(999, 699), "last pixel");
                });
        run.test(
                "nothing is copied for an empty region",
                () -> numbered().copyTo(new BufferedImage(1, 1, 1), ChangedRectangle.EMPTY));
        refused(
                "a picture that does not cover the region is refused",
                "does not cover",
                () ->
                        numbered()
                                .copyTo(
                                        new BufferedImage(3, 3, BufferedImage.TYPE_INT_RGB),
                                        new ChangedRectangle(2, 0, 2, 1)));
    }

    private static String hex(int[] pixels) {
        return Arrays.stream(pixels).mapToObj(Integer::toHexString).toList().toString();
    }

    private void planes() {
        run.test(
                "planes have the sizes of their subsampling, rounded down",
                () -> {
                    expectPlanes(ChromaSubsampling.YCBCR_420, 35, 6);
                    expectPlanes(ChromaSubsampling.YCBCR_422, 35, 15);
                    expectPlanes(ChromaSubsampling.YCBCR_444, 35, 35);
                });
        run.test(
                "planes have no pixels, and pixels no planes",
                () -> {
                    Framebuffer planes = Framebuffer.planes(7, 5, ChromaSubsampling.YCBCR_420);
                    List<TestRun.Body> calls =
                            List.of(
                                    planes::pixels,
                                    planes::toBufferedImage,
                                    () -> planes.copy(ChangedRectangle.EMPTY),
                                    () -> numbered().planes());
                    for (TestRun.Body call : calls) {
                        TestRun.expectThrown(UnsupportedOperationException.class, call);
                    }
                });
    }

    private static void expectPlanes(ChromaSubsampling subsampling, int luma, int chroma) {
        List<ByteBuffer> planes = Framebuffer.planes(7, 5, subsampling).planes();
        TestRun.expectEqual(
                List.of(luma, chroma, chroma),
                planes.stream().map(ByteBuffer::capacity).toList(),
                subsampling + " capacities");
    }

    private void rectangles() {
        run.test(
                "the union of two rectangles holds both, and an empty one adds nothing",
                () -> {
                    ChangedRectangle a = new ChangedRectangle(10, 20, 5, 5);
                    ChangedRectangle b = new ChangedRectangle(12, 10, 8, 2);
                    TestRun.expectEqual(
                            new ChangedRectangle(10, 10, 10, 15), a.union(b), "union");
                    TestRun.expectEqual(a, a.union(ChangedRectangle.EMPTY), "with nothing");
                    TestRun.expectEqual(a, ChangedRectangle.EMPTY.union(a), "of nothing");
                });
        refused(
                "a negative rectangle is refused",
                "Negative",
                () -> new ChangedRectangle(0, 0, -1, 0));
    }

    private void options() {
        refused(
                "protocol version 2 without threads is refused, with the reason",
                "padded to whole bytes",
                () -> builder().protocolVersion(ProtocolVersion.V2).build());
        refused(
                "continuous macroblocks with threads are refused, with the reason",
                "would cut them",
                () ->
                        builder()
                                .protocolVersion(ProtocolVersion.V2)
                                .recordLayout(RecordLayout.CONTINUOUS)
                                .threads(1)
                                .build());
        run.test(
                "protocol version 2 without threads is fine where nothing is padded",
                () -> {
                    for (RecordLayout layout :
                            List.of(RecordLayout.CONTINUOUS, RecordLayout.IN_PLACE)) {
                        DecoderOptions options =
                                builder()
                                        .protocolVersion(ProtocolVersion.V2)
                                        .recordLayout(layout)
                                        .build();
                        TestRun.expectEqual(0, options.threads(), "threads");
                    }
                });
        run.test(
                "older versions take any number of threads",
                () -> builder().protocolVersion(ProtocolVersion.V1).threads(64).build());
        refused("65 threads are refused", "0 to 64, not 65", () -> builder().threads(65));
        refused("-1 threads are refused", "0 to 64, not -1", () -> builder().threads(-1));
        refused("contrast 101 is refused", "0 to 100, not 101", () -> builder().contrast(101));
    }

    private static DecoderOptions.Builder builder() {
        return DecoderOptions.builder(Codec.ICT);
    }
}
