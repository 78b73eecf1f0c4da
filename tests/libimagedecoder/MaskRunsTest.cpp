#include "libimagedecoder/MaskRuns.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using Runs = std::vector<std::pair<std::size_t, std::size_t>>;

Runs RunsOf(const bool* mask, std::size_t count) {
    Runs runs;
    ForEachUnmaskedRun(mask, count,
                       [&](std::size_t first, std::size_t end) { runs.emplace_back(first, end); });
    return runs;
}

/// Entry by entry.
Runs ExpectedRuns(const bool* mask, std::size_t count) {
    Runs runs;
    for (std::size_t i = 0; i < count; ++i) {
        if (mask[i])
            continue;
        if (i == 0 || mask[i - 1])
            runs.emplace_back(i, i);
        runs.back().second = i + 1;
    }
    return runs;
}

TEST(MaskRuns, AnEmptyMaskHasNone) {
    EXPECT_TRUE(RunsOf(nullptr, 0).empty());
}

TEST(MaskRuns, AMaskOfAnyLengthThatSkipsAllHasNone) {
    for (std::size_t count = 0; count <= 70; ++count) {
        tests::GuardedBuffer<bool> mask(count);
        std::fill(mask.begin(), mask.end(), true);
        EXPECT_TRUE(RunsOf(mask.Data(), count).empty()) << count;
    }
}

TEST(MaskRuns, AMaskOfAnyLengthThatSkipsNothingIsOne) {
    for (std::size_t count = 1; count <= 70; ++count) {
        tests::GuardedBuffer<bool> mask(count);
        EXPECT_EQ(RunsOf(mask.Data(), count), (Runs{{0, count}})) << count;
    }
}

TEST(MaskRuns, ASingleEntryIsFoundAnywhere) {
    for (std::size_t count = 1; count <= 40; ++count) {
        for (std::size_t place = 0; place < count; ++place) {
            tests::GuardedBuffer<bool> mask(count, place % 8);
            std::fill(mask.begin(), mask.end(), true);
            mask[place] = false;
            EXPECT_EQ(RunsOf(mask.Data(), count), (Runs{{place, place + 1}}));
        }
    }
}

TEST(MaskRuns, RandomMasksAreCutAtEveryChange) {
    tests::Random random;
    for (int round = 0; round < 20000; ++round) {
        tests::GuardedBuffer<bool> mask(random.Below(std::size_t{80}), random.Below(8u));
        const unsigned changes = 1 + random.Below(20u);
        bool skip = random.OneIn(2);
        for (bool& entry : mask) {
            skip = skip != random.OneIn(changes);
            entry = skip;
        }
        ASSERT_EQ(RunsOf(mask.Data(), mask.Count()), ExpectedRuns(mask.Data(), mask.Count()));
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder
