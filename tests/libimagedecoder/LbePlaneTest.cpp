#include "libimagedecoder/LbePlaneDecoder.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tests/model/ModelLbe.h"
#include "tests/support/TestBits.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using tests::Bits;
using tests::Repeated;
using Samples = std::vector<int>;

constexpr LbePlaneFormat Luma{256, 16, 4, 8};
constexpr LbePlaneFormat Chroma420{64, 8, 6, 8};
constexpr LbePlaneFormat Chroma420OfVersion0{64, 8, 6, 6};
constexpr LbePlaneFormat Chroma422{128, 8, 8, 8};
constexpr LbePlaneFormat Chroma444{256, 16, 10, 8};

const std::string ToTheEnd = "1 11 1111 ";
const std::string ToTheEndFromAbove = "1 01 1111 ";

struct Decoded {
    Samples samples;
    size_t consumedBits;
};

/// Decodes one plane; what lies in the buffer beforehand is not zero.
Decoded Decode(const LbePlaneFormat& format, const std::string& text) {
    std::vector<uint8_t> bytes = tests::BytesOf(text + " 11111111 11111111");
    StreambufferArray stream(nullptr, bytes.data(), bytes.size());
    BitStreamReader reader(&stream, 0, 0, 0, 0);
    LbePlaneBuffer buffer;
    std::fill_n(buffer.Samples(), LbePlaneBuffer::MaxSamples, uint16_t{0x2AAA});
    DecodeLbePlane(reader, format, buffer);
    for (size_t i = format.m_uiSamples; i < LbePlaneBuffer::MaxSamples; ++i)
        EXPECT_EQ(buffer.Samples()[i], 0x2AAA) << "written behind the plane, at " << i;
    return {Samples(buffer.Samples(), buffer.Samples() + format.m_uiSamples),
            stream.GetPosition() * 8 - reader.GetState().HeldBits()};
}

std::string Literals(const Samples& values, int bits) {
    std::string text;
    for (const int value : values)
        text += Bits(0, 1) + Bits(static_cast<uint64_t>(value), bits) + " ";
    return text;
}

/// Literals 0, 1, 2 ... modulo the values of four bits.
std::string Ramp(int count) {
    Samples values;
    for (int i = 0; i < count; ++i)
        values.push_back(i % 16);
    return Literals(values, 4);
}

TEST(LbePlane, LiteralsOfEveryWidthFollowEachOther) {
    for (uint32_t bits = 2; bits <= 10; ++bits) {
        tests::Random random;
        Samples values;
        for (int i = 0; i < 64; ++i)
            values.push_back(static_cast<int>(random.Below(1u << bits)));
        const std::string text = Literals(values, static_cast<int>(bits));
        const Decoded decoded = Decode({64, 8, bits, 8}, text);
        EXPECT_EQ(decoded.samples, values);
        EXPECT_EQ(decoded.consumedBits, tests::CountBits(text));
    }
}

TEST(LbePlane, ARunFromAboveAtTheStartToTheEndIsAllZero) {
    for (const LbePlaneFormat& format : {Luma, Chroma420, Chroma422, Chroma444}) {
        const Decoded decoded = Decode(format, "1 0 1 1111");
        EXPECT_EQ(decoded.samples, Samples(format.m_uiSamples, 0));
        EXPECT_EQ(decoded.consumedBits, 7u);
    }
}

TEST(LbePlane, ARunFromTheLeftAtTheStartIsAllZero) {
    EXPECT_EQ(Decode(Luma, ToTheEnd).samples, Samples(256, 0));
}

TEST(LbePlane, AShortRunFromTheLeftAtTheSixthEntryCopiesTheFifth) {
    const Samples samples =
        Decode(Luma, Literals({1, 2, 3, 4, 9}, 4) + "1 10 0" + Literals({7}, 4) + ToTheEnd).samples;
    EXPECT_EQ(samples[4], 9);
    EXPECT_EQ(samples[5], 9);
    EXPECT_EQ(samples[6], 7);
}

TEST(LbePlane, AShortRunHasOneOrTwoEntries) {
    const Samples samples =
        Decode(Luma, Literals({5}, 4) + "1 10 1" + Literals({6}, 4) + "1 10 0" + ToTheEndFromAbove)
            .samples;
    EXPECT_EQ(Samples(samples.begin(), samples.begin() + 6), (Samples{5, 5, 5, 6, 6, 0}));
}

TEST(LbePlane, LongRunsHaveThreeToSixteenEntries) {
    for (int code = 0; code <= 13; ++code) {
        const Samples samples =
            Decode(Luma, Literals({5}, 4) + "1 11" + Bits(static_cast<uint64_t>(code), 4) +
                             Literals({6}, 4) + ToTheEnd)
                .samples;
        Samples expected(static_cast<size_t>(1 + code + 3), 5);
        expected.resize(256, 6);
        EXPECT_EQ(samples, expected) << code;
    }
}

TEST(LbePlane, ACountedRunHasThreeMoreEntriesThanItsCount) {
    for (const int count : {0, 1, 100, 252}) {
        const Samples samples =
            Decode(Luma, Literals({5}, 4) + "1 11 1110" + Bits(static_cast<uint64_t>(count), 8) +
                             (count < 252 ? Literals({6}, 4) + ToTheEnd : ""))
                .samples;
        Samples expected(static_cast<size_t>(1 + count + 3), 5);
        expected.resize(256, 6);
        EXPECT_EQ(samples, expected) << count;
    }
}

TEST(LbePlane, ARunOf258StopsAtTheEndOfThePlane) {
    Decoded decoded = Decode(Luma, "1 11 1110 11111111");
    EXPECT_EQ(decoded.samples, Samples(256, 0));
    EXPECT_EQ(decoded.consumedBits, 15u);
    decoded = Decode(Luma, Ramp(250) + "1 01 1110 11111111");
    EXPECT_EQ(decoded.samples[255], 239 % 16);
    EXPECT_EQ(decoded.consumedBits, 250u * 5 + 15);
}

TEST(LbePlane, EveryRunFormStopsAtTheEndOfThePlane) {
    for (const char* const text :
         {"1 10 1", "1 00 1", "1 11 0000", "1 01 0000", "1 11 1101", "1 01 1101",
          "1 11 1110 00000000", "1 01 1110 11111111", "1 11 1111", "1 01 1111"}) {
        const std::string run = text;
        const Decoded decoded = Decode(Luma, Ramp(255) + run);
        EXPECT_EQ(decoded.samples[254], 254 % 16);
        EXPECT_EQ(decoded.samples[255], run[2] == '1' ? 254 % 16 : 239 % 16) << run;
        EXPECT_EQ(decoded.consumedBits, 255 * 5 + tests::CountBits(run)) << run;
    }
}

TEST(LbePlane, AnEndRunFillsExactlyWhatIsLeft) {
    const Decoded decoded = Decode(Luma, Ramp(100) + ToTheEndFromAbove);
    for (size_t i = 100; i < 256; ++i)
        EXPECT_EQ(decoded.samples[i], decoded.samples[i - 16]) << i;
    EXPECT_EQ(decoded.consumedBits, 507u);
}

TEST(LbePlane, ARunFromAboveMayStartWithinTheFirstRow) {
    // Entries before the first are zero, then the run reaches what it can copy.
    const Samples samples = Decode(Luma, Literals({7, 8, 9}, 4) + "1 01 1111").samples;
    for (size_t i = 3; i < 256; ++i)
        EXPECT_EQ(samples[i], i % 16 < 3 ? 7 + static_cast<int>(i % 16) : 0) << i;
}

TEST(LbePlane, TheLeftNeighbourOfARowsFirstEntryIsTheLastOfTheRowBefore) {
    const Samples samples =
        Decode(Luma, Ramp(15) + Literals({3}, 4) + "1 10 0" + Literals({5}, 4) + ToTheEnd).samples;
    EXPECT_EQ(samples[15], 3);
    EXPECT_EQ(samples[16], 3);
}

TEST(LbePlane, TheEntryAboveIsEightBackInHalvedChromaAndSixteenElsewhere) {
    const auto entryAfterRamp = [](const LbePlaneFormat& format) {
        Samples ramp;
        for (int i = 0; i < 20; ++i)
            ramp.push_back(i);
        return Decode(format, Literals(ramp, static_cast<int>(format.m_uiLiteralBits)) + "1 00 0" +
                                  ToTheEnd)
            .samples[20];
    };
    EXPECT_EQ(entryAfterRamp(Chroma420), 12);
    EXPECT_EQ(entryAfterRamp(Chroma422), 12);
    EXPECT_EQ(entryAfterRamp(Chroma444), 4);
    EXPECT_EQ(entryAfterRamp({256, 16, 6, 8}), 4);
}

TEST(LbePlane, ChromaOf420Has64EntriesInEightRowsOfEight) {
    Samples row;
    for (int i = 0; i < 8; ++i)
        row.push_back(40 + i);
    const Decoded decoded = Decode(Chroma420, Literals(row, 6) + ToTheEndFromAbove);
    ASSERT_EQ(decoded.samples.size(), 64u);
    for (size_t i = 0; i < 64; ++i)
        EXPECT_EQ(decoded.samples[i], 40 + static_cast<int>(i % 8));
    EXPECT_EQ(decoded.consumedBits, 8u * 7 + 7);
}

TEST(LbePlane, ChromaOfProtocolVersion0ReadsSixBitCounts) {
    const std::string text = Literals({33}, 6) + "1 11 1110 110001";
    const Decoded decoded = Decode(Chroma420OfVersion0, text + Literals({1}, 6) + ToTheEnd);
    Samples expected(1 + 49 + 3, 33);
    expected.resize(64, 1);
    EXPECT_EQ(decoded.samples, expected);
}

TEST(LbePlane, BothPlanesOfABlockMayUseOneBuffer) {
    std::vector<uint8_t> bytes =
        tests::BytesOf(Repeated(Literals({15}, 4), 256) + "1 00 1 1 11 0000" + ToTheEndFromAbove);
    StreambufferArray stream(nullptr, bytes.data(), bytes.size());
    BitStreamReader reader(&stream, 0, 0, 0, 0);
    LbePlaneBuffer buffer;
    DecodeLbePlane(reader, Luma, buffer);
    DecodeLbePlane(reader, Chroma420, buffer);
    EXPECT_EQ(Samples(buffer.Samples(), buffer.Samples() + 64), Samples(64, 0));
}

TEST(LbePlane, MissingBitsAreAnErrorBehindTwoBytesOfPadding) {
    std::vector<uint8_t> bytes = tests::BytesOf(Ramp(8));
    StreambufferArray stream(nullptr, bytes.data(), bytes.size());
    BitStreamReader reader(&stream, 0, 0, 0, 0);
    LbePlaneBuffer buffer;
    EXPECT_THROW(DecodeLbePlane(reader, Luma, buffer), ImageDecoderException);
    EXPECT_EQ(stream.GetPaddingCount(), 2u);
}

TEST(LbePlane, RandomPlanesDecodeEntryByEntry) {
    tests::Random random;
    for (const LbePlaneFormat& format :
         {Luma, Chroma420, Chroma420OfVersion0, Chroma422, Chroma444}) {
        for (int run = 0; run < 500; ++run) {
            const std::string text = tests::RandomPlane(
                random, {format.m_uiSamples, static_cast<int>(format.m_uiLiteralBits),
                         static_cast<int>(format.m_uiLongRunBits)});
            model::ModelStream stream(tests::BytesOf(text), 1 << 20);
            model::ModelBits bits(stream);
            const std::vector<int64_t> expected = model::DecodeRuns(
                bits, {static_cast<int>(format.m_uiSamples), static_cast<int>(format.m_uiRowWidth),
                       static_cast<int>(format.m_uiLiteralBits),
                       static_cast<int>(format.m_uiLongRunBits)});
            const Decoded decoded = Decode(format, text);
            ASSERT_EQ(decoded.samples, Samples(expected.begin(), expected.end())) << text;
            ASSERT_EQ(decoded.consumedBits, tests::CountBits(text)) << text;
        }
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder
