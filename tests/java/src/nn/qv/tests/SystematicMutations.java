package nn.qv.tests;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.Random;

/**
 * Every truncation of the small seeds, and every single flipped bit of a hundred of them, cut into
 * batches that a decoder's life can hold.
 */
final class SystematicMutations {
    /** Seeds of which every bit is flipped once. */
    static final int FLIPPED_SEEDS = 100;

    private static final int BATCH = 48;
    private static final int BIT_TRUNCATED_BYTES = 64;

    /** Some of a seed's mutations, those with numbers from {@code first} up to {@code end}. */
    record Batch(SoakSeed seed, Kind kind, int first, int end) {
        /** Makes one of them. */
        HostileUpdate make(int number) {
            HostileUpdate update = new HostileUpdate(seed);
            kind.apply(update, number);
            return update;
        }
    }

    /** A family of numbered mutations. */
    enum Kind {
        FLIP {
            @Override
            int count(SoakSeed seed) {
                return 8 * seed.payloadBytes();
            }

            @Override
            void apply(HostileUpdate update, int number) {
                Bits.flip(update.data, number);
            }
        },
        TRUNCATE_BYTES {
            @Override
            int count(SoakSeed seed) {
                return seed.payloadBytes();
            }

            @Override
            void apply(HostileUpdate update, int number) {
                update.replaceData(Arrays.copyOf(update.data, number));
            }
        },
        /** The bits that are missing in the last byte are zeros, or with an odd number, ones. */
        TRUNCATE_BITS {
            @Override
            int count(SoakSeed seed) {
                return 2 * 8 * Math.min(BIT_TRUNCATED_BYTES, seed.payloadBytes());
            }

            @Override
            void apply(HostileUpdate update, int number) {
                int bits = number / 2;
                byte[] cut = Arrays.copyOf(update.data, bits / 8 + 1);
                Bits.put(cut, bits, 8 - bits % 8, -(number & 1));
                update.replaceData(cut);
            }
        };

        abstract int count(SoakSeed seed);

        abstract void apply(HostileUpdate update, int number);
    }

    private SystematicMutations() {}

    /** All batches, in an order that the random numbers decide. */
    static List<Batch> of(List<SoakSeed> seeds, Random random) {
        List<SoakSeed> small = seeds.stream().filter(SoakSeed::small).toList();
        List<SoakSeed> flipped = new ArrayList<>(small);
        Collections.shuffle(flipped, new Random(FLIPPED_SEEDS));
        List<Batch> batches = new ArrayList<>();
        flipped.subList(0, FLIPPED_SEEDS).forEach(seed -> addAll(seed, Kind.FLIP, batches));
        for (SoakSeed seed : small) {
            addAll(seed, Kind.TRUNCATE_BYTES, batches);
            addAll(seed, Kind.TRUNCATE_BITS, batches);
        }
        Collections.shuffle(batches, random);
        return batches;
    }

    private static void addAll(SoakSeed seed, Kind kind, List<Batch> batches) {
        int count = kind.count(seed);
        for (int first = 0; first < count; first += BATCH) {
            batches.add(new Batch(seed, kind, first, Math.min(count, first + BATCH)));
        }
    }
}
