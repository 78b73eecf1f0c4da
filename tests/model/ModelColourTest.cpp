#include "tests/model/ModelColour.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

TEST(ModelColour, NeutralChromaGivesGrey) {
    for (const KernelRule rule : {KernelRule::Portable, KernelRule::Accelerated}) {
        EXPECT_EQ(ToArgb(0, 128, 128, rule), 0xFF000000u);
        EXPECT_EQ(ToArgb(255, 128, 128, rule), 0xFFFFFFFFu);
    }
}

TEST(ModelColour, PortableProductsAreRounded) {
    // 128 + 178 is clamped, 128 - 91 is 37.
    EXPECT_EQ(ToArgb(128, 128, 255, KernelRule::Portable), 0xFFFF2580u);
}

TEST(ModelColour, AcceleratedGreenFloorsTwice) {
    // -2819 * 8 / 65536 and -5850 * 8 / 65536 round down to -1 each; the portable green has
    // (352 + 512) >> 10 = 0 and (731 + 512) >> 10 = 1.
    EXPECT_EQ(ToArgb(100, 129, 129, KernelRule::Accelerated), 0xFF656265u);
    EXPECT_EQ(ToArgb(100, 129, 129, KernelRule::Portable), 0xFF656366u);
}

TEST(ModelColour, ReducedDepthCornersAreBlackAndWhite) {
    EXPECT_EQ(ReducedDepthToArgb(15, 0, 4, 4), 0xFFFFFFFFu);
    EXPECT_EQ(ReducedDepthToArgb(0, 0, 4, 4), 0xFF000000u);
}

TEST(ModelColour, PackedChromaHasTheCbLevelAbove) {
    // Cb pattern 7 of 3 bits is 86, Cr pattern 0 is 128.
    EXPECT_EQ(ReducedDepthToArgb(1, 7 << 3, 2, 3), ToArgb(85, 86, 128, KernelRule::Portable));
}

TEST(ModelColour, DeeperLumaStopsShortOfWhite) {
    EXPECT_EQ(ExpandLuma(31, 5), 248);
    EXPECT_EQ(ExpandLuma(63, 6), 252);
    EXPECT_EQ(ExpandLuma(15, 4), 255);
}

TEST(ModelColour, SecondMostNegativeChromaLevelIsOne) {
    EXPECT_EQ(ExpandChroma(5, 3), 1);
    EXPECT_EQ(ExpandChroma(9, 4), 1);
    EXPECT_EQ(ExpandChroma(17, 5), 1);
}

TEST(ModelContrast, LevelHundredStretchesTheMiddle) {
    EXPECT_EQ(StretchContrast(100, 100, 8), 0);
    EXPECT_EQ(StretchContrast(101, 100, 8), 4);
    EXPECT_EQ(StretchContrast(154, 100, 8), 251);
    EXPECT_EQ(StretchContrast(155, 100, 8), 255);
    EXPECT_EQ(StretchContrast(7, 100, 4), 5);
    EXPECT_EQ(StretchContrast(8, 100, 4), 10);
    EXPECT_EQ(StretchContrast(1, 64, 2), 0);
    EXPECT_EQ(StretchContrast(1, 63, 2), 1);
}

TEST(ModelContrast, LevelZeroChangesNothing) {
    for (const int bits : {8, 6, 5, 4, 3, 2})
        for (int64_t luma = 0; luma < 1 << bits; ++luma)
            EXPECT_EQ(StretchContrast(luma, 0, bits), luma);
}

TEST(ModelPostProcessing, BrightnessIsPulledToTheLuma) {
    // Brightness of (200, 100, 50): (77 * 200 + 150 * 100 + 29 * 50) / 256 = 124.
    EXPECT_EQ(AdjustToLuma(0xFFC86432, 62), 0xFF643219u);
    // 255 - 55 * 65 / 131, 255 - 155 * 65 / 131, 255 - 205 * 65 / 131.
    EXPECT_EQ(AdjustToLuma(0xFFC86432, 190), 0xFFE4B39Au);
}

TEST(ModelPostProcessing, ADifferenceOfOneStays) {
    for (const int luma : {123, 124, 125})
        EXPECT_EQ(AdjustToLuma(0xFFC86432, luma), 0xFFC86432u);
    EXPECT_NE(AdjustToLuma(0xFFC86432, 122), 0xFFC86432u);
    EXPECT_NE(AdjustToLuma(0xFFC86432, 126), 0xFFC86432u);
}

} // namespace

} // namespace Vostrel::model
