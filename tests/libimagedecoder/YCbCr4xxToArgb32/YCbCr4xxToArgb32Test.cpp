#include "tests/libimagedecoder/YCbCr4xxToArgb32/ConversionFixture.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

INSTANTIATE_TEST_SUITE_P(YCbCr4xxToArgb32, YCbCr4xxToArgb32Variant,
                         testing::ValuesIn(VariantsOfThisProcessor()), VariantTestName);

TEST_P(YCbCr4xxToArgb32Variant, AnnouncesItselfOnceAndTellsItsAlignment) {
    EXPECT_EQ(m_Logger.m_vLines,
              (std::vector<std::string>{"YCbCr420 to ARGB conversion is " +
                                        AnnouncedName(GetParam()) + " accelerated."}));
    EXPECT_EQ(m_pKernel->GetDataAlignmentBytes(), ExpectedAlignment(GetParam()));
}

TEST_P(YCbCr4xxToArgb32Variant, NeutralChromaKeepsBlackAndWhite) {
    for (const Sampling& sampling : AllSamplings) {
        EXPECT_EQ(ConvertOneColour(sampling, 0, 128, 128), 0xFF000000U);
        EXPECT_EQ(ConvertOneColour(sampling, 255, 128, 128), 0xFFFFFFFFU);
    }
}

TEST_P(YCbCr4xxToArgb32Variant, MostRedChromaClampsRed) {
    // 128 + 178 and, floored either way, 128 - 91.
    for (const Sampling& sampling : AllSamplings)
        EXPECT_EQ(ConvertOneColour(sampling, 128, 128, 255), 0xFFFF2580U);
}

TEST_P(YCbCr4xxToArgb32Variant, LeastChromaShowsTheVariantsRounding) {
    // Cr 0: -179.375 and 91.375, Cb 0: -226.75 and 44. The portable rule rounds, the other floors.
    // Green is far beyond 255 unless luma is small.
    const bool portable = IsPortable(GetParam());
    for (const Sampling& sampling : AllSamplings) {
        EXPECT_EQ(ConvertOneColour(sampling, 255, 128, 0), portable ? 0xFF4CFFFFU : 0xFF4BFFFFU);
        EXPECT_EQ(ConvertOneColour(sampling, 255, 0, 128), 0xFFFFFF1CU);
        EXPECT_EQ(ConvertOneColour(sampling, 0, 0, 0), 0xFF008700U);
    }
}

TEST_P(YCbCr4xxToArgb32Variant, EmptyRectangleTouchesNothing) {
    for (const Sampling& sampling : AllSamplings) {
        for (const auto& [width, height] : {std::pair{0, 16}, std::pair{16, 0}, std::pair{0, 0}}) {
            std::uint32_t word = Untouched;
            const std::uint8_t sample = 0;
            (m_pKernel.get()->*sampling.convert)(
                &word, &sample, &sample, &sample, static_cast<unsigned short>(width),
                static_cast<unsigned short>(height), 16, 16, 16, nullptr);
            EXPECT_EQ(word, Untouched);
        }
    }
}

TEST_P(YCbCr4xxToArgb32Variant, FullMaskLeavesTheDestination) {
    for (const Sampling& sampling : AllSamplings) {
        Picture picture(70, 35);
        std::fill_n(picture.mask.get(), 15, true);
        picture.ConvertWith(*m_pKernel, sampling);
        EXPECT_EQ(picture.destination, Words(picture.Pixels(), Untouched));
    }
}

TEST_P(YCbCr4xxToArgb32Variant, MaskedFirstMacroblockLeavesItsSixteenColumns) {
    for (const Sampling& sampling : AllSamplings) {
        Picture picture(32, 16);
        picture.mask[0] = true;
        picture.ConvertWith(*m_pKernel, sampling);
        for (std::size_t n = 0; n < picture.Pixels(); ++n)
            ASSERT_EQ(picture.destination[n] == Untouched, n % 32 < 16) << n;
    }
}

TEST_P(YCbCr4xxToArgb32Variant, MaskIndexCountsPixelsWhereTheWidthIsNoMultipleOfSixteen) {
    // 40 pixels: the second row of macroblocks begins at entry 40 / 16 = 2, which the third
    // macroblock of the first row uses as well.
    for (const Sampling& sampling : AllSamplings) {
        Picture picture(40, 32);
        picture.mask[2] = true;
        picture.ConvertWith(*m_pKernel, sampling);
        for (std::size_t n = 0; n < picture.Pixels(); ++n) {
            const bool masked = n / 40 < 16 ? n % 40 >= 32 : n % 40 < 16;
            ASSERT_EQ(picture.destination[n] == Untouched, masked) << n;
        }
    }
}

TEST_P(YCbCr4xxToArgb32Variant, OddLastColumnStaysUnwrittenWhenChromaIsHalved) {
    for (const Sampling& sampling : {Sampling420, Sampling422}) {
        Picture picture(17, 16);
        picture.ConvertWith(*m_pKernel, sampling);
        for (std::size_t n = 0; n < picture.Pixels(); ++n)
            ASSERT_EQ(picture.destination[n] == Untouched, n % 17 == 16) << sampling.name;
    }
}

TEST_P(YCbCr4xxToArgb32Variant, OddLastRowStaysUnwrittenIn420Only) {
    for (const Sampling& sampling : AllSamplings) {
        Picture picture(16, 17);
        picture.ConvertWith(*m_pKernel, sampling);
        for (std::size_t n = 0; n < picture.Pixels(); ++n)
            ASSERT_EQ(picture.destination[n] == Untouched, n / 16 == 16 && sampling.divisors.y == 2)
                << sampling.name;
    }
}

TEST(YCbCr4xxToArgb32, VariantsDifferByOneInRedAndBlueAndByTwoInGreen) {
    tests::RecordingLogger logger;
    std::vector<Words> results;
    for (const Variant& variant : VariantsOfThisProcessor()) {
        Picture picture(256, 256);
        std::ranges::fill(picture.y, std::uint8_t{128});
        for (std::size_t n = 0; n < picture.Pixels(); ++n) {
            picture.cb[n] = static_cast<std::uint8_t>(n);
            picture.cr[n] = static_cast<std::uint8_t>(n / 256);
        }
        picture.ConvertWith(*variant.m_pMake(&logger), Sampling444);
        results.push_back(picture.destination);
    }
    const auto largestDifference = [&results](int shift) {
        int largest = 0;
        for (std::size_t n = 0; n < results[0].size(); ++n) {
            const auto channel = [n, shift](const Words& words) {
                return static_cast<int>((words[n] >> shift) & 0xFF);
            };
            largest = std::max(largest, std::abs(channel(results[0]) - channel(results[1])));
        }
        return largest;
    };
    EXPECT_EQ(largestDifference(0), 1);
    EXPECT_EQ(largestDifference(8), 2);
    EXPECT_EQ(largestDifference(16), 1);
    EXPECT_EQ(results.back(), results[1]) << "the accelerated variants agree";
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
