#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/InverseTransform/InverseIctNative.h"
#include "tests/libimagedecoder/KernelTables.h"
#include "tests/model/KernelModels.h"
#include "tests/model/ModelTransform.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

using model::KernelRule;
using model::TileTable;

using Variant = KernelVariant<std::shared_ptr<IInverseIct>>;

std::vector<Variant> VariantsOfThisProcessor() {
    return RunnableVariants(InverseIctFactory::GetVariants());
}

/// Element of a row of coefficients that holds a horizontal frequency.
int ColumnOf(const Variant& variant, int frequency) {
    constexpr int EvenFirst[8] = {0, 4, 1, 5, 2, 6, 3, 7};
    return IsPortable(variant) ? frequency : EvenFirst[frequency];
}

class InverseIctVariant : public testing::TestWithParam<Variant> {
protected:
    /// Lays the coefficients out as the kernel wants them and transforms them.
    TileTable Transform(const TileTable& coefficients) {
        return TransformBy(&IInverseIct::TransformTile, coefficients);
    }

    TileTable TransformLow(const TileTable& coefficients) {
        return TransformBy(&IInverseIct::TransformLowTile, coefficients);
    }

    using TransformFunction = void (IInverseIct::*)(short*, unsigned char*, unsigned long);

    TileTable TransformBy(TransformFunction transform, const TileTable& coefficients) {
        GuardedBuffer<short> block(64, Alignment());
        FillBlock(block, coefficients);
        GuardedBuffer<unsigned char> samples(64);
        IInverseIct& kernel = *m_pKernel;
        (kernel.*transform)(block.Data(), samples.Data(), 8);
        EXPECT_TRUE(block.GuardsIntact());
        EXPECT_TRUE(samples.GuardsIntact());
        TileTable result;
        std::copy(samples.begin(), samples.end(), result.begin());
        return result;
    }

    template <typename Block>
    void FillBlock(Block& block, const TileTable& coefficients) const {
        for (std::size_t n = 0; n < 64; ++n)
            block[8 * (n / 8) +
                  static_cast<std::size_t>(ColumnOf(GetParam(), static_cast<int>(n % 8)))] =
                static_cast<short>(coefficients[n]);
    }

    /// The least alignment that the kernel promises to take: not a multiple of twice as much.
    std::size_t Alignment() const {
        return static_cast<std::size_t>(ExpectedAlignment(GetParam()));
    }

    void ExpectModelResult(const TileTable& coefficients) {
        ASSERT_EQ(Transform(coefficients),
                  model::InverseTransform(coefficients, RuleOf(GetParam())))
            << testing::PrintToString(coefficients);
    }

    template <typename Element>
    using GuardedBuffer = tests::GuardedBuffer<Element>;

    tests::RecordingLogger m_Logger;
    std::shared_ptr<IInverseIct> m_pKernel = GetParam().m_pMake(&m_Logger);
};

INSTANTIATE_TEST_SUITE_P(InverseIct, InverseIctVariant,
                         testing::ValuesIn(VariantsOfThisProcessor()), VariantTestName);

TileTable Uniform(std::int64_t value) {
    TileTable tile;
    tile.fill(value);
    return tile;
}

TileTable OnlyDc(std::int64_t value) {
    TileTable tile{};
    tile[0] = value;
    return tile;
}

TEST_P(InverseIctVariant, AnnouncesItselfOnce) {
    EXPECT_EQ(
        m_Logger.m_vLines,
        (std::vector<std::string>{"Inverse ICT is " + AnnouncedName(GetParam()) + " accelerated"}));
}

TEST_P(InverseIctVariant, PublishesItsConstants) {
    EXPECT_EQ(m_pKernel->IsAccelerated(), !IsPortable(GetParam()));
    EXPECT_EQ(m_pKernel->GetDataAlignmentBytes(), ExpectedAlignment(GetParam()));
    EXPECT_EQ(m_pKernel->GetScalingAsShift(), 6);
    const double norms[8] = {0.35355333390593, 0.047565149415, 0.158113883008, 0.047565149415,
                             0.35355333390593, 0.047565149415, 0.158113883008, 0.047565149415};
    EXPECT_TRUE(std::equal(norms, norms + 8, m_pKernel->GetNormalizationFactors()));
}

TEST_P(InverseIctVariant, PermutationKeepsTheRowAndMovesTheColumn) {
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u)
            EXPECT_EQ(m_pKernel->GetTileIndexPermutation()[8 * v + u],
                      8 * v + ColumnOf(GetParam(), u));
}

TEST_P(InverseIctVariant, EveryDcValueGivesAFlatTile) {
    for (std::int64_t dc = -32768; dc <= 32767; ++dc) {
        const std::int64_t floored = dc >= 0 ? dc / 64 : -((63 - dc) / 64);
        ASSERT_EQ(Transform(OnlyDc(dc)), Uniform(std::clamp<std::int64_t>(floored + 128, 0, 255)))
            << dc;
    }
}

TEST_P(InverseIctVariant, AFlatTileIsWhatItsOneCoefficientTransformsTo) {
    for (int dc = -32768; dc <= 32767; ++dc)
        ASSERT_EQ(Transform(OnlyDc(dc)), Uniform(FlatTileSample(static_cast<short>(dc)))) << dc;
}

TEST_P(InverseIctVariant, LowFrequenciesTransformAloneAsAmongOthers) {
    tests::Random random;
    for (int run = 0; run < 20000; ++run) {
        TileTable coefficients{};
        const int largest = (1 << random.Between(0, 15)) - 1;
        for (std::size_t n = 0; n < 64; ++n) {
            if (n / 8 < 4 && n % 8 < 4 && !random.OneIn(3))
                coefficients[n] = random.Between(-largest - 1, largest);
        }
        ASSERT_EQ(TransformLow(coefficients), Transform(coefficients)) << run;
    }
}

TEST_P(InverseIctVariant, DcIsFlooredNotRounded) {
    EXPECT_EQ(Transform(OnlyDc(-1)), Uniform(127));
    EXPECT_EQ(Transform(OnlyDc(63)), Uniform(128));
    EXPECT_EQ(Transform(OnlyDc(64)), Uniform(129));
}

TEST_P(InverseIctVariant, ZeroCoefficientsGiveMiddleGrey) {
    EXPECT_EQ(Transform(TileTable{}), Uniform(128));
}

TEST_P(InverseIctVariant, FirstHorizontalFrequencyFollowsItsBasisVector) {
    TileTable coefficients{};
    coefficients[1] = 64;
    TileTable expected;
    const std::int64_t row[8] = {138, 137, 134, 130, 126, 122, 119, 118};
    for (std::size_t n = 0; n < 64; ++n)
        expected[n] = row[n % 8];
    EXPECT_EQ(Transform(coefficients), expected);
}

TEST_P(InverseIctVariant, EachSingleCoefficientFollowsTheModel) {
    for (std::size_t n = 0; n < 64; ++n) {
        for (const std::int64_t value : {-32768, -32767, -4096, -65, -1, 1, 64, 4095, 32767}) {
            TileTable coefficients{};
            coefficients[n] = value;
            ExpectModelResult(coefficients);
        }
    }
}

TEST_P(InverseIctVariant, RandomTilesFollowTheModel) {
    tests::Random random;
    for (int round = 0; round < 20000; ++round) {
        TileTable coefficients{};
        const int largest = 1 << random.Between(0, 15);
        const unsigned int sparseness = 1 + random.Below(8U);
        for (std::int64_t& coefficient : coefficients)
            if (random.OneIn(sparseness))
                coefficient = random.Between(-largest, largest - 1);
        ExpectModelResult(coefficients);
    }
}

TEST_P(InverseIctVariant, ExtremeTilesFollowTheModel) {
    tests::Random random;
    const std::int64_t extremes[] = {-32768, 32767, 0, -32767};
    for (const std::int64_t value : extremes)
        ExpectModelResult(Uniform(value));
    for (int round = 0; round < 20000; ++round) {
        TileTable coefficients;
        const int kinds = random.Between(1, 4);
        for (std::int64_t& coefficient : coefficients)
            coefficient = extremes[random.Below(kinds)];
        ExpectModelResult(coefficients);
    }
}

/// Coefficients of random pixels, cut off behind a random diagonal as a quantiser would do.
TileTable PlausibleTile(tests::Random& random) {
    TileTable samples;
    const int contrast = 1 << random.Between(0, 8);
    for (std::int64_t& sample : samples)
        sample = std::clamp(128 + random.Between(-contrast, contrast), 0, 255);
    TileTable coefficients = model::ForwardTransform(samples);
    const std::size_t lastDiagonal = random.Below(std::size_t{15});
    for (std::size_t n = 0; n < 64; ++n)
        if (n / 8 + n % 8 > lastDiagonal)
            coefficients[n] = 0;
    return coefficients;
}

TEST_P(InverseIctVariant, PlausibleTilesFollowTheModel) {
    tests::Random random;
    for (int round = 0; round < 20000; ++round)
        ExpectModelResult(PlausibleTile(random));
}

TEST_P(InverseIctVariant, TransformedPixelsComeBackWithinRounding) {
    tests::Random random;
    for (int round = 0; round < 1000; ++round) {
        TileTable samples;
        random.FillBytes(samples);
        const TileTable result = Transform(model::ForwardTransform(samples));
        for (std::size_t n = 0; n < 64; ++n)
            // Coefficients rounded by half a unit add up to 33 * 33 / 2 / 64; then the floor.
            ASSERT_NEAR(static_cast<double>(result[n]), static_cast<double>(samples[n]), 9.6);
    }
}

TEST_P(InverseIctVariant, WritesEightBytesARowAtAnyAddressAndStride) {
    tests::Random random;
    for (const std::size_t stride : {8U, 9U, 15U, 16U, 31U, 64U, 1000U}) {
        for (std::size_t misalignment = 0; misalignment < 33; ++misalignment) {
            const TileTable coefficients = PlausibleTile(random);
            const TileTable expected = model::InverseTransform(coefficients, RuleOf(GetParam()));
            GuardedBuffer<short> block(64, Alignment());
            FillBlock(block, coefficients);
            GuardedBuffer<unsigned char> plane(7 * stride + 8, misalignment);
            std::fill(plane.begin(), plane.end(), static_cast<unsigned char>(0x5A));
            m_pKernel->TransformTile(block.Data(), plane.Data(), stride);
            for (std::size_t n = 0; n < plane.Count(); ++n)
                ASSERT_EQ(plane[n], n % stride < 8 ? expected[8 * (n / stride) + n % stride] : 0x5A)
                    << n << " of stride " << stride;
            ASSERT_TRUE(plane.GuardsIntact());
        }
    }
}

TEST_P(InverseIctVariant, ServesManyThreadsAtOnce) {
    constexpr std::size_t Threads = 8;
    std::array<TileTable, Threads> results;
    std::array<TileTable, Threads> tiles;
    tests::Random random;
    for (TileTable& tile : tiles)
        tile = PlausibleTile(random);
    std::vector<std::thread> threads;
    for (std::size_t n = 0; n < Threads; ++n)
        threads.emplace_back([this, n, &tiles, &results] {
            for (int round = 0; round < 500; ++round)
                results[n] = Transform(tiles[n]);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t n = 0; n < Threads; ++n)
        EXPECT_EQ(results[n], model::InverseTransform(tiles[n], RuleOf(GetParam())));
}

TEST_P(InverseIctVariant, RowResultsBeyond16BitsFollowTheVariantsRule) {
    // x0 + x4 = 65534 wraps to -2 (127 after the shift) and saturates to 32767 (255);
    // x0 - x4 = 0 stays (128).
    TileTable coefficients{};
    coefficients[0] = 32767;
    coefficients[4] = 32767;
    const std::int64_t beyond = RuleOf(GetParam()) == KernelRule::Portable ? 127 : 255;
    const std::int64_t row[8] = {beyond, 128, 128, beyond, beyond, 128, 128, beyond};
    TileTable expected;
    for (std::size_t n = 0; n < 64; ++n)
        expected[n] = row[n % 8];
    EXPECT_EQ(Transform(coefficients), expected);
}

TEST_P(InverseIctVariant, SumsFarBeyondAByteClampToItsEnds) {
    // All of column 0 at an end: row 0 is (1+10+3+9+1+6+1+2) * 32767 >> 6, far above any sample;
    // row 3 is (1+2-3-6+1+9-1-10) * 32767 >> 6, far below.
    TileTable coefficients{};
    for (std::size_t v = 0; v < 8; ++v)
        coefficients[8 * v] = 32767;
    const TileTable result = Transform(coefficients);
    EXPECT_EQ(result[0], 255);
    EXPECT_EQ(result[8 * 3], 0);
}

TEST(InverseIct, VariantsAgreeWhileNothingLeaves16Bits) {
    tests::Random random;
    tests::RecordingLogger logger;
    std::vector<std::shared_ptr<IInverseIct>> kernels;
    for (const Variant& variant : VariantsOfThisProcessor())
        kernels.push_back(variant.m_pMake(&logger));
    for (int round = 0; round < 5000; ++round) {
        const TileTable coefficients = PlausibleTile(random);
        std::array<unsigned char, 64> first{};
        for (const auto& kernel : kernels) {
            alignas(32) short block[64];
            for (std::size_t n = 0; n < 64; ++n)
                block[kernel->GetTileIndexPermutation()[n]] = static_cast<short>(coefficients[n]);
            std::array<unsigned char, 64> samples{};
            kernel->TransformTile(block, samples.data(), 8);
            if (kernel == kernels.front())
                first = samples;
            ASSERT_EQ(samples, first);
        }
    }
}

TEST(InverseIctNative, LeavesItsRowResultsInTheBlock) {
    tests::RecordingLogger logger;
    InverseIctNative kernel(&logger);
    alignas(8) short block[64] = {5, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    unsigned char samples[64];
    kernel.TransformTile(block, samples, 8);
    const short expected[16] = {5, 5, 5, 5, 5, 5, 5, 5, 10, 9, 6, 2, -2, -6, -9, -10};
    EXPECT_TRUE(std::equal(expected, expected + 16, block));
    EXPECT_TRUE(std::all_of(block + 16, block + 64, [](short value) { return value == 0; }));
}

} // namespace
} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
