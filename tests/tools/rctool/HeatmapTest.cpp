#include "tools/rctool/Heatmap.h"
#include "tests/support/Random.h"
#include "tools/rctool/HeatmapLegend.h"

#include <gtest/gtest.h>

namespace Vostrel::rctool {
namespace {

using libimagedecoder::UpdateRectangle;

walker::Macroblock BlockAt(size_t left, size_t top, size_t bits) {
    walker::Macroblock block;
    block.m_place = {left, top};
    block.m_record.m_uiCount = bits;
    return block;
}

/// Adds to every pixel of a macroblock that lies on the screen.
void AddTo(std::vector<uint64_t>& sums, size_t width, size_t height, size_t left, size_t top,
           uint64_t bits) {
    for (size_t y = top; y < top + 16 && y < height; ++y) {
        for (size_t x = left; x < left + 16 && x < width; ++x)
            sums[y * width + x] += bits;
    }
}

TEST(Heatmap, SumsAreExactWhereverRectanglesBegin) {
    constexpr size_t Width = 75;
    constexpr size_t Height = 50;
    tests::Random random;
    for (const int multiple : {16, 8, 4, 2, 1}) {
        Heatmap heatmap(Width, Height, HeatmapKind::Bits);
        std::vector<uint64_t> sums(Width * Height);
        for (int update = 0; update < 30; ++update) {
            // The first ones are aligned, so that cells with sums have to be divided.
            const int step = update < 10 ? 16 : multiple;
            const auto x = static_cast<uint16_t>(random.Between(0, 90 / step) * step);
            const auto y = static_cast<uint16_t>(random.Between(0, 60 / step) * step);
            heatmap.BeginUpdate({x, y, 32, 16});
            for (const size_t left : {size_t{0}, size_t{16}}) {
                const size_t bits = size_t{1} + random.Below(1000U);
                heatmap.OnMacroblock(BlockAt(left, 0, bits));
                AddTo(sums, Width, Height, x + left, y, bits);
            }
        }
        for (size_t y = 0; y < Height; ++y) {
            for (size_t x = 0; x < Width; ++x)
                ASSERT_EQ(heatmap.At(x, y), sums[y * Width + x])
                    << multiple << ": " << x << ' ' << y;
        }
        EXPECT_EQ(heatmap.GetMost(), *std::max_element(sums.begin(), sums.end()));
    }
}

TEST(Heatmap, TheMostInOneUpdateIsThatOfAMacroblock) {
    Heatmap heatmap(32, 16, HeatmapKind::Bits);
    for (const size_t bits : {100U, 70U, 90U}) {
        heatmap.BeginUpdate({0, 0, 16, 16});
        heatmap.OnMacroblock(BlockAt(0, 0, bits));
    }
    EXPECT_EQ(heatmap.GetMostInOneUpdate(), 100U);
    EXPECT_EQ(heatmap.GetMost(), 260U);
}

TEST(Heatmap, ASumThatIsTooLargeStaysAtTheLargest) {
    Heatmap heatmap(16, 16, HeatmapKind::Bits);
    heatmap.BeginUpdate({0, 0, 16, 16});
    for (int i = 0; i < 3; ++i)
        heatmap.OnMacroblock(BlockAt(0, 0, 0x80000000));
    EXPECT_EQ(heatmap.At(0, 0), 0xFFFFFFFF);
}

TEST(HeatmapLegend, HasTheColoursInTheirOrderFromLittleToMost) {
    const HeatmapLegend legend("", 1000);
    const size_t middle = 20;
    EXPECT_EQ(legend.At(4, middle), GreyCount);
    EXPECT_EQ(legend.At(355, middle), HeatIndex(1000, 1000));
    for (size_t x = 5; x <= 355; ++x)
        EXPECT_GE(legend.At(x, middle), legend.At(x - 1, middle));
}

/// The legend's white pixels in the rows of the numbers, from one column on, as text.
std::vector<std::string> NumbersFrom(const HeatmapLegend& legend, size_t left, size_t columns) {
    std::vector<std::string> rows;
    for (size_t y = 28; y < 35; ++y) {
        rows.emplace_back();
        for (size_t x = left; x < left + columns; ++x)
            rows.back() += legend.At(x, y) == White ? '#' : '.';
    }
    return rows;
}

TEST(HeatmapLegend, HasTheNumbersAtBothEndsOfTheBar) {
    const HeatmapLegend legend("", 17);
    EXPECT_EQ(
        NumbersFrom(legend, 4, 5),
        (std::vector<std::string>{".###.", "#...#", "#..##", "#.#.#", "##..#", "#...#", ".###."}));
    EXPECT_EQ(NumbersFrom(legend, 344, 11),
              (std::vector<std::string>{"..#...#####", ".##.......#", "..#......#.", "..#.....#..",
                                        "..#....#...", "..#....#...", ".###...#..."}));
}

TEST(HeatmapLegend, NumbersThatAreTheSameComeOnce) {
    // 0 at the left end and 1 at the right, nothing between.
    const HeatmapLegend legend("", 1);
    for (const std::string& row : NumbersFrom(legend, 10, 330))
        EXPECT_EQ(row.find('#'), std::string::npos);
}

} // namespace
} // namespace Vostrel::rctool
