package nn.qv.tests;

import java.io.IOException;
import java.util.List;
import java.util.Random;
import java.util.Set;
import nn.qv.imagedecoder.internal.NativeCodec;
import nn.qv.imagedecoder.internal.NativeTarget;

/** One decoder's life under a soak: hostile updates, and after each of them a good one. */
final class SoakLife {
    /** How a life went, for the figures, and its feed, which nobody may hold any more. */
    record Outcome(int hostileUpdates, int failedUpdates, Object feed) {}

    private static final Set<String> ERRORS =
            Set.of(
                    "StreamError",
                    "Stream has no more bytes!",
                    "Unable to read from java buffer!");
    private static final int MOST_UPDATES = 64;
    private static final int MOST_LARGE_UPDATES = 6;
    private static final int MOST_THREADS = 8;

    private final Soak soak;
    private final long number;
    private final Random random;
    private final SystematicMutations.Batch batch;
    private final SoakSeed seed;
    private final ScriptedFeed feed = new ScriptedFeed();
    private int failed;

    /** A life of random mutations, or, with a batch that is not null, of systematic ones. */
    SoakLife(Soak soak, long number, Random random, SystematicMutations.Batch batch) {
        this.soak = soak;
        this.number = number;
        this.random = random;
        this.batch = batch;
        seed = batch != null ? batch.seed() : pickSeed();
    }

    /** Lives it; throws what it found, with its place in the soak. */
    Outcome run() throws IOException {
        int count =
                batch != null
                        ? batch.end() - batch.first()
                        : 1 + random.nextInt(seed.large() ? MOST_LARGE_UPDATES : MOST_UPDATES);
        SoakReference right = soak.reference(seed);
        soak.watchdog().begin(number, -1);
        try (RawDecoder decoder = new RawDecoder(feed, options())) {
            setOptions(decoder);
            feed.takeLog();
            for (int i = 0; i < count; i++) {
                HostileUpdate update = batch != null ? batch.make(batch.first() + i) : mutate();
                soak.watchdog().begin(number, i);
                try {
                    decodeHostile(decoder, update);
                    right.expectDecodes(decoder, feed, soak.framebuffer(seed));
                } catch (AssertionError e) {
                    throw new AssertionError(describe(i, update) + ": " + e.getMessage(), e);
                }
            }
            soak.watchdog().begin(number, -1);
        } finally {
            soak.watchdog().end();
        }
        return new Outcome(count, failed, feed);
    }

    private SoakSeed pickSeed() {
        while (true) {
            SoakSeed picked = soak.seeds().get(random.nextInt(soak.seeds().size()));
            if (picked.repeatable() && (!picked.large() || random.nextInt(8) == 0)) {
                return picked;
            }
        }
    }

    private RawOptions options() {
        RawOptions own = seed.options();
        int threads =
                switch (seed.pool()) {
                    case EITHER -> random.nextInt(MOST_THREADS + 1);
                    case NEEDED -> 1 + random.nextInt(MOST_THREADS);
                    case UNFIT -> 0;
                };
        return new RawOptions(
                own.codec(), own.protocolVersion(), own.chromaSubsampling(), threads);
    }

    private void setOptions(RawDecoder decoder) {
        decoder.setContrastEnhance(seed.contrast());
        decoder.setClientPostprocessingEnabled(seed.postprocessing());
    }

    /** Mostly of the life's own update, sometimes of one for quite another decoder. */
    private HostileUpdate mutate() {
        boolean foreign = random.nextInt(4) == 0;
        SoakSeed base = foreign ? pickSeed() : seed;
        HostileUpdate update = new HostileUpdate(base);
        if (foreign) {
            update.framebufferWidth = seed.width();
            update.framebufferHeight = seed.height();
        }
        Mutation.applySome(update, random, soak.seeds());
        if (foreign) {
            update.expectedError = null;
        }
        return update;
    }

    private void decodeHostile(RawDecoder decoder, HostileUpdate update) {
        boolean odd = batch == null && random.nextInt(8) == 0;
        if (odd) {
            decoder.setContrastEnhance(random.nextInt(140) - 20);
            decoder.setClientPostprocessingEnabled(random.nextBoolean());
        }
        GuardedFramebuffer memory =
                soak.framebuffer(seed, update.framebufferWidth, update.framebufferHeight);
        memory.clear();
        long result = perform(decoder, update, memory);
        List<String> log = feed.takeLog();
        if (result == -1) {
            failed++;
        }

        memory.expectGuardsUntouched();
        if (!log.isEmpty() || update.sink == HostileUpdate.Sink.NONE) {
            memory.expectBlank();
        } else if (!seed.planes()) {
            memory.expectBlankOutside(update.x, update.y, update.width, update.height);
        }
        expectLog(result, log);
        if (update.expectedError != null) {
            String line = CaseLife.errorLine(seed.options().codec(), update.expectedError);
            TestRun.expectEqual(List.of(line), log, "log lines");
        }
        if (odd) {
            setOptions(decoder);
        }
    }

    private long perform(RawDecoder decoder, HostileUpdate update, GuardedFramebuffer memory) {
        NativeTarget framebuffer = memory.framebuffer();
        if (update.sink == HostileUpdate.Sink.NONE) {
            framebuffer = NativeTarget.none(framebuffer.width(), framebuffer.height());
        }
        int misreadAt = feed.capacities().size() + update.misread;
        feed.script(
                update.misread < 0
                        ? null
                        : (target, capacity) ->
                                feed.capacities().size() - 1 == misreadAt
                                        ? update.misreadResult
                                        : feed.regularRead(target, capacity));
        long result =
                decoder.decode(update.update(), framebuffer, new byte[update.transferBytes]);
        feed.script(null);
        return result;
    }

    /** A failed update logs one line of a known text, any other none. */
    private void expectLog(long result, List<String> log) {
        if (log.isEmpty()) {
            return;
        }
        NativeCodec codec = seed.options().codec();
        boolean known =
                ERRORS.stream().anyMatch(e -> log.get(0).equals(CaseLife.errorLine(codec, e)));
        TestRun.expect(log.size() == 1 && known, "unknown log lines: " + log);
        TestRun.expectEqual(-1L, result, "result of an update that logged a failure");
    }

    private String describe(int index, HostileUpdate update) {
        String mutation = batch != null ? batch.kind() + " " + (batch.first() + index) : "random";
        return soak.describe(number)
                + " update "
                + index
                + ", "
                + mutation
                + " of "
                + update.seed.name()
                + " in a life of "
                + seed.name();
    }
}
