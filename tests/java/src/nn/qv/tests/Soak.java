package nn.qv.tests;

import java.io.IOException;
import java.lang.ref.WeakReference;
import java.nio.MappedByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.Random;
import nn.qv.imagedecoder.NativeLoader;

/**
 * Feeds hostile updates to one decoder after another, and sees to it that nothing is harmed: no
 * crash, no hang, no byte written outside, every good update in between right, and at the end no
 * more memory, threads and references in use than halfway. docs/soak.md tells how to run it.
 *
 * <p>Everything is a function of a seed and of a life's number, so a life can be lived again alone.
 */
final class Soak {
    /** Framebuffers are kept by what they are made of. */
    private record Geometry(int width, int height, boolean planes, int chromaSubsampling) {}

    private static final int COLLECTED_SAMPLES = 2000;

    private final SoakOptions options;
    private final List<SoakSeed> seeds;
    private final List<SystematicMutations.Batch> batches;
    private final Watchdog watchdog;
    private final MappedByteBuffer lifeRecord;
    private final SoakFigures figures;
    private final Map<Geometry, GuardedFramebuffer> framebuffers = new HashMap<>();
    private final Map<SoakSeed, SoakReference> references = new HashMap<>();
    private final List<WeakReference<Object>> toCollect = new ArrayList<>();

    private Soak(SoakOptions options) throws IOException {
        this.options = options;
        seeds = SoakSeeds.load(options.cases(), options.streams());
        batches = SystematicMutations.of(seeds, new Random(options.seed()));
        watchdog = new Watchdog("seed " + options.seed(), options.hangSeconds());
        figures = new SoakFigures(options);
        try (FileChannel file =
                FileChannel.open(
                        options.record(),
                        StandardOpenOption.CREATE,
                        StandardOpenOption.READ,
                        StandardOpenOption.WRITE)) {
            lifeRecord = file.map(FileChannel.MapMode.READ_WRITE, 0, 64);
        }
    }

    public static void main(String[] arguments) throws Exception {
        NativeLoader.load();
        Soak soak = new Soak(SoakOptions.parse(arguments));
        TestRun run = new TestRun();
        if (soak.options.life() >= 0) {
            run.test(soak.describe(soak.options.life()), () -> soak.live(soak.options.life()));
        } else {
            soak.testAll(run);
        }
        run.finish();
    }

    List<SoakSeed> seeds() {
        return seeds;
    }

    Watchdog watchdog() {
        return watchdog;
    }

    String describe(long life) {
        return "seed " + options.seed() + " life " + life;
    }

    GuardedFramebuffer framebuffer(SoakSeed seed) {
        return framebuffer(seed, seed.width(), seed.height());
    }

    /** The seed's kind of framebuffer in any size; one and the same for the same size. */
    GuardedFramebuffer framebuffer(SoakSeed seed, int width, int height) {
        int chroma = seed.planes() ? seed.options().chromaSubsampling() : 0;
        return framebuffers.computeIfAbsent(
                new Geometry(width, height, seed.planes(), chroma),
                g ->
                        g.planes()
                                ? GuardedFramebuffer.ofPlanes(g.width(), g.height(), chroma)
                                : GuardedFramebuffer.ofArgb(g.width(), g.height()));
    }

    SoakReference reference(SoakSeed seed) throws IOException {
        SoakReference known = references.get(seed);
        if (known == null) {
            known = SoakReference.byFreshDecoder(seed, framebuffer(seed));
            references.put(seed, known);
        }
        return known;
    }

    private void testAll(TestRun run) {
        run.test("hostile updates do no harm, and a good one decodes right after each", this::soak);
        if (!figures.complete()) {
            return;
        }
        run.test("resident memory is flat over the second half", figures::expectFlatMemory);
        run.test("no thread is left of the decoders", figures::expectThreadsBack);
        run.test(
                "no reference is left of the decoders",
                () -> {
                    figures.expectReferencesBack();
                    expectCollected();
                });
    }

    private void soak() throws Exception {
        figures.printPlan(seeds.size(), batches.size());
        for (SoakSeed seed : seeds) {
            reference(seed);
        }
        live(0);
        figures.begin();
        for (long number = 1; figures.goesOn(); number++) {
            SoakLife.Outcome outcome = live(number);
            figures.add(outcome, batch(number) != null);
            if (toCollect.size() < COLLECTED_SAMPLES) {
                toCollect.add(new WeakReference<>(outcome.feed()));
            }
        }
        figures.end();
    }

    private SoakLife.Outcome live(long number) throws IOException {
        String text = String.format("%-62s%n", describe(number));
        lifeRecord.put(0, text.getBytes(StandardCharsets.US_ASCII));
        Random random = new Random(options.seed() * 0x9E3779B97F4A7C15L + number);
        return new SoakLife(this, number, random, batch(number)).run();
    }

    /** The batches of systematic mutations take the even lives, until they are used up. */
    private SystematicMutations.Batch batch(long number) {
        boolean systematic = number % 2 == 0 && number / 2 < batches.size();
        return systematic ? batches.get((int) (number / 2)) : null;
    }

    private void expectCollected() {
        System.gc();
        long alive = toCollect.stream().filter(reference -> reference.get() != null).count();
        TestRun.expectEqual(0L, alive, "feeds that cannot be collected");
    }
}
