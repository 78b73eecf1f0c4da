#include "tools/NearestLevels.h"
#include "tests/model/ModelColour.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

namespace Vostrel::streamencoder {
namespace {

void ExpectNearest(const LevelMap& map, int64_t (*expand)(int64_t, int), int bits) {
    for (int sample = 0; sample < 256; ++sample) {
        const auto errorOf = [&](int64_t level) { return std::abs(expand(level, bits) - sample); };
        const int64_t chosen = map[static_cast<size_t>(sample)];
        ASSERT_LT(chosen, 1 << bits);
        for (int64_t level = 0; level < 1 << bits; ++level) {
            ASSERT_LE(errorOf(chosen), errorOf(level)) << "sample " << sample << " bits " << bits;
        }
    }
}

TEST(NearestLevels, NoLumaLevelIsNearer) {
    for (int bits = 2; bits <= 6; ++bits) {
        ExpectNearest(NearestLumaLevels(static_cast<unsigned>(bits)), model::ExpandLuma, bits);
    }
}

TEST(NearestLevels, NoChromaLevelIsNearer) {
    for (int bits = 3; bits <= 5; ++bits) {
        ExpectNearest(NearestChromaLevels(static_cast<unsigned>(bits)), model::ExpandChroma, bits);
    }
}

TEST(NearestLevels, WhiteIsTheGreatestLevelAlsoWhereItFallsShort) {
    EXPECT_EQ(NearestLumaLevels(5)[255], 31);
    EXPECT_EQ(NearestLumaLevels(6)[255], 63);
}

TEST(NearestLevels, ChromaLevelsAreBitPatterns) {
    const LevelMap map = NearestChromaLevels(3);
    EXPECT_EQ(map[128], 0b000);
    EXPECT_EQ(map[255], 0b011);
    EXPECT_EQ(map[0], 0b100);
    EXPECT_EQ(map[1], 0b101); // the odd one
    EXPECT_EQ(map[86], 0b111);
}

TEST(NearestLevels, OtherDepthsAreRejected) {
    for (const unsigned bits : {0U, 1U, 7U}) {
        EXPECT_THROW(NearestLumaLevels(bits), std::out_of_range);
    }
    for (const unsigned bits : {0U, 2U, 6U}) {
        EXPECT_THROW(NearestChromaLevels(bits), std::out_of_range);
    }
}

} // namespace
} // namespace Vostrel::streamencoder
