#include "libimagedecoder/BitStreamReader.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tests/support/TestBits.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace Vostrel::libimagedecoder {

namespace {

using tests::BytesOf;

/// Bytes from a bit text, as a stream.
struct ArrayOf {
    explicit ArrayOf(const std::string& text) : bytes(BytesOf(text)) {}
    std::vector<uint8_t> bytes;
    StreambufferArray stream{nullptr, bytes.data(), bytes.size()};
};

void ExpectState(const BitStreamReader& reader, uint32_t window, uint32_t windowBits,
                 uint32_t reserve, uint32_t reserveBits) {
    const BitReaderState& state = reader.GetState();
    EXPECT_EQ(state.m_uiWindow, window);
    EXPECT_EQ(state.m_uiWindowBits, windowBits);
    EXPECT_EQ(state.m_uiReserve, reserve);
    EXPECT_EQ(state.m_uiReserveBits, reserveBits);
}

uint32_t NumberOf(const std::string& bits) {
    return static_cast<uint32_t>(std::stoul(bits, nullptr, 2));
}

std::string RandomBits(tests::Random& random, size_t count) {
    std::string bits;
    while (bits.size() < count)
        bits += random.OneIn(2) ? '1' : '0';
    return bits;
}

TEST(BitStreamReader, MaskEntryNHasTheLowNBitsSet) {
    ASSERT_EQ(BitStreamReader::m_TwoPowIndexMinusOneMask.size(), 16u);
    for (uint32_t n = 0; n < 16; ++n)
        EXPECT_EQ(BitStreamReader::m_TwoPowIndexMinusOneMask[n], (1u << n) - 1);
}

TEST(BitStreamReader, TakesTheMostSignificantBitFirst) {
    ArrayOf source("1 01 0011 0 11110000");
    BitStreamReader reader(&source.stream, 0, 0, 0, 0);
    EXPECT_EQ(reader.ReadStreamBit(), 1u);
    EXPECT_EQ(reader.ReadStreamBits(2), 0b01u);
    EXPECT_EQ(reader.ReadStreamBits(4), 0b0011u);
    EXPECT_EQ(reader.ReadStreamBits(6), 0b011110u);
}

TEST(BitStreamReader, FetchesAByteOnlyWhenAReadNeedsIt) {
    ArrayOf source("10101010 11001100 11110000");
    BitStreamReader reader(&source.stream, 0, 0, 0, 0);
    EXPECT_EQ(source.stream.GetPosition(), 0u);
    reader.ReadStreamBits(8);
    EXPECT_EQ(source.stream.GetPosition(), 1u);
    reader.ReadStreamBits(1);
    EXPECT_EQ(source.stream.GetPosition(), 2u);
    reader.ReadStreamBits(7);
    EXPECT_EQ(source.stream.GetPosition(), 2u);
    ExpectState(reader, 0, 0, 0, 0);
}

TEST(BitStreamReader, SixteenBitsOverAWindowOfFiveTakeElevenFromTheReserve) {
    ArrayOf source("11001010 01110101");
    BitStreamReader reader(&source.stream, 0b10110, 5, 0, 0);
    EXPECT_EQ(reader.ReadStreamBits(16), 0b10110'11001010'011u);
    EXPECT_EQ(source.stream.GetPosition(), 2u);
    ExpectState(reader, 0, 0, 0b10101, 5);
}

TEST(BitStreamReader, TheReserveIsUsedBeforeAByteIsFetched) {
    ArrayOf source("11111111 11111111");
    BitStreamReader reader(&source.stream, 0b10110, 5, 0b0100110, 7);
    EXPECT_EQ(reader.ReadStreamBits(12), 0b10110'0100110u);
    EXPECT_EQ(source.stream.GetPosition(), 0u);
    ExpectState(reader, 0, 0, 0, 0);
}

TEST(BitStreamReader, AReadWithinTheWindowLeavesTheReserveAlone) {
    ArrayOf source("");
    BitStreamReader reader(&source.stream, 0b1011001, 7, 0b101, 3);
    EXPECT_EQ(reader.ReadStreamBits(3), 0b101u);
    ExpectState(reader, 0b1001, 4, 0b101, 3);
    EXPECT_EQ(reader.ReadStreamBits(4), 0b1001u);
    ExpectState(reader, 0, 0, 0b101, 3);
}

TEST(BitStreamReader, FullWindowOfSixteenIsReadBitByBit) {
    ArrayOf source("");
    BitStreamReader reader(&source.stream, 0xB5C3, 16, 0, 0);
    for (int bit = 15; bit >= 0; --bit)
        EXPECT_EQ(reader.ReadStreamBit(), uint32_t{0xB5C3u >> bit & 1}) << bit;
}

TEST(BitStreamReader, ReadsPaddingAsZerosAndThenThrows) {
    ArrayOf source("11111111");
    BitStreamReader reader(&source.stream, 0, 0, 0, 0);
    EXPECT_EQ(reader.ReadStreamBits(4), 0xFu);
    EXPECT_EQ(reader.ReadStreamBits(16), 0xF000u);
    EXPECT_EQ(source.stream.GetPaddingCount(), 2u);
    EXPECT_EQ(reader.ReadStreamBits(4), 0u);
    EXPECT_THROW(reader.ReadStreamBits(1), ImageDecoderException);
}

TEST(StallStreamBits, ThirteenBitWindowAcceptsThree) {
    ArrayOf source("");
    BitStreamReader reader(&source.stream, 0x1ABC, 13, 0b11, 2);
    reader.StallStreamBits(3, 0b101);
    ExpectState(reader, 0x1ABC << 3 | 0b101, 16, 0b11, 2);
}

TEST(StallStreamBits, FourteenBitWindowRefusesThreeAndStaysUnchanged) {
    ArrayOf source("");
    BitStreamReader reader(&source.stream, 0x2ABC, 14, 0b11, 2);
    try {
        reader.StallStreamBits(3, 0b101);
        ADD_FAILURE() << "accepted 17 bits";
    } catch (const std::invalid_argument& exception) {
        EXPECT_STREQ(exception.what(),
                     "The given arguments to StallStreamBits would overflow the internal buffer!");
    }
    ExpectState(reader, 0x2ABC, 14, 0b11, 2);
}

TEST(StallStreamBits, EveryWindowAcceptsWhatFitsAndNoMore) {
    for (uint32_t held = 0; held <= 16; ++held) {
        for (uint32_t count = 0; count <= 17; ++count) {
            ArrayOf source("");
            BitStreamReader reader(&source.stream, 0, held, 0, 0);
            if (count == 0 || held + count <= 16) {
                EXPECT_NO_THROW(reader.StallStreamBits(count, 0)) << held << " + " << count;
                EXPECT_EQ(reader.GetState().m_uiWindowBits, held + count);
            } else {
                EXPECT_THROW(reader.StallStreamBits(count, 0), std::invalid_argument)
                    << held << " + " << count;
            }
        }
    }
}

TEST(StallStreamBits, NoBitsChangeNothing) {
    ArrayOf source("");
    BitStreamReader reader(&source.stream, 0xFFFF, 16, 0, 0);
    reader.StallStreamBits(0, 0xFFFFFFFF);
    ExpectState(reader, 0xFFFF, 16, 0, 0);
}

TEST(StallStreamBits, OnlyTheLowBitsCount) {
    ArrayOf source("");
    BitStreamReader reader(&source.stream, 0, 0, 0, 0);
    reader.StallStreamBits(3, 0xFFFFFFF2);
    ExpectState(reader, 0b010, 3, 0, 0);
}

TEST(StallStreamBits, BitsComeBackInFrontOfTheStream) {
    ArrayOf source("10110011 01011010 11111111");
    BitStreamReader reader(&source.stream, 0, 0, 0, 0);
    const uint32_t peeked = reader.ReadStreamBits(16);
    reader.StallStreamBits(11, peeked);
    EXPECT_EQ(reader.ReadStreamBits(16), 0b011'01011010'11111u);
    EXPECT_EQ(reader.ReadStreamBits(3), 0b111u);
}

TEST(BitStreamReader, RandomReadsAndPeeksFollowTheBits) {
    tests::Random random;
    for (int run = 0; run < 200; ++run) {
        const std::string bits = RandomBits(random, 8000);
        ArrayOf source(bits);
        BitStreamReader reader(&source.stream, 0, 0, 0, 0);
        for (size_t at = 0; at + 32 < bits.size();) {
            const auto count = static_cast<uint32_t>(random.Between(1, 16));
            if (random.OneIn(2)) {
                ASSERT_EQ(reader.ReadStreamBits(count), NumberOf(bits.substr(at, count))) << at;
            } else {
                const uint32_t peeked = reader.ReadStreamBits(16);
                ASSERT_EQ(peeked, NumberOf(bits.substr(at, 16))) << at;
                reader.StallStreamBits(16 - count, peeked);
            }
            at += count;
            const BitReaderState& state = reader.GetState();
            ASSERT_EQ(source.stream.GetPosition() * 8 - state.HeldBits(), at);
            ASSERT_LE(state.m_uiWindowBits, 16u);
            ASSERT_EQ(state.m_uiWindow >> state.m_uiWindowBits, 0u);
            ASSERT_EQ(state.m_uiReserve >> state.m_uiReserveBits, 0u);
        }
    }
}

TEST(BitStreamReader, ASavedReaderContinuesWhereItStood) {
    tests::Random random;
    for (int run = 0; run < 500; ++run) {
        const std::string bits = RandomBits(random, 256);
        ArrayOf source(bits);
        BitStreamReader first(&source.stream, 0, 0, 0, 0);
        size_t at = 0;
        for (int reads = random.Between(0, 6); reads > 0; --reads) {
            const uint32_t peeked = first.ReadStreamBits(16);
            const auto count = static_cast<uint32_t>(random.Between(1, 16));
            first.StallStreamBits(16 - count, peeked);
            at += count;
        }
        const BitReaderState saved = first.GetState();
        const size_t fetched = source.stream.GetPosition();
        StreambufferArray rest(nullptr, source.bytes.data() + fetched,
                               source.bytes.size() - fetched);
        BitStreamReader second(&rest, saved.m_uiWindow, saved.m_uiWindowBits, saved.m_uiReserve,
                               saved.m_uiReserveBits);
        for (int reads = 0; reads < 6; ++reads) {
            const auto count = static_cast<uint32_t>(random.Between(1, 16));
            ASSERT_EQ(second.ReadStreamBits(count), NumberOf(bits.substr(at, count)));
            at += count;
        }
    }
}

TEST(BitStreamReader, AStateCanBeTakenOver) {
    ArrayOf source("");
    BitStreamReader first(&source.stream, 0b101, 3, 0b01, 2);
    BitStreamReader second(&source.stream, 0, 0, 0, 0);
    second.SetState(first.GetState());
    EXPECT_EQ(second.ReadStreamBits(5), 0b10101u);
    ExpectState(first, 0b101, 3, 0b01, 2);
}

} // namespace

} // namespace Vostrel::libimagedecoder
