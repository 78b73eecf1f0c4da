#include "tools/LbePlaneWriter.h"
#include "tests/model/ModelLbe.h"
#include "tests/tools/BitString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace Vostrel::streamencoder {
namespace {

using libimagedecoder::LbePlaneFormat;

using Samples = std::vector<uint16_t>;

constexpr LbePlaneFormat Luma4{256, 16, 4, 8};
constexpr LbePlaneFormat Chroma420Version0{64, 8, 8, 6};

std::string Coded(const Samples& samples, const LbePlaneFormat& format) {
    BitWriter bits;
    WriteLbePlane(samples, format, bits);
    return BitStringOf(bits);
}

Samples Decoded(const std::vector<uint8_t>& bytes, const LbePlaneFormat& format) {
    model::ModelStream stream(bytes, bytes.size());
    model::ModelBits bits(stream);
    const auto entries = model::DecodeRuns(
        bits, {static_cast<int>(format.m_uiSamples), static_cast<int>(format.m_uiRowWidth),
               static_cast<int>(format.m_uiLiteralBits), static_cast<int>(format.m_uiLongRunBits)});
    return {entries.begin(), entries.end()};
}

/// A luma plane that begins with the given samples and repeats the last of them to its end.
Samples PlaneWith(const Samples& first) {
    Samples samples(256, 0);
    for (size_t i = 0; i < 256; ++i) {
        samples[i] = i < first.size() ? first[i] : first.back();
    }
    return samples;
}

TEST(WriteLbePlane, AZeroPlaneIsOneRun) {
    // Both sources are zero before the first sample; the run to the end costs 7 bits.
    EXPECT_EQ(Coded(Samples(256, 0), Luma4), WithoutBlanks("1 11 1111"));
}

TEST(WriteLbePlane, AFlatPlaneIsALiteralAndARunToTheEnd) {
    EXPECT_EQ(Coded(Samples(256, 9), Luma4), WithoutBlanks("0 1001  1 11 1111"));
    EXPECT_EQ(Coded(Samples(64, 0xA5), Chroma420Version0), WithoutBlanks("0 10100101  1 11 1111"));
}

TEST(WriteLbePlane, AShortRunHoldsOneOrTwoSamples) {
    EXPECT_EQ(Coded(PlaneWith({5, 5, 7}), Luma4),
              WithoutBlanks("0 0101  1 10 0  0 0111  1 11 1111"));
    EXPECT_EQ(Coded(PlaneWith({5, 5, 5, 7}), Luma4),
              WithoutBlanks("0 0101  1 10 1  0 0111  1 11 1111"));
}

TEST(WriteLbePlane, ALongRunHoldsThreeToSixteen) {
    EXPECT_EQ(Coded(PlaneWith({5, 5, 5, 5, 7}), Luma4),
              WithoutBlanks("0 0101  1 11 0000  0 0111  1 11 1111"));
    Samples first(17, 5);
    first.push_back(7);
    EXPECT_EQ(Coded(PlaneWith(first), Luma4),
              WithoutBlanks("0 0101  1 11 1101  0 0111  1 11 1111"));
}

TEST(WriteLbePlane, ACountedRunHoldsMoreThanTwoLongOnes) {
    // 33 samples: a counted run of 15 bits against 16 + 16 + 1 samples of 7 + 7 + 4 bits.
    Samples first(34, 5);
    first.push_back(7);
    EXPECT_EQ(Coded(PlaneWith(first), Luma4),
              WithoutBlanks("0 0101  1 11 1110 00011110  0 0111  1 11 1111"));
    // In version 0 the count of chroma has 6 bits; 33 samples are 30 more than 3.
    Samples chroma(64, 0x22);
    std::fill(chroma.begin(), chroma.begin() + 34, uint16_t{0x11});
    EXPECT_EQ(Coded(chroma, Chroma420Version0),
              WithoutBlanks("0 00010001  1 11 1110 011110  0 00100010  1 11 1111"));
}

TEST(WriteLbePlane, RowsRepeatFromAbove) {
    Samples samples(256);
    for (size_t i = 0; i < 256; ++i) {
        samples[i] = static_cast<uint16_t>(i % 2 == 0 ? 3 : 12);
    }
    std::string expected;
    for (int i = 0; i < 8; ++i) {
        expected += "0 0011 0 1100 ";
    }
    EXPECT_EQ(Coded(samples, Luma4), WithoutBlanks(expected + "1 01 1111"));
}

TEST(WriteLbePlane, TheLeftNeighbourOfARowIsTheEndOfTheRowBefore) {
    Samples samples(256, 0);
    for (size_t i = 10; i < 20; ++i) { // crosses from the first row into the second
        samples[i] = 6;
    }
    // Ten zeros, a literal, nine copies; then a short run from above fetches the zeros back, which
    // is cheaper than a literal, and the rest follows from the left.
    EXPECT_EQ(Coded(samples, Luma4),
              WithoutBlanks("1 11 0111  0 0110  1 11 0110  1 00 1  1 11 1111"));
}

TEST(WriteLbePlane, ALiteralIsTakenWhereItIsCheaperThanARun) {
    // One sample as the last: a literal of 2 bits costs 3 bits, a short run 4.
    constexpr LbePlaneFormat luma2{256, 16, 2, 8};
    EXPECT_EQ(Coded(PlaneWith({1, 1, 2}), luma2), WithoutBlanks("0 01  0 01  0 10  1 11 1111"));
}

const std::vector<LbePlaneFormat>& AllFormats() {
    static const std::vector<LbePlaneFormat> formats = [] {
        std::vector<LbePlaneFormat> all;
        for (uint32_t bits = 2; bits <= 6; ++bits) {
            all.push_back({256, 16, bits, 8});
        }
        for (uint32_t bits = 3; bits <= 5; ++bits) {
            for (const uint32_t longRunBits : {6U, 8U}) {
                all.push_back({64, 8, 2 * bits, longRunBits});
                all.push_back({128, 8, 2 * bits, longRunBits});
                all.push_back({256, 16, 2 * bits, longRunBits});
            }
        }
        return all;
    }();
    return formats;
}

/// Samples as screens have them, from noise to flat: each is new, the left or the upper neighbour
/// with probabilities that differ from plane to plane.
Samples RandomPlane(const LbePlaneFormat& format, std::mt19937& random) {
    const unsigned newOf16 = static_cast<unsigned>(random() % 17);
    const unsigned aboveOf16 = static_cast<unsigned>(random() % 17);
    const unsigned colours = 1U << random() % (format.m_uiLiteralBits + 1);
    Samples samples(format.m_uiSamples);
    for (size_t i = 0; i < samples.size(); ++i) {
        const size_t distance = random() % 16 < aboveOf16 ? format.m_uiRowWidth : 1;
        if (random() % 16 < newOf16)
            samples[i] = static_cast<uint16_t>(random() % colours);
        else
            samples[i] = i < distance ? uint16_t{0} : samples[i - distance];
    }
    return samples;
}

TEST(WriteLbePlane, TheDecoderReadsEveryPlaneBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (const LbePlaneFormat& format : AllFormats()) {
        for (int plane = 0; plane < 60; ++plane) {
            const Samples samples = RandomPlane(format, random);
            BitWriter bits;
            WriteLbePlane(samples, format, bits);
            ASSERT_EQ(Decoded(bits.GetBytes(), format), samples);
        }
    }
}

/// The least cost by trying every run of every length in every form.
unsigned LeastCost(const Samples& samples, const LbePlaneFormat& format) {
    const size_t count = samples.size();
    std::vector<unsigned> cost(count + 1, 0);
    for (size_t i = count; i-- > 0;) {
        cost[i] = 1 + format.m_uiLiteralBits + cost[i + 1];
        for (const size_t distance : {size_t{1}, format.m_uiRowWidth}) {
            for (size_t length = 1; i + length <= count; ++length) {
                const size_t last = i + length - 1;
                if (samples[last] != (last < distance ? 0 : samples[last - distance]))
                    break;
                const unsigned rest = cost[i + length];
                if (length <= 2)
                    cost[i] = std::min(cost[i], 4 + rest);
                if (length >= 3 && length <= 16)
                    cost[i] = std::min(cost[i], 7 + rest);
                if (length >= 3 && length - 3 < size_t{1} << format.m_uiLongRunBits)
                    cost[i] = std::min(cost[i], 7 + format.m_uiLongRunBits + rest);
                if (i + length == count)
                    cost[i] = std::min(cost[i], 7U);
            }
        }
    }
    return cost[0];
}

TEST(WriteLbePlane, NoCodingIsShorter) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (const LbePlaneFormat& format : AllFormats()) {
        for (int plane = 0; plane < 60; ++plane) {
            const Samples samples = RandomPlane(format, random);
            BitWriter bits;
            WriteLbePlane(samples, format, bits);
            ASSERT_EQ(bits.GetBitCount(), LeastCost(samples, format));
        }
    }
}

} // namespace
} // namespace Vostrel::streamencoder
