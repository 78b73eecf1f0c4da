package nn.qv.tests;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;

/** The ways in which a soak spoils a good update at random. */
enum Mutation {
    FLIPPED_BITS {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            for (int flips = 1 + random.nextInt(8); flips > 0 && update.payloadBytes > 0; flips--) {
                Bits.flip(update.data, random.nextInt(8 * update.payloadBytes));
            }
        }
    },
    RANDOM_RUN {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            int from = random.nextInt(update.payloadBytes + 1);
            int to = Math.min(update.data.length, from + 1 + random.nextInt(16));
            byte fill = (byte) random.nextInt();
            boolean constant = random.nextBoolean();
            for (int i = from; i < to; i++) {
                update.data[i] = constant ? fill : (byte) random.nextInt();
            }
        }
    },
    TRUNCATED {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            update.replaceData(
                    Arrays.copyOf(update.data, random.nextInt(update.payloadBytes + 1)));
        }
    },
    SPLICED {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            byte[] other = pick(seeds, random).update().data();
            int head = random.nextInt(update.payloadBytes + 1);
            int tail = Math.min(random.nextInt(other.length + 1), LONGEST_SPLICE);
            byte[] spliced = Arrays.copyOf(update.data, head + tail);
            System.arraycopy(other, other.length - tail, spliced, head, tail);
            update.replaceData(spliced);
        }
    },
    GARBAGE {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            byte[] garbage = new byte[random.nextInt(200)];
            random.nextBytes(garbage);
            update.replaceData(garbage);
        }
    },
    /** The code in place of a DC code by which an encoder gives up, or the pattern behind it. */
    ABORT_MARKER {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            int bit = random.nextInt(8 * update.payloadBytes + 1);
            Bits.put(update.data, bit, ABORT_BITS, abortMarker(random));
        }
    },
    /** The same at the start of a job's macroblock, where it must end the update. */
    ABORT_MARKER_IN_JOB {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            PoolRecord record = pickRecord(update, random);
            if (record != null) {
                Bits.put(update.data, record.bodyBit(), ABORT_BITS, abortMarker(random));
                boolean complete = record.bodyBit() + ABORT_BITS <= 8 * record.end();
                if (complete && update.seed.ict()) {
                    update.expectedError = "StreamError";
                }
            }
        }
    },
    RECORD_LENGTH {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            PoolRecord record = pickRecord(update, random);
            if (record != null) {
                int length = Bits.get(update.data, record.lengthBit(), record.lengthBits());
                int[] lengths = {0, 1, 2, 3, length - 1, length + 1, ~0, random.nextInt()};
                int wrong = lengths[random.nextInt(lengths.length)];
                Bits.put(update.data, record.lengthBit(), record.lengthBits(), wrong);
            }
        }
    },
    RECORDS_SHUFFLED {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            PoolRecord from = pickRecord(update, random);
            PoolRecord to = pickRecord(update, random);
            if (from != null) {
                byte[] copy = new byte[update.data.length + from.end() - from.start()];
                System.arraycopy(update.data, 0, copy, 0, to.start());
                System.arraycopy(
                        update.data, from.start(), copy, to.start(), from.end() - from.start());
                System.arraycopy(
                        update.data,
                        to.start(),
                        copy,
                        to.start() + from.end() - from.start(),
                        update.data.length - to.start());
                update.replaceData(copy);
            }
        }
    },
    SKIP_CODE {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            PoolRecord record = pickRecord(update, random);
            int bit = record == null ? 0 : 8 * record.start();
            int[] counts = {0, 1, 0x3FFF, 0x3FFE, 0xFFFE, 0xFFFF, random.nextInt()};
            int longCount = counts[random.nextInt(counts.length)] & 0xFFFF;
            Bits.put(update.data, bit, 18, 3 << 16 | longCount);
        }
    },
    RECTANGLE {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            update.x = coordinate(update.x, update.framebufferWidth, random);
            update.y = coordinate(update.y, update.framebufferHeight, random);
            update.width = coordinate(update.width, update.framebufferWidth, random);
            update.height = coordinate(update.height, update.framebufferHeight, random);
        }
    },
    QUALITY {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            update.quality = random.nextBoolean() ? random.nextInt(16) : random.nextInt();
        }
    },
    FRAMEBUFFER {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            int[][] sizes = {
                {0, 0}, {0, 16}, {1, 1}, {3, 2}, {15, 17}, {16, 16}, {17, 33}, {31, 31}, {64, 16},
                {16, 96}, {50, 40}, {1, 300}, {300, 1}, {65535, 1}, {1, 65535}, {65535, 3}
            };
            int[] size = sizes[random.nextInt(sizes.length - (random.nextInt(8) == 0 ? 0 : 3))];
            update.framebufferWidth = size[0];
            update.framebufferHeight = size[1];
        }
    },
    NO_SINK {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            update.sink = HostileUpdate.Sink.NONE;
        }
    },
    PIECES {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            int[] sizes = {1, 2, 3, 13, 64, 4096};
            update.transferBytes = sizes[random.nextInt(sizes.length)];
        }
    },
    MISREAD {
        @Override
        void apply(HostileUpdate update, Random random, List<SoakSeed> seeds) {
            int capacity = update.transferBytes;
            int[] results = {
                0, -1, Integer.MIN_VALUE, Integer.MAX_VALUE, capacity + 1, random.nextInt()
            };
            update.misread = random.nextInt(3);
            update.misreadResult = results[random.nextInt(results.length)];
        }
    };

    private static final Mutation[] ALL = values();
    private static final int LONGEST_SPLICE = 300;
    private static final int ABORT_BITS = 10;

    abstract void apply(HostileUpdate update, Random random, List<SoakSeed> seeds);

    /** Applies one to three mutations. Only a single one says what must come of it. */
    static void applySome(HostileUpdate update, Random random, List<SoakSeed> seeds) {
        int count = 1 + Math.max(0, random.nextInt(5) - 2);
        for (int i = 0; i < count; i++) {
            ALL[random.nextInt(ALL.length)].apply(update, random, seeds);
        }
        if (count > 1) {
            update.expectedError = null;
        }
    }

    private static int abortMarker(Random random) {
        return random.nextBoolean() ? 0x3FE : 0x3FF;
    }

    private static SoakSeed pick(List<SoakSeed> seeds, Random random) {
        return seeds.get(random.nextInt(seeds.size()));
    }

    private static PoolRecord pickRecord(HostileUpdate update, Random random) {
        if (update.seed.pool() != SoakSeed.Pool.NEEDED) {
            return null;
        }
        List<PoolRecord> records =
                PoolRecord.of(
                        update.seed.options().codec(), update.data, update.payloadBytes);
        return records.isEmpty() ? null : records.get(random.nextInt(records.size()));
    }

    private static int coordinate(int regular, int framebufferEdge, Random random) {
        List<Integer> choices =
                new ArrayList<>(List.of(0, 1, 8, 15, 16, 17, 32, 65519, 65520, 65534, 65535));
        choices.addAll(List.of(regular, regular, regular, regular, regular, regular + 16));
        choices.addAll(List.of(framebufferEdge, framebufferEdge + 16, random.nextInt(65536)));
        return choices.get(random.nextInt(choices.size())) & 0xFFFF;
    }
}
