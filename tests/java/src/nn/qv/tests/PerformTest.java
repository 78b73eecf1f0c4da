package nn.qv.tests;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.function.UnaryOperator;
import nn.qv.imagedecoder.NativeLoader;
import nn.qv.imagedecoder.internal.Handles;
import nn.qv.imagedecoder.internal.NativeCodec;
import nn.qv.imagedecoder.internal.NativeObjects;
import nn.qv.imagedecoder.internal.NativeTarget;

/**
 * What a perform call makes of its handles, framebuffers and numbers, and on which threads it runs.
 * Arguments: the folder of the case files, the codec.
 */
final class PerformTest {
    private final TestRun run = new TestRun();
    private final NativeCodec codec;
    private final GoodUpdate good;

    private PerformTest(NativeCodec codec, GoodUpdate good) {
        this.codec = codec;
        this.good = good;
    }

    public static void main(String[] arguments) throws IOException {
        NativeLoader.load();
        NativeCodec codec = NativeCodec.valueOf(arguments[1]);
        PerformTest tests = new PerformTest(codec, GoodUpdate.load(arguments[0], codec));
        tests.handles();
        tests.framebuffers();
        tests.arguments();
        tests.threads();
        tests.run.finish();
    }

    private void handles() {
        expectUnread("stream", h -> new Handles(h.logger(), 0, h.renderer(), h.decoder()));
        expectUnread("renderer", h -> new Handles(h.logger(), h.streambuffer(), 0, h.decoder()));
        expectUnread("decoder", h -> new Handles(h.logger(), h.streambuffer(), h.renderer(), 0));
    }

    private void expectUnread(String missing, UnaryOperator<Handles> withoutOne) {
        run.test(
                "an update without " + missing + " fails unread",
                () -> {
                    ScriptedFeed feed = new ScriptedFeed();
                    feed.begin(good.step().update().data());
                    NativeObjects objects = create(feed);
                    feed.takeLog();

                    GuardedFramebuffer memory = good.framebuffer();
                    long blank = memory.crc();
                    long result =
                            codec.perform(
                                    good.transfer(),
                                    memory.framebuffer(),
                                    good.step().update().numbers(),
                                    withoutOne.apply(objects.handles()));
                    TestRun.expectEqual(-1L, result, "result");
                    TestRun.expectEqual(List.of(), feed.capacities(), "reads");
                    TestRun.expectEqual(List.of(), feed.takeLog(), "log lines");
                    TestRun.expectEqual(blank, memory.crc(), "framebuffer CRC");
                    objects.run();
                });
    }

    private NativeObjects create(MemoryFeed feed) throws IOException {
        return NativeObjects.create(feed, codec, 0, 0, 0);
    }

    private void framebuffers() {
        run.test(
                "an update without framebuffers decodes and draws nothing",
                () -> {
                    NativeTarget none = framebufferOver(null);
                    try (RawDecoder decoder = good.decoder(new MemoryFeed())) {
                        TestRun.expectEqual(
                                good.step().result(),
                                decoder.decode(good.step().update(), none, good.transfer()),
                                "result");
                        good.expectDecodes(decoder, good.framebuffer());
                    }
                });
        run.test(
                "a heap buffer counts as no framebuffer",
                () -> {
                    ByteBuffer heap =
                            ByteBuffer.allocate(4 * good.life().width() * good.life().height());
                    try (RawDecoder decoder = good.decoder(new MemoryFeed())) {
                        TestRun.expectEqual(
                                good.step().result(),
                                decoder.decode(
                                        good.step().update(),
                                        framebufferOver(heap),
                                        good.transfer()),
                                "result");
                    }
                    while (heap.hasRemaining()) {
                        TestRun.expectEqual((byte) 0, heap.get(), "byte of the heap buffer");
                    }
                });
        run.test(
                "a buffer's position does not move the framebuffer",
                () -> {
                    GuardedFramebuffer memory = good.framebuffer();
                    memory.framebuffer().argb().position(64);
                    try (RawDecoder decoder = good.decoder(new MemoryFeed())) {
                        long result =
                                decoder.decode(
                                        good.step().update(),
                                        memory.framebuffer(),
                                        good.transfer());
                        memory.framebuffer().argb().position(0);
                        good.expectDecoded(result, memory);
                    }
                });
        run.test(
                "each update draws into the framebuffer that it was given",
                () -> {
                    GuardedFramebuffer first = good.framebuffer();
                    GuardedFramebuffer second = good.framebuffer();
                    try (RawDecoder decoder = good.decoder(new MemoryFeed())) {
                        good.expectDecodes(decoder, first);
                        good.expectDecodes(decoder, second);
                    }
                    good.expectDecoded(good.step().result(), first);
                });
    }

    private NativeTarget framebufferOver(ByteBuffer argb) {
        return new NativeTarget(
                good.life().width(), good.life().height(), argb, null, null, null);
    }

    private void arguments() {
        run.test(
                "of sizes and positions the low 16 bits count",
                () -> {
                    GuardedFramebuffer memory = good.framebuffer();
                    NativeTarget wide =
                            new NativeTarget(
                                    good.life().width() | 0x7FFF0000,
                                    good.life().height() | 0x80000000,
                                    memory.framebuffer().argb(),
                                    null,
                                    null,
                                    null);
                    Update u = good.step().update();
                    Update update =
                            new Update(
                                    u.quality(),
                                    u.x() | 0x10000,
                                    u.y() | 0xFFFF0000,
                                    u.width() | 0x70000,
                                    u.height() | 0x80000000,
                                    u.data());
                    try (RawDecoder decoder = good.decoder(new MemoryFeed())) {
                        good.expectDecoded(
                                decoder.decode(update, wide, good.transfer()), memory);
                    }
                });
    }

    private void threads() {
        run.test(
                "a decoder made on one thread decodes on another",
                () -> {
                    try (RawDecoder decoder = good.decoder(new MemoryFeed())) {
                        onThreads(1, () -> good.expectDecodes(decoder, good.framebuffer()));
                    }
                });
        run.test(
                "decoders on four threads at once do not disturb each other",
                () ->
                        onThreads(
                                4,
                                () -> {
                                    for (int i = 0; i < 10; i++) {
                                        CaseLife.expectRight(good.life(), new MemoryFeed(), 0);
                                    }
                                }));
    }

    private static void onThreads(int count, TestRun.Body body) throws Exception {
        ExecutorService executor = Executors.newFixedThreadPool(count);
        try {
            List<Future<Void>> futures = new ArrayList<>();
            for (int i = 0; i < count; i++) {
                futures.add(
                        executor.submit(
                                () -> {
                                    body.run();
                                    return null;
                                }));
            }
            for (Future<Void> future : futures) {
                future.get();
            }
        } finally {
            executor.shutdown();
        }
    }
}
