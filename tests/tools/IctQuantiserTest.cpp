#include "tools/IctQuantiser.h"
#include "tests/model/ModelTables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

namespace Vostrel::streamencoder {
namespace {

using libimagedecoder::IctCodingTables;

/// A quantiser of one component and the multipliers that a decoder has for it.
struct Subject {
    IctQuantiser m_quantiser;
    model::TileTable m_multiplier;

    int64_t Reconstruct(size_t index, int64_t level) const {
        return static_cast<int64_t>(
            std::floor(static_cast<double>(level * m_multiplier[index]) / 1024));
    }
};

std::vector<Subject> AllSubjects() {
    std::vector<Subject> subjects;
    for (size_t level = 0; level < 16; ++level) {
        const auto& quality = IctCodingTables::s_aQualityTable[level];
        subjects.push_back({IctQuantiser(IctCodingTables::s_aLumQuantBaseTile, quality),
                            model::LumaDequantisation(static_cast<int>(level))});
        subjects.push_back({IctQuantiser(IctCodingTables::s_aChromaQuantBaseTile, quality),
                            model::ChromaDequantisation(static_cast<int>(level))});
    }
    return subjects;
}

TEST(IctQuantiser, KnowsWhatTheDecoderReconstructs) {
    for (const Subject& subject : AllSubjects()) {
        for (size_t i = 0; i < 64; ++i) {
            for (const int level : {-1023, -1, 0, 1, 7, 1023}) {
                EXPECT_EQ(subject.m_quantiser.Reconstruct(i, level), subject.Reconstruct(i, level));
            }
        }
    }
}

TEST(IctQuantiser, NoLevelReconstructsCloser) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (const Subject& subject : AllSubjects()) {
        IctCoefficients coefficients;
        for (size_t i = 0; i < 64; ++i) {
            // What samples can give: norms of the basis are 1/0.3536, 1/0.0476 and 1/0.1581.
            constexpr double largest[4] = {128, 15, 50, 15};
            const double bound = largest[i / 8 % 4] * largest[i % 4] / 128;
            coefficients[i] = std::uniform_real_distribution<double>(-bound, bound)(random);
        }
        const IctLevels levels = subject.m_quantiser.Quantise(coefficients);
        for (size_t i = 0; i < 64; ++i) {
            const auto errorOf = [&](int level) {
                return std::fabs(static_cast<double>(subject.Reconstruct(i, level)) -
                                 64 * coefficients[i]);
            };
            const double error = errorOf(levels[i]);
            for (int level = -IctQuantiser::MaxLevel; level <= IctQuantiser::MaxLevel; ++level) {
                ASSERT_LE(error, errorOf(level)) << "index " << i << " level " << level;
                if (std::abs(level) < std::abs(levels[i])) {
                    ASSERT_LT(error, errorOf(level)) << "level " << level << " is cheaper";
                }
            }
        }
    }
}

TEST(IctQuantiser, LevelsStayInTheReachOfTheCodes) {
    const IctQuantiser finest(IctCodingTables::s_aLumQuantBaseTile,
                              IctCodingTables::s_aQualityTable[15]);
    for (const int limit : {IctQuantiser::MaxLevel, -IctQuantiser::MaxLevel}) {
        IctCoefficients coefficients;
        coefficients.fill(1e6 * limit);
        const IctLevels levels = finest.Quantise(coefficients);
        for (size_t i = 0; i < 64; ++i) {
            EXPECT_LE(std::abs(levels[i]), IctQuantiser::MaxLevel);
            EXPECT_EQ(finest.Reconstruct(i, levels[i]), finest.Reconstruct(i, limit));
        }
    }
}

} // namespace
} // namespace Vostrel::streamencoder
