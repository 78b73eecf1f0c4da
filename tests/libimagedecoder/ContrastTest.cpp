#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using Row = std::vector<int>;
constexpr int Depths[] = {8, 6, 5, 4, 3, 2};

/// The stretch in whole numbers, from its description: black up to a threshold, white from the
/// mirrored one on, the rest spread.
int Stretched(int value, int level, int depth) {
    const int values = 1 << depth;
    const int threshold = level / (256 / values);
    if (value <= threshold)
        return 0;
    if (value >= values - 1 - threshold)
        return values - 1;
    return values * (value - threshold) / (values - 1 - 2 * threshold);
}

class Contrast : public testing::Test {
protected:
    Row TableOf(int depth) const {
        const unsigned char* const table =
            m_Renderer.GetContrastLut(static_cast<unsigned char>(depth));
        return Row(table, table + (1 << depth));
    }

    void ExpectTablesOfLevel(int level) const {
        EXPECT_EQ(m_Renderer.GetContrastEnhance(), level);
        for (const int depth : Depths) {
            const Row table = TableOf(depth);
            for (int value = 0; value < 1 << depth; ++value)
                ASSERT_EQ(table[static_cast<size_t>(value)], Stretched(value, level, depth))
                    << "level " << level << ", depth " << depth << ", value " << value;
        }
    }

    /// Samples 0, 1, 2 ... of a rectangle, modulo the values of the depth.
    static void FillRamp(tests::GuardedBuffer<unsigned char>& luma, int depth) {
        for (size_t i = 0; i < luma.Count(); ++i)
            luma[i] = static_cast<unsigned char>(i % (size_t{1} << depth));
    }

    tests::RecordingLogger m_Logger;
    ImageDecoderRenderer m_Renderer{&m_Logger};
};

TEST_F(Contrast, StartsAtLevelZeroWithIdentities) {
    EXPECT_EQ(m_Renderer.GetContrastEnhance(), 0);
    for (const int depth : Depths) {
        Row identity(size_t{1} << depth);
        std::iota(identity.begin(), identity.end(), 0);
        EXPECT_EQ(TableOf(depth), identity) << depth;
    }
}

TEST_F(Contrast, EveryLevelAndDepthFollowsTheDescription) {
    for (int level = 100; level >= 0; --level) {
        m_Renderer.SetContrastEnhance(level);
        ExpectTablesOfLevel(level);
    }
}

TEST_F(Contrast, LevelOneHundredInEightBits) {
    m_Renderer.SetContrastEnhance(100);
    const Row table = TableOf(8);
    for (size_t i = 0; i <= 100; ++i)
        EXPECT_EQ(table[i], 0) << i;
    EXPECT_EQ(table[101], 4);
    EXPECT_EQ(table[128], 130); // 256 * 28 / 55 is 130.3
    EXPECT_EQ(table[154], 251);
    for (size_t i = 155; i <= 255; ++i)
        EXPECT_EQ(table[i], 255) << i;
}

TEST_F(Contrast, LevelOneHundredInFourBits) {
    m_Renderer.SetContrastEnhance(100);
    EXPECT_EQ(TableOf(4), (Row{0, 0, 0, 0, 0, 0, 0, 5, 10, 15, 15, 15, 15, 15, 15, 15}));
}

TEST_F(Contrast, TwoBitsChangeFromLevelSixtyFourOn) {
    for (int level = 0; level <= 100; ++level) {
        m_Renderer.SetContrastEnhance(level);
        EXPECT_EQ(TableOf(2), level >= 64 ? (Row{0, 0, 3, 3}) : (Row{0, 1, 2, 3})) << level;
    }
}

TEST_F(Contrast, LevelsOutsideZeroToOneHundredChangeNothing) {
    m_Renderer.SetContrastEnhance(37);
    for (const int bad : {101, -1, 1000, -1000000, 0x7FFFFFFF}) {
        m_Renderer.SetContrastEnhance(bad);
        ExpectTablesOfLevel(37);
    }
}

TEST_F(Contrast, SettingTheSameLevelTwiceKeepsTheTables) {
    m_Renderer.SetContrastEnhance(73);
    ExpectTablesOfLevel(73);
    // A mark that building the tables again would overwrite.
    for (const int depth : Depths)
        *const_cast<unsigned char*>(m_Renderer.GetContrastLut(static_cast<unsigned char>(depth))) =
            77;
    m_Renderer.SetContrastEnhance(73);
    for (const int depth : Depths)
        EXPECT_EQ(TableOf(depth)[0], 77) << depth;
    m_Renderer.SetContrastEnhance(72);
    ExpectTablesOfLevel(72);
}

TEST_F(Contrast, OtherDepthsHaveNoTable) {
    for (int depth = 0; depth < 256; ++depth) {
        const bool known = std::ranges::find(Depths, depth) != std::end(Depths);
        EXPECT_EQ(m_Renderer.GetContrastLut(static_cast<unsigned char>(depth)) != nullptr, known)
            << depth;
    }
}

TEST_F(Contrast, AppliesTheTableOfTheDepthToTheRectangleAlone) {
    constexpr size_t Stride = 50;
    const std::vector<char> skips(6, 0);
    const auto* const mask = reinterpret_cast<const bool*>(skips.data());
    for (const int level : {1, 3, 4, 15, 16, 63, 64, 99, 100}) {
        m_Renderer.SetContrastEnhance(level);
        for (const int depth : Depths) {
            tests::GuardedBuffer<unsigned char> luma(Stride * 20);
            FillRamp(luma, depth);
            m_Renderer.ApplyContrastEnhancement(48, 20, Stride, luma.Data(),
                                                static_cast<unsigned char>(depth), mask);
            for (size_t i = 0; i < luma.Count(); ++i) {
                const int sample = static_cast<int>(i % (size_t{1} << depth));
                ASSERT_EQ(luma[i], i % Stride < 48 ? Stretched(sample, level, depth) : sample)
                    << "level " << level << ", depth " << depth << ", index " << i;
            }
            EXPECT_TRUE(luma.GuardsIntact());
        }
    }
}

TEST_F(Contrast, AtLevelThreeEightBitsWorkAndSixDoNothing) {
    m_Renderer.SetContrastEnhance(3);
    const bool mask[1] = {false};
    tests::GuardedBuffer<unsigned char> luma(256);
    FillRamp(luma, 8);
    m_Renderer.ApplyContrastEnhancement(16, 16, 16, luma.Data(), 8, mask);
    EXPECT_EQ(luma[3], 0);
    EXPECT_EQ(luma[4], 1); // 256 * 1 / 249
    EXPECT_EQ(luma[252], 255);
    // Not even samples that are deeper than they are said to be.
    FillRamp(luma, 8);
    m_Renderer.ApplyContrastEnhancement(16, 16, 16, luma.Data(), 6, mask);
    for (size_t i = 0; i < 256; ++i)
        EXPECT_EQ(luma[i], i);
}

TEST_F(Contrast, LevelZeroUnknownDepthsAndEmptyRectanglesDoNothing) {
    const bool mask[1] = {false};
    tests::GuardedBuffer<unsigned char> luma(256);
    FillRamp(luma, 8);
    const auto expectUntouched = [&](const char* what) {
        for (size_t i = 0; i < 256; ++i)
            ASSERT_EQ(luma[i], i) << what;
    };
    for (const int depth : Depths)
        m_Renderer.ApplyContrastEnhancement(16, 16, 16, luma.Data(),
                                            static_cast<unsigned char>(depth), mask);
    expectUntouched("level 0");
    m_Renderer.SetContrastEnhance(100);
    for (const int depth : {0, 1, 7, 9, 10, 16, 255})
        m_Renderer.ApplyContrastEnhancement(16, 16, 16, luma.Data(),
                                            static_cast<unsigned char>(depth), mask);
    expectUntouched("unknown depths");
    m_Renderer.ApplyContrastEnhancement(0, 16, 16, luma.Data(), 8, mask);
    m_Renderer.ApplyContrastEnhancement(16, 0, 16, luma.Data(), 8, mask);
    expectUntouched("empty rectangles");
}

TEST_F(Contrast, SkippedMacroblocksKeepTheirLuma) {
    tests::Random random;
    m_Renderer.SetContrastEnhance(50);
    for (int run = 0; run < 50; ++run) {
        const size_t columns = random.Below(size_t{5}) + 1;
        const size_t rows = random.Below(size_t{4}) + 1;
        const size_t height = rows * 16 - random.Below(size_t{16});
        const size_t stride = columns * 16 + random.Below(size_t{40});
        const auto mask = std::make_unique<bool[]>(columns * rows);
        std::generate_n(mask.get(), columns * rows, [&] { return random.OneIn(2); });
        tests::GuardedBuffer<unsigned char> luma(stride * height);
        FillRamp(luma, 8);
        m_Renderer.ApplyContrastEnhancement(static_cast<unsigned short>(columns * 16),
                                            static_cast<unsigned short>(height), stride,
                                            luma.Data(), 8, mask.get());
        for (size_t i = 0; i < luma.Count(); ++i) {
            const size_t x = i % stride;
            const bool stretched = x < columns * 16 && !mask[i / stride / 16 * columns + x / 16];
            const int sample = static_cast<int>(i % 256);
            ASSERT_EQ(luma[i], stretched ? Stretched(sample, 50, 8) : sample) << i;
        }
        EXPECT_TRUE(luma.GuardsIntact());
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder
