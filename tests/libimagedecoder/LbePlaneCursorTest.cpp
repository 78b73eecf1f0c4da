#include "libimagedecoder/LbePlaneCursor.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "tests/libimagedecoder/CursorRoad.h"
#include "tests/libimagedecoder/KernelTables.h"
#include "tests/support/TestBits.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using tests::Bits;
using tests::Repeated;
using Samples = std::vector<uint16_t>;

constexpr LbePlaneFormat Luma{256, 16, 4, 8};
constexpr LbePlaneFormat Chroma420{64, 8, 8, 8};

/// What can be seen of a plane: its samples or its failure.
struct Sight {
    Samples samples;
    std::string error;

    bool operator==(const Sight&) const = default;
};

struct Road : CursorRoad {
    using CursorRoad::CursorRoad;

    Sight DecodePlainly(const LbePlaneFormat& format) {
        LbePlaneBuffer buffer;
        try {
            DecodeLbePlane(m_Reader, format, buffer);
        } catch (const ImageDecoderException& error) {
            return {{}, error.what()};
        }
        return {Samples(buffer.Samples(), buffer.Samples() + format.m_uiSamples), ""};
    }
};

using Variant = KernelVariant<LbePlaneKernel>;

class LbePlaneCursorWith : public testing::TestWithParam<Variant> {
protected:
    static LbePlaneKernel Kernel() { return GetParam().m_pMake(nullptr); }

    LbePlaneCursor CursorOver(Road& road) const { return {road.m_Reader, Kernel()}; }

    /// Decodes by the cursor, and plainly what it declines. What lies in the memory for the samples
    /// beforehand is not zero.
    Sight DecodeFast(Road& road, LbePlaneCursor& cursor, const LbePlaneFormat& format) {
        LbePlaneBytes plane;
        std::fill_n(plane.Low(), LbePlaneBuffer::MaxSamples, uint8_t{0xA5});
        std::fill_n(plane.High(), LbePlaneBuffer::MaxSamples, uint8_t{0xA5});
        if (!cursor.DecodePlane(format, plane))
            return road.DecodePlainly(format);
        ++m_uiPlanesOnFastRoad;
        Sight sight;
        for (size_t i = 0; i < format.m_uiSamples; ++i) {
            const int high = LbePlaneBytes::HasHigh(format) ? plane.High()[i] : 0;
            sight.samples.push_back(static_cast<uint16_t>(high << 8 | plane.Low()[i]));
        }
        return sight;
    }

    /// The same decoded by both decoders, from the same place, with the same outcome.
    void CompareRoads(const std::vector<uint8_t>& bytes, size_t capacity,
                      const std::vector<LbePlaneFormat>& formats) {
        Road plain(bytes, capacity);
        Road fast(bytes, capacity);
        LbePlaneCursor cursor = CursorOver(fast);
        for (const LbePlaneFormat& format : formats) {
            const Sight expected = plain.DecodePlainly(format);
            ASSERT_EQ(DecodeFast(fast, cursor, format), expected);
            if (m_Random.OneIn(2) || !expected.error.empty()) {
                cursor.GiveBack();
                ExpectSameState(plain, fast);
            }
            if (HasFailure() || !expected.error.empty())
                return;
            if (m_Random.OneIn(2)) {
                // What precedes a block: a skip code, a length.
                cursor.GiveBack();
                if (!SkipBits(plain, fast, 1 + m_Random.Below(16U)))
                    return;
            }
        }
    }

    static bool SkipBits(Road& plain, Road& fast, uint32_t count) {
        try {
            const uint32_t expected = plain.m_Reader.ReadStreamBits(count);
            EXPECT_EQ(fast.m_Reader.ReadStreamBits(count), expected);
            return true;
        } catch (const ImageDecoderException&) {
            EXPECT_THROW(fast.m_Reader.ReadStreamBits(count), ImageDecoderException);
            return false;
        }
    }

    /// Luma and chroma by turns, of any quality, subsampling and protocol version.
    std::vector<LbePlaneFormat> RandomFormats() {
        const unsigned quality = 2 + m_Random.Below(10U);
        const auto depths = tests::DepthsOf(quality);
        const unsigned chroma = m_Random.Below(3U);
        const LbePlaneFormat luma{256, 16, static_cast<uint32_t>(depths.luma), 8};
        const LbePlaneFormat chromaFormat{
            tests::ChromaSamples(chroma), chroma == tests::Chroma444 ? size_t{16} : size_t{8},
            static_cast<uint32_t>(2 * depths.chroma), m_Random.OneIn(2) ? 6U : 8U};
        return {luma, chromaFormat, luma, chromaFormat, luma, chromaFormat};
    }

    std::vector<uint8_t> RandomPlanes(const std::vector<LbePlaneFormat>& formats) {
        std::string text;
        for (const LbePlaneFormat& format : formats)
            text += tests::RandomPlane(m_Random, {format.m_uiSamples,
                                                  static_cast<int>(format.m_uiLiteralBits),
                                                  static_cast<int>(format.m_uiLongRunBits)});
        return tests::BytesOf(text);
    }

    /// Any bits are planes: mostly set ones are runs, mostly clear ones are literals.
    std::vector<uint8_t> RandomBytes() {
        std::vector<uint8_t> bytes(m_Random.Below(size_t{900}));
        const int kind = m_Random.Below(3);
        for (uint8_t& byte : bytes) {
            byte = m_Random.Byte();
            if (kind == 1)
                byte |= m_Random.Byte();
            if (kind == 2)
                byte &= m_Random.Byte();
        }
        return bytes;
    }

    tests::Random m_Random;
    size_t m_uiPlanesOnFastRoad = 0;
};

TEST_P(LbePlaneCursorWith, AgreesWithThePlainDecoderOnPlanesInOnePiece) {
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        const auto formats = RandomFormats();
        CompareRoads(RandomPlanes(formats), 10000, formats);
    }
    EXPECT_GT(m_uiPlanesOnFastRoad, 1000U);
}

TEST_P(LbePlaneCursorWith, AgreesWithThePlainDecoderWhereverAWindowEnds) {
    const auto formats = RandomFormats();
    const std::vector<uint8_t> bytes = RandomPlanes(formats);
    for (size_t capacity = 1; capacity <= bytes.size() + 1 && !HasFailure(); ++capacity)
        CompareRoads(bytes, capacity, formats);
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        const auto others = RandomFormats();
        CompareRoads(RandomPlanes(others),
                     1 + m_Random.Below(round % 2 == 0 ? size_t{40} : size_t{600}), others);
    }
    EXPECT_GT(m_uiPlanesOnFastRoad, 300U);
}

TEST_P(LbePlaneCursorWith, AgreesWithThePlainDecoderOnAnyBits) {
    for (int round = 0; round < 2000 && !HasFailure(); ++round)
        CompareRoads(RandomBytes(), 1 + m_Random.Below(size_t{1000}), RandomFormats());
    EXPECT_GT(m_uiPlanesOnFastRoad, 1000U);
}

TEST_P(LbePlaneCursorWith, AgreesWithThePlainDecoderOnFlippedBits) {
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        const auto formats = RandomFormats();
        std::vector<uint8_t> bytes = RandomPlanes(formats);
        for (int flips = m_Random.Between(1, 4); flips > 0; --flips)
            bytes[m_Random.Below(bytes.size())] ^= static_cast<uint8_t>(1 << m_Random.Below(8));
        CompareRoads(bytes, 1 + m_Random.Below(size_t{2000}), formats);
    }
}

TEST_P(LbePlaneCursorWith, RunsOfEveryCountGoOnFromWhatTheyHaveCopied) {
    // Distinct samples, a run of either source with its count, and the row above to the end.
    for (const LbePlaneFormat& format : {Luma, Chroma420, LbePlaneFormat{256, 16, 10, 8}}) {
        for (unsigned count = 0; count < 256 && !HasFailure(); ++count) {
            std::string text;
            for (unsigned i = 0; i < 19; ++i)
                text += Bits(0, 1) + Bits(i * 37, static_cast<int>(format.m_uiLiteralBits));
            text += (m_Random.OneIn(2) ? "1 11 1110" : "1 01 1110") + Bits(count, 8);
            text += "1 01 0101"
                    "1 01 1111";
            // The first plane is declined: there is no window yet.
            CompareRoads(tests::BytesOf(text + text), 10000, {format, format});
        }
    }
}

TEST_P(LbePlaneCursorWith, APlaneMayEndWithTheLastBitOfTheWindow) {
    // 63 literals of nine bits and a short run of four: 571 bits; a field of five bits precedes.
    const std::string text = "10101" + Repeated("0 10100101 ", 63) + "1 10 0";
    ASSERT_EQ(tests::CountBits(text), 72U * 8);
    Road road(tests::BytesOf(text), 72);
    EXPECT_EQ(road.m_Reader.ReadStreamBits(5), 0b10101U);
    LbePlaneCursor cursor = CursorOver(road);
    LbePlaneBytes plane;
    ASSERT_TRUE(cursor.DecodePlane(Chroma420, plane));
    EXPECT_EQ(Samples(plane.Low(), plane.Low() + 64), Samples(64, 0b10100101));
    cursor.GiveBack();
    EXPECT_EQ(road.m_Stream.GetPosition(), 72U);
    EXPECT_EQ(road.m_Reader.GetState().HeldBits(), 0U);
    EXPECT_FALSE(road.m_Stream.IsEndOfStream());
}

TEST_P(LbePlaneCursorWith, APlaneThatNeedsOneBitMoreIsDeclinedAtItsStart) {
    const std::string text = "101010" + Repeated("0 10100101 ", 63) + "1 10 0";
    Road road(tests::BytesOf(text), 72);
    EXPECT_EQ(road.m_Reader.ReadStreamBits(6), 0b101010U);
    LbePlaneCursor cursor = CursorOver(road);
    LbePlaneBytes plane;
    EXPECT_FALSE(cursor.DecodePlane(Chroma420, plane));
    EXPECT_EQ(road.m_Stream.GetPosition(), 1U);
    EXPECT_EQ(road.m_Reader.GetState().m_uiReserveBits, 2U);
    EXPECT_EQ(road.DecodePlainly(Chroma420).samples, Samples(64, 0b10100101));
    EXPECT_EQ(road.m_Stream.GetConsumedBytes(), 73U);
}

TEST_P(LbePlaneCursorWith, AStreamWithoutAWindowIsDeclined) {
    Road road(tests::BytesOf("1 11 1111"), 10);
    LbePlaneCursor cursor = CursorOver(road);
    LbePlaneBytes plane;
    EXPECT_FALSE(cursor.DecodePlane(Luma, plane));
    cursor.GiveBack();
    EXPECT_EQ(road.m_Stream.GetConsumedBytes(), 0U);
}

TEST_P(LbePlaneCursorWith, AReaderWhoseBitsAreNotTheWindowsIsDeclined) {
    // The last byte fetched is 0b10101010.
    const BitReaderState states[] = {
        {0, 0, 0b101, 3},      // not its low bits
        {0b10, 2, 0b010, 3},   // nor those above
        {0, 0, 0b10101010, 8}, // more than a read leaves
    };
    for (const BitReaderState& state : states) {
        Road road(tests::BytesOf("10101010" + Repeated("1", 64)), 100);
        EXPECT_EQ(road.m_Reader.ReadStreamBits(8), 0b10101010U);
        road.m_Reader.SetState(state);
        LbePlaneCursor cursor = CursorOver(road);
        LbePlaneBytes plane;
        EXPECT_FALSE(cursor.DecodePlane(Luma, plane));
        EXPECT_EQ(road.m_Reader.GetState().HeldBits(), state.HeldBits());
        EXPECT_EQ(road.m_Stream.GetPosition(), 1U);
    }
}

TEST_P(LbePlaneCursorWith, AReaderWithBitsFromBeforeTheWindowIsDeclined) {
    Road road(tests::BytesOf("11111111 1 11 1111" + Repeated("1", 64)), 100);
    road.m_Reader.ReadStreamBits(8);
    LbePlaneCursor cursor = CursorOver(road);
    LbePlaneBytes plane;
    ASSERT_TRUE(cursor.DecodePlane(Luma, plane));
    cursor.GiveBack();
    road.m_Stream.SetPosition(0);
    road.m_Reader.SetState({0, 0, 0b000, 3});
    EXPECT_FALSE(cursor.DecodePlane(Luma, plane));
    EXPECT_EQ(road.m_Reader.GetState().HeldBits(), 3U);
    EXPECT_EQ(road.m_Stream.GetPosition(), 0U);
}

TEST_P(LbePlaneCursorWith, APlaneTouchesNoMoreThanItsRoom) {
    // The dearest codes of each width: literals, or counted runs of three samples.
    for (const uint32_t literalBits : {2U, 3U, 4U, 5U, 6U, 8U, 10U}) {
        const LbePlaneFormat format{256, 16, literalBits, 8};
        const std::string literals =
            Repeated(Bits(0, 1) + Bits(1, static_cast<int>(literalBits)), 255);
        const std::string runs = Repeated("1 11 1110 00000000", 85);
        for (const std::string& start : {literals, runs}) {
            // A sanitizer sees a read behind the bytes, which are exactly as many as promised.
            std::vector<uint8_t> bytes = tests::BytesOf("1111111" + start + "1 11 1110 11111111");
            bytes.resize(LbePlaneRoom(format));
            LbePlaneBytes plane;
            const size_t position = Kernel()(bytes.data(), 7, format, plane);
            EXPECT_EQ(position, 7 + tests::CountBits(start) + 15);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, LbePlaneCursorWith,
                         testing::ValuesIn(RunnableVariants(LbePlaneKernelFactory::GetVariants())),
                         VariantTestName);

} // namespace

} // namespace Vostrel::libimagedecoder
