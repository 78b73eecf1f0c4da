#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.h"
#include "tests/model/KernelModels.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

struct Variant {
    const char* name;
    std::unique_ptr<IYCbCr4xxToArgb32> (*create)(ILogger*);
    model::KernelRule rule;
    std::string announcement;
    int alignment;
};

void PrintTo(const Variant& variant, std::ostream* out) {
    *out << variant.name;
}

namespace {

using model::ChromaDivisors;
using model::KernelRule;
using tests::GuardedBuffer;
using tests::Random;
using Words = std::vector<std::uint32_t>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t Untouched = 0x12345678;

template <typename Kernel>
std::unique_ptr<IYCbCr4xxToArgb32> Make(ILogger* logger) {
    return std::make_unique<Kernel>(logger);
}

std::vector<Variant> VariantsOfThisProcessor() {
    std::vector<Variant> variants{{"Native", Make<YCbCr4xxToArgb32Native>, KernelRule::Portable,
                                   "YCbCr420 to ARGB conversion is not accelerated.", 8},
                                  {"Sse2", Make<YCbCr4xxToArgb32Sse2>, KernelRule::Accelerated,
                                   "YCbCr420 to ARGB conversion is SSE2 accelerated.", 16}};
    if ((CpuArch::GetInstrSetArchExtFlags(nullptr) & InstrSetArchExt::Avx2) != 0)
        variants.push_back({"Avx2", Make<YCbCr4xxToArgb32Avx2>, KernelRule::Accelerated,
                            "YCbCr420 to ARGB conversion is AVX2 accelerated.", 32});
    return variants;
}

/// One of the three conversions and its chroma geometry.
struct Sampling {
    const char* name;
    decltype(&IYCbCr4xxToArgb32::Convert420) convert;
    ChromaDivisors divisors;
};

constexpr Sampling Sampling420{"4:2:0", &IYCbCr4xxToArgb32::Convert420, {2, 2}};
constexpr Sampling Sampling422{"4:2:2", &IYCbCr4xxToArgb32::Convert422, {2, 1}};
constexpr Sampling Sampling444{"4:4:4", &IYCbCr4xxToArgb32::Convert444, {1, 1}};
constexpr Sampling AllSamplings[] = {Sampling420, Sampling422, Sampling444};

/// Samples for a rectangle with packed rows, a mask and where the pixels go.
struct Picture {
    Picture(unsigned short pictureWidth, unsigned short pictureHeight)
        : width(pictureWidth), height(pictureHeight), y(Pixels()), cb(Pixels()), cr(Pixels()),
          destination(Pixels(), Untouched),
          mask(new bool[(Pixels() >> 8) + width / 16U + height / 16U + 2]()) {}

    std::size_t Pixels() const { return std::size_t{width} * height; }

    void ConvertWith(const IYCbCr4xxToArgb32& kernel, const Sampling& sampling) {
        (kernel.*sampling.convert)(destination.data(), y.data(), cb.data(), cr.data(), width,
                                   height, width, width, width / sampling.divisors.x, mask.get());
    }

    Words ModelResult(const Sampling& sampling, KernelRule rule) const {
        Words words(Pixels(), Untouched);
        model::ConvertToArgb({y.data(), cb.data(), cr.data(), width, height, width,
                              width / sampling.divisors.x, mask.get()},
                             sampling.divisors, rule, words.data(), width);
        return words;
    }

    unsigned short width;
    unsigned short height;
    Bytes y;
    Bytes cb;
    Bytes cr;
    Words destination;
    std::unique_ptr<bool[]> mask;
};

class YCbCr4xxToArgb32Variant : public testing::TestWithParam<Variant> {
protected:
    /// One colour on a block large enough for every step width.
    std::uint32_t ConvertOneColour(const Sampling& sampling, std::uint8_t y, std::uint8_t cb,
                                   std::uint8_t cr) {
        Picture picture(64, 2);
        std::ranges::fill(picture.y, y);
        std::ranges::fill(picture.cb, cb);
        std::ranges::fill(picture.cr, cr);
        picture.ConvertWith(*m_pKernel, sampling);
        EXPECT_EQ(picture.destination, Words(128, picture.destination[0]));
        return picture.destination[0];
    }

    tests::RecordingLogger m_Logger;
    std::unique_ptr<IYCbCr4xxToArgb32> m_pKernel = GetParam().create(&m_Logger);
};

INSTANTIATE_TEST_SUITE_P(YCbCr4xxToArgb32, YCbCr4xxToArgb32Variant,
                         testing::ValuesIn(VariantsOfThisProcessor()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(YCbCr4xxToArgb32Variant, AnnouncesItselfOnceAndTellsItsAlignment) {
    EXPECT_EQ(m_Logger.m_vLines, std::vector<std::string>{GetParam().announcement});
    EXPECT_EQ(m_pKernel->GetDataAlignmentBytes(), GetParam().alignment);
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
    const bool portable = GetParam().rule == KernelRule::Portable;
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

std::size_t RandomStride(Random& random, std::size_t width) {
    return width + random.Below(std::size_t{40});
}

/// A random plane whose rows lie stride elements apart; under AddressSanitizer the gaps are
/// forbidden. Extreme samples come up more often than by chance.
struct GuardedPlane {
    GuardedPlane(Random& random, std::size_t width, std::size_t height, std::size_t rowStride)
        : stride(rowStride),
          buffer(height == 0 ? 0 : (height - 1) * stride + width, random.Below(std::size_t{33})) {
        constexpr std::uint8_t Extremes[] = {0, 255, 128, 127};
        for (std::uint8_t& sample : buffer)
            sample = random.OneIn(4) ? Extremes[random.Below(4)] : random.Byte();
        for (std::size_t row = 1; row < height; ++row)
            buffer.Hide(row * stride - (stride - width), stride - width);
    }
    ~GuardedPlane() { buffer.Show(); }

    std::size_t stride;
    GuardedBuffer<std::uint8_t> buffer;
};

void ExpectModelResult(Random& random, const IYCbCr4xxToArgb32& kernel, const Sampling& sampling,
                       KernelRule rule, std::size_t width, std::size_t height) {
    const auto [divX, divY] = sampling.divisors;
    const std::size_t chromaWidth = width / divX;
    const std::size_t chromaHeight = height / divY;
    const std::size_t chromaStride = RandomStride(random, chromaWidth);
    GuardedPlane y(random, chromaWidth * divX, chromaHeight * divY, RandomStride(random, width));
    GuardedPlane cb(random, chromaWidth, chromaHeight, chromaStride);
    GuardedPlane cr(random, chromaWidth, chromaHeight, chromaStride);

    GuardedBuffer<bool> mask(((((height + 15) >> 4) * width) >> 4) + (width >> 4) + 1);
    const unsigned int sparseness = 1 + random.Below(5U);
    for (bool& skip : mask)
        skip = !random.OneIn(sparseness);

    const std::size_t stride = RandomStride(random, width);
    GuardedBuffer<std::uint32_t> destination(height * stride, 4 * random.Below(std::size_t{8}));
    std::fill(destination.begin(), destination.end(), Untouched);
    Words expected(destination.Count(), Untouched);

    model::ConvertToArgb({y.buffer.Data(), cb.buffer.Data(), cr.buffer.Data(), width, height,
                          y.stride, chromaStride, mask.Data()},
                         sampling.divisors, rule, expected.data(), stride);
    (kernel.*sampling.convert)(destination.Data(), y.buffer.Data(), cb.buffer.Data(),
                               cr.buffer.Data(), static_cast<unsigned short>(width),
                               static_cast<unsigned short>(height), stride, y.stride, chromaStride,
                               mask.Data());
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), destination.begin()))
        << sampling.name << ' ' << width << 'x' << height;
    ASSERT_TRUE(destination.GuardsIntact());
}

TEST_P(YCbCr4xxToArgb32Variant, AllSizesStridesAlignmentsAndMasksFollowTheModel) {
    Random random;
    for (const Sampling& sampling : AllSamplings)
        for (std::size_t width = 0; width <= 70; ++width)
            for (std::size_t height = 0; height <= 35; ++height)
                ASSERT_NO_FATAL_FAILURE(ExpectModelResult(random, *m_pKernel, sampling,
                                                          GetParam().rule, width, height));
}

TEST_P(YCbCr4xxToArgb32Variant, WideRectanglesFollowTheModel) {
    Random random;
    for (const Sampling& sampling : AllSamplings)
        for (int round = 0; round < 20; ++round)
            ASSERT_NO_FATAL_FAILURE(
                ExpectModelResult(random, *m_pKernel, sampling, GetParam().rule,
                                  static_cast<std::size_t>(random.Between(71, 2000)),
                                  static_cast<std::size_t>(random.Between(0, 40))));
}

TEST_P(YCbCr4xxToArgb32Variant, SizeLimitsOfARectangleDoNotOverflow) {
    // 65535 pixels a row times 65535 rows pass 32 bits; with the stride 0 they need no memory.
    const std::size_t edge = 65535;
    GuardedBuffer<std::uint8_t> samples(edge);
    GuardedBuffer<std::uint32_t> destination(edge);
    GuardedBuffer<bool> mask(((4095 * edge) >> 4) + 4096);
    std::fill(mask.begin(), mask.end(), true);
    mask[mask.Count() - 1] = false;
    std::fill(destination.begin(), destination.end(), Untouched);
    m_pKernel->Convert444(destination.Data(), samples.Data(), samples.Data(), samples.Data(), 65535,
                          65535, 0, 0, 0, mask.Data());
    for (std::size_t x = 0; x < edge; ++x)
        ASSERT_EQ(destination[x] == Untouched, x < 65520) << x;
}

/// Every luma along a row, every Cr from chroma row to chroma row, one Cb.
struct EveryColourOfOneCb {
    explicit EveryColourOfOneCb(const Sampling& chromaSampling)
        : sampling(chromaSampling),
          picture(256, static_cast<unsigned short>(256 * sampling.divisors.y)) {
        for (std::size_t n = 0; n < picture.Pixels(); ++n)
            picture.y[n] = static_cast<std::uint8_t>(n);
        const std::size_t chromaStride = 256 / sampling.divisors.x;
        for (std::size_t n = 0; n < 256 * chromaStride; ++n)
            picture.cr[n] = static_cast<std::uint8_t>(n / chromaStride);
    }

    /// The two rows of a pair in 4:2:0 must be the same; the expected words have one row each.
    bool Equals(const Words& expected) const {
        for (std::size_t row = 0; row < picture.height; ++row)
            if (!std::equal(&picture.destination[256 * row], &picture.destination[256 * row] + 256,
                            &expected[256 * (row / sampling.divisors.y)]))
                return false;
        return true;
    }

    Sampling sampling;
    Picture picture;
};

TEST_P(YCbCr4xxToArgb32Variant, EveryColourFollowsTheModelInEverySampling) {
    std::vector<EveryColourOfOneCb> tests;
    for (const Sampling& sampling : AllSamplings)
        tests.emplace_back(sampling);
    Words expected(65536);
    for (int cb = 0; cb < 256; ++cb) {
        for (int cr = 0; cr < 256; ++cr)
            for (int y = 0; y < 256; ++y)
                expected[static_cast<std::size_t>(256 * cr + y)] =
                    model::ToArgb(y, cb, cr, GetParam().rule);
        for (EveryColourOfOneCb& test : tests) {
            std::ranges::fill(test.picture.cb, static_cast<std::uint8_t>(cb));
            test.picture.ConvertWith(*m_pKernel, test.sampling);
            ASSERT_TRUE(test.Equals(expected)) << test.sampling.name << " Cb " << cb;
        }
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
        picture.ConvertWith(*variant.create(&logger), Sampling444);
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

} // namespace
} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
