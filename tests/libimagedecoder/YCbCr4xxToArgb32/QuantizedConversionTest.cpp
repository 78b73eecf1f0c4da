#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/libimagedecoder/KernelTables.h"
#include "tests/model/KernelModels.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// Reduced-depth samples through every kernel variant. All variants have one rule here: the colours
// of the table, which the model fills.

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

using model::ChromaDivisors;
using tests::GuardedBuffer;
using tests::Random;

constexpr std::uint32_t Untouched = 0x12345678;

struct Depths {
    unsigned int luma;
    unsigned int chroma;
};
constexpr Depths AllDepths[] = {{2, 3}, {2, 4}, {3, 3}, {3, 4}, {4, 3},
                                {4, 4}, {5, 4}, {5, 5}, {6, 4}, {6, 5}};

/// One of the three conversions and its chroma geometry.
struct Sampling {
    const char* name;
    decltype(&IYCbCr4xxToArgb32::ConvertQuantized420) convert;
    ChromaDivisors divisors;
};
constexpr Sampling AllSamplings[] = {
    {"4:2:0", &IYCbCr4xxToArgb32::ConvertQuantized420, {2, 2}},
    {"4:2:2", &IYCbCr4xxToArgb32::ConvertQuantized422, {2, 1}},
    {"4:4:4", &IYCbCr4xxToArgb32::ConvertQuantized444, {1, 1}},
};

std::vector<std::uint32_t> ModelTable(Depths depths) {
    const unsigned int chromaValues = 1U << 2 * depths.chroma;
    std::vector<std::uint32_t> table(std::size_t{chromaValues} << depths.luma);
    for (std::size_t index = 0; index < table.size(); ++index)
        table[index] = model::ReducedDepthToArgb(
            static_cast<int64_t>(index / chromaValues), static_cast<int64_t>(index % chromaValues),
            static_cast<int>(depths.luma), static_cast<int>(depths.chroma));
    return table;
}

/// Random samples of all 8 and 16 bits, so that bits above the depths are there, with rows apart;
/// under AddressSanitizer what lies between the rows is forbidden.
template <typename Sample>
struct Plane {
    Plane(Random& random, std::size_t width, std::size_t height)
        : stride(width + random.Below(std::size_t{40})),
          samples(height == 0 ? 0 : (height - 1) * stride + width,
                  sizeof(Sample) * random.Below(std::size_t{17})) {
        for (Sample& sample : samples)
            sample = static_cast<Sample>(random.Bits());
        for (std::size_t row = 1; row < height; ++row)
            samples.Hide(row * stride - (stride - width), stride - width);
    }
    ~Plane() { samples.Show(); }

    std::size_t stride;
    GuardedBuffer<Sample> samples;
};

/// A random rectangle, its mask and where the pixels go.
struct Picture {
    Picture(Random& random, const Sampling& chromaSampling, std::size_t pictureWidth,
            std::size_t pictureHeight)
        : sampling(chromaSampling), width(pictureWidth), height(pictureHeight),
          luma(random, width / divisors.x * divisors.x, height / divisors.y * divisors.y),
          chroma(random, width / divisors.x, height / divisors.y),
          mask(((((height + 15) >> 4) * width) >> 4) + (width >> 4) + 1),
          stride(width + random.Below(std::size_t{40})),
          destination(height * stride, 4 * random.Below(std::size_t{8})) {
        const unsigned int sparseness = 1 + random.Below(5U);
        for (bool& skip : mask)
            skip = !random.OneIn(sparseness);
        std::fill(destination.begin(), destination.end(), Untouched);
    }

    void ConvertWith(const IYCbCr4xxToArgb32& kernel, const QuantizedColours& colours) {
        (kernel.*sampling.convert)({destination.Data(), luma.samples.Data(), chroma.samples.Data(),
                                    width, height, stride, luma.stride, chroma.stride, mask.Data()},
                                   colours);
    }

    std::vector<std::uint32_t> Expected(Depths depths, const std::vector<std::uint32_t>& table) {
        std::vector<std::uint32_t> words(destination.Count(), Untouched);
        for (std::size_t y = 0; y < height / divisors.y * divisors.y; ++y) {
            for (std::size_t x = 0; x < width / divisors.x * divisors.x; ++x) {
                if (mask[(((y >> 4) * width) >> 4) + (x >> 4)])
                    continue;
                const std::size_t level = luma.samples[y * luma.stride + x] % (1U << depths.luma);
                const std::size_t value =
                    chroma.samples[y / divisors.y * chroma.stride + x / divisors.x] %
                    (1U << 2 * depths.chroma);
                words[y * stride + x] = table[(level << 2 * depths.chroma) + value];
            }
        }
        return words;
    }

    Sampling sampling;
    ChromaDivisors divisors = sampling.divisors;
    std::size_t width;
    std::size_t height;
    Plane<std::uint8_t> luma;
    Plane<std::uint16_t> chroma;
    GuardedBuffer<bool> mask;
    std::size_t stride;
    GuardedBuffer<std::uint32_t> destination;
};

using Variant = KernelVariant<std::shared_ptr<IYCbCr4xxToArgb32>>;

class QuantizedConversion : public testing::TestWithParam<Variant> {
protected:
    void ExpectTableColours(const Sampling& sampling, Depths depths,
                            const std::vector<std::uint32_t>& table, std::size_t width,
                            std::size_t height) {
        Picture picture(m_Random, sampling, width, height);
        picture.ConvertWith(*m_pKernel, {depths.luma, depths.chroma, table.data()});
        const std::vector<std::uint32_t> expected = picture.Expected(depths, table);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), picture.destination.begin()))
            << sampling.name << ' ' << width << 'x' << height << ", depths " << depths.luma << ' '
            << depths.chroma;
        ASSERT_TRUE(picture.destination.GuardsIntact());
    }

    Random m_Random;
    tests::RecordingLogger m_Logger;
    std::shared_ptr<IYCbCr4xxToArgb32> m_pKernel = GetParam().m_pMake(&m_Logger);
};

INSTANTIATE_TEST_SUITE_P(
    , QuantizedConversion,
    testing::ValuesIn(RunnableVariants(YCbCr4xxToArgb32Factory::GetVariants())), VariantTestName);

TEST_P(QuantizedConversion, EveryColourOfEveryPairOfDepthsIsTheTables) {
    // A row of 64 equal luma samples and one chroma row for each luma level and chroma value.
    constexpr std::size_t Width = 64;
    const bool unmasked[Width / 16] = {};
    for (const Depths depths : AllDepths) {
        const std::vector<std::uint32_t> table = ModelTable(depths);
        for (const Sampling& sampling : AllSamplings) {
            for (std::size_t index = 0; index < table.size(); ++index) {
                // What the bits above the depths hold must not matter.
                const auto high = static_cast<unsigned int>(m_Random.Bits());
                const auto level = static_cast<unsigned int>(index >> 2 * depths.chroma);
                const std::vector<std::uint8_t> luma(
                    2 * Width, static_cast<std::uint8_t>(high << depths.luma | level));
                const std::vector<std::uint16_t> chroma(
                    Width, static_cast<std::uint16_t>(high << 2 * depths.chroma |
                                                      index % (1U << 2 * depths.chroma)));
                std::vector<std::uint32_t> words(2 * Width, Untouched);
                (m_pKernel.get()->*sampling.convert)({words.data(), luma.data(), chroma.data(),
                                                      Width, sampling.divisors.y, Width, Width,
                                                      Width, unmasked},
                                                     {depths.luma, depths.chroma, table.data()});
                ASSERT_EQ(std::count(words.begin(), words.end(), table[index]),
                          static_cast<std::ptrdiff_t>(Width * sampling.divisors.y))
                    << sampling.name << " index " << index << ", depths " << depths.luma << ' '
                    << depths.chroma;
            }
        }
    }
}

constexpr std::size_t Heights[] = {0, 1, 2, 3, 15, 16, 17, 35};

TEST_P(QuantizedConversion, AllSizesStridesAlignmentsAndMasksFollowTheTable) {
    for (const Depths depths : AllDepths) {
        const std::vector<std::uint32_t> table = ModelTable(depths);
        for (const Sampling& sampling : AllSamplings)
            for (std::size_t width = 0; width <= 70; ++width)
                for (const std::size_t height : Heights)
                    ASSERT_NO_FATAL_FAILURE(
                        ExpectTableColours(sampling, depths, table, width, height));
    }
}

TEST_P(QuantizedConversion, WideRectanglesFollowTheTable) {
    for (const Depths depths : AllDepths) {
        const std::vector<std::uint32_t> table = ModelTable(depths);
        for (const Sampling& sampling : AllSamplings)
            ASSERT_NO_FATAL_FAILURE(ExpectTableColours(
                sampling, depths, table, static_cast<std::size_t>(m_Random.Between(71, 2000)),
                static_cast<std::size_t>(m_Random.Between(0, 40))));
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
