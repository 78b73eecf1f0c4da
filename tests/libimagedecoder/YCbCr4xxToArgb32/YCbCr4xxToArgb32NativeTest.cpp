#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"
#include "tests/libimagedecoder/YCbCr4xxToArgb32/ConversionFixture.h"

#include <cmath>

// What only the portable variant has: tables and work lines.

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

/// Lets a test see the tables and work lines.
class OpenNative : public YCbCr4xxToArgb32Native {
public:
    using YCbCr4xxToArgb32Native::m_viCbLine;
    using YCbCr4xxToArgb32Native::m_viCrLine;
    using YCbCr4xxToArgb32Native::m_viGLine;
    using YCbCr4xxToArgb32Native::s_puiClampLut;
    using YCbCr4xxToArgb32Native::s_viCbToGLut;
    using YCbCr4xxToArgb32Native::s_viCrToGLut;
    using YCbCr4xxToArgb32Native::s_vuiClampLut;
    using YCbCr4xxToArgb32Native::s_vuiYCbToBLut;
    using YCbCr4xxToArgb32Native::s_vuiYCrToRLut;
    using YCbCr4xxToArgb32Native::YCbCr4xxToArgb32Native;
};

int RoundedTerm(int coefficient, int sample) {
    return static_cast<int>(std::floor((coefficient * (sample - 128) + 512) / 1024.0));
}

void ExpectTablesFollowTheirFormulas() {
    for (int k = -256; k < 512; ++k) {
        ASSERT_EQ(OpenNative::s_vuiClampLut[static_cast<std::size_t>(k + 256)],
                  std::clamp(k, 0, 255));
        ASSERT_EQ(OpenNative::s_puiClampLut[k], std::clamp(k, 0, 255));
    }
    for (int v = 0; v < 256; ++v) {
        ASSERT_EQ(OpenNative::s_viCbToGLut[static_cast<std::size_t>(v)], RoundedTerm(352, v));
        ASSERT_EQ(OpenNative::s_viCrToGLut[static_cast<std::size_t>(v)], RoundedTerm(731, v));
        for (int y = 0; y < 256; ++y) {
            const auto index = static_cast<std::size_t>(256 * y + v);
            ASSERT_EQ(OpenNative::s_vuiYCrToRLut[index],
                      std::clamp(y + RoundedTerm(1435, v), 0, 255));
            ASSERT_EQ(OpenNative::s_vuiYCbToBLut[index],
                      std::clamp(y + RoundedTerm(1814, v), 0, 255));
        }
    }
}

} // namespace

TEST(YCbCr4xxToArgb32Native, TablesCanBeBuiltWithoutAnObject) {
    YCbCr4xxToArgb32Native::HookUpColorTransLuts();
    ExpectTablesFollowTheirFormulas();
    YCbCr4xxToArgb32Native::HookUpColorTransLuts();
    ExpectTablesFollowTheirFormulas();
    EXPECT_EQ(YCbCr4xxToArgb32Native::ArgbWord(128, 128, 255), 0xFFFF2580U);
}

TEST(YCbCr4xxToArgb32Native, WorkLinesGrowToHalfTheWidthAndNeverShrink) {
    tests::RecordingLogger logger;
    const OpenNative kernel(&logger);
    EXPECT_TRUE(kernel.m_viCrLine.empty());
    struct Step {
        unsigned short width;
        std::size_t size;
    };
    for (const Step& step : {Step{20, 10}, {48, 24}, {33, 24}, {2, 24}, {51, 25}}) {
        Picture picture(step.width, 2);
        picture.ConvertWith(kernel, Sampling420);
        EXPECT_EQ(kernel.m_viCrLine.size(), step.size);
        EXPECT_EQ(kernel.m_viGLine.size(), step.size);
        EXPECT_EQ(kernel.m_viCbLine.size(), step.size);
    }
}

TEST(YCbCr4xxToArgb32Native, WorkLinesAreUsedBy420Only) {
    tests::RecordingLogger logger;
    const OpenNative kernel(&logger);
    Picture picture(32, 16);
    picture.ConvertWith(kernel, Sampling422);
    picture.ConvertWith(kernel, Sampling444);
    EXPECT_TRUE(kernel.m_viCrLine.empty());
}

TEST(YCbCr4xxToArgb32Native, MaskedChromaColumnsAreNotLoaded) {
    tests::RecordingLogger logger;
    const OpenNative kernel(&logger);
    Picture picture(48, 2);
    picture.mask[1] = true;
    std::ranges::fill(picture.cb, std::uint8_t{7});
    std::ranges::fill(picture.cr, std::uint8_t{9});
    picture.ConvertWith(kernel, Sampling420);
    for (std::size_t column = 0; column < 24; ++column) {
        const bool masked = column / 8 == 1;
        EXPECT_EQ(kernel.m_viCbLine[column], masked ? 0 : 7);
        EXPECT_EQ(kernel.m_viCrLine[column], masked ? 0 : 9);
        EXPECT_EQ(kernel.m_viGLine[column], masked ? 0 : RoundedTerm(352, 7) + RoundedTerm(731, 9));
    }
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
