#include "tests/libimagedecoder/YCbCr4xxToArgb32/ConversionFixture.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"

// The variants against the model, on random geometry and on every colour.

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

using tests::GuardedBuffer;
using tests::Random;

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

} // namespace

TEST_P(YCbCr4xxToArgb32Variant, AllSizesStridesAlignmentsAndMasksFollowTheModel) {
    Random random;
    for (const Sampling& sampling : AllSamplings)
        for (std::size_t width = 0; width <= 70; ++width)
            for (std::size_t height = 0; height <= 35; ++height)
                ASSERT_NO_FATAL_FAILURE(ExpectModelResult(random, *m_pKernel, sampling,
                                                          RuleOf(GetParam()), width, height));
}

TEST_P(YCbCr4xxToArgb32Variant, WideRectanglesFollowTheModel) {
    Random random;
    for (const Sampling& sampling : AllSamplings)
        for (int round = 0; round < 20; ++round)
            ASSERT_NO_FATAL_FAILURE(
                ExpectModelResult(random, *m_pKernel, sampling, RuleOf(GetParam()),
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

TEST_P(YCbCr4xxToArgb32Variant, EveryColourFollowsTheModelInEverySampling) {
    std::vector<EveryColourOfOneCb> tests;
    for (const Sampling& sampling : AllSamplings)
        tests.emplace_back(sampling);
    Words expected(65536);
    for (int cb = 0; cb < 256; ++cb) {
        for (int cr = 0; cr < 256; ++cr)
            for (int y = 0; y < 256; ++y)
                expected[static_cast<std::size_t>(256 * cr + y)] =
                    model::ToArgb(y, cb, cr, RuleOf(GetParam()));
        for (EveryColourOfOneCb& test : tests) {
            std::ranges::fill(test.picture.cb, static_cast<std::uint8_t>(cb));
            test.picture.ConvertWith(*m_pKernel, test.sampling);
            ASSERT_TRUE(test.Equals(expected)) << test.sampling.name << " Cb " << cb;
        }
    }
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
