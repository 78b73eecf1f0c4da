#include "tools/UpdateWriter.h"
#include "tests/tools/BitString.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Vostrel::streamencoder {
namespace {

const std::string EndMarker14 = "11" + std::string(14, '1');
const std::string EndMarker16 = "11" + std::string(16, '1');

UpdateFormat Format(unsigned version, RecordLayout layout = RecordLayout::Pool,
                    Codec codec = Codec::Ict) {
    UpdateFormat format;
    format.m_codec = codec;
    format.m_uiProtocolVersion = version;
    format.m_layout = layout;
    return format;
}

struct Block {
    size_t m_uiSkipped;
    std::string m_bits;
};

std::string Update(const UpdateFormat& format, const std::vector<Block>& blocks) {
    UpdateWriter writer(format);
    for (const Block& block : blocks) {
        writer.WriteBlock(block.m_uiSkipped, WriterOf(block.m_bits));
    }
    return BitStringOf(writer.Finish());
}

/// The expected bits of a whole update, filled up to bytes.
std::string Whole(const std::string& text) {
    std::string bits = WithoutBlanks(text);
    bits.resize((bits.size() + 7) / 8 * 8, '0');
    return bits;
}

std::string Ones(size_t count) {
    return std::string(count, '1');
}

TEST(UpdateWriter, AnUpdateWithoutBlocksIsTheEndMarker) {
    EXPECT_EQ(Update(Format(0), {}), Whole(EndMarker14));
    EXPECT_EQ(Update(Format(1), {}), Whole(EndMarker16));
    EXPECT_EQ(Update(Format(2), {}), Whole(EndMarker16));
}

TEST(UpdateWriter, SkipCodesTakeTheShortestOfTheirThreeForms) {
    EXPECT_EQ(Update(Format(0), {{0, "101"}}), Whole("0 101" + EndMarker14));
    EXPECT_EQ(Update(Format(0), {{1, "101"}}), Whole("10 000001 101" + EndMarker14));
    EXPECT_EQ(Update(Format(0), {{63, "101"}}), Whole("10 111111 101" + EndMarker14));
    EXPECT_EQ(Update(Format(0), {{64, "101"}}), Whole("11 00000001000000 101" + EndMarker14));
    EXPECT_EQ(Update(Format(1), {{64, "101"}}), Whole("11 0000000001000000 101" + EndMarker16));
}

TEST(UpdateWriter, ForcedSkipFormsCarrySmallCounts) {
    UpdateFormat format = Format(0);
    format.m_minSkipForm = SkipForm::SixBits;
    EXPECT_EQ(Update(format, {{0, "1"}}), Whole("10 000000 1" + EndMarker14));
    EXPECT_EQ(Update(format, {{64, "1"}}), Whole("11 00000001000000 1" + EndMarker14));
    format.m_minSkipForm = SkipForm::Long;
    EXPECT_EQ(Update(format, {{0, "1"}}), Whole("11 00000000000000 1" + EndMarker14));
}

TEST(UpdateWriter, TheGreatestSkipIsOneLessThanTheEndMarker) {
    UpdateWriter version0(Format(0));
    EXPECT_EQ(version0.GetMaxSkip(), 16382U);
    EXPECT_THROW(version0.WriteBlock(16383, BitWriter()), std::invalid_argument);
    UpdateWriter version1(Format(1));
    EXPECT_EQ(version1.GetMaxSkip(), 65534U);
    EXPECT_EQ(Update(Format(1), {{65534, "0"}}), Whole("11 1111111111111110 0" + EndMarker16));
}

TEST(UpdateWriter, VersionsBelow2HaveNoLength) {
    EXPECT_EQ(Update(Format(1), {{0, "11011"}, {2, "10"}}),
              Whole("0 11011 10 000010 10" + EndMarker16));
}

TEST(UpdateWriter, PoolRecordsAreWholeBytesAndTellTheirNumber) {
    // 1 + 8 + 5 bits are two bytes, 8 + 8 + 1 bits are three.
    EXPECT_EQ(Update(Format(2), {{0, "11011"}, {2, "1"}}),
              Whole("0 00000010 11011 00  10 000010 00000011 1 0000000" + EndMarker16));
}

TEST(UpdateWriter, ContinuousRecordsFollowBitByBit) {
    EXPECT_EQ(Update(Format(2, RecordLayout::Continuous), {{0, "11011"}}),
              Whole("0 00000010 11011" + EndMarker16));
}

TEST(UpdateWriter, InPlaceRecordsHaveTheLengthZero) {
    EXPECT_EQ(Update(Format(2, RecordLayout::InPlace), {{0, "11011"}, {0, "1"}}),
              Whole("0 00000000 11011 0 00000000 1" + EndMarker16));
}

TEST(UpdateWriter, ALengthOf255IsTheLastThatFits) {
    const std::string fits = Ones(255 * 8 - 9);
    EXPECT_EQ(Update(Format(2), {{0, fits}}), Whole("0 11111111" + fits + EndMarker16));
    // One bit more: the length is 0 and the next record follows at the next bit.
    const std::string tooLong = Ones(255 * 8 - 8);
    EXPECT_EQ(Update(Format(2), {{0, tooLong}}), Whole("0 00000000" + tooLong + EndMarker16));
}

// The decoder counts the whole bytes that it holds or has fetched. Behind a block decoded in place
// the record's first bits share a byte with that block, and that byte is not counted.
TEST(UpdateWriter, BehindABlockInPlaceALengthCountsFromTheFirstWholeByte) {
    const std::string tooLong = Ones(255 * 8); // with 9 bits before it ends 1 bit into a byte
    // The second record: 9 + 13 bits from bit 1 of a byte end in the third byte, two after that
    // one.
    const std::string block = Ones(13);
    EXPECT_EQ(Update(Format(2), {{0, tooLong}, {0, block}, {0, "1"}}),
              Whole("0 00000000" + tooLong + "0 00000010" + block + " 0" + "0 00000010 1 000000" +
                    EndMarker16));
}

TEST(UpdateWriter, ABlockInPlaceThatEndsOnAByteChangesNothing) {
    const std::string tooLong = Ones(255 * 8 + 7);
    EXPECT_EQ(Update(Format(2), {{0, tooLong}, {0, "1"}}),
              Whole("0 00000000" + tooLong + "0 00000010 1 000000" + EndMarker16));
}

TEST(UpdateWriter, PaddingBytesBelongToTheirRecord) {
    UpdateFormat format = Format(2);
    format.m_uiRecordPadding = 2;
    EXPECT_EQ(Update(format, {{0, "1"}}),
              Whole("0 00000100 1 000000 00000000 00000000" + EndMarker16));
}

TEST(UpdateWriter, LbeLengthsHaveAShortAndALongForm) {
    const UpdateFormat format = Format(2, RecordLayout::Pool, Codec::Lbe);
    EXPECT_EQ(Update(format, {{0, "11"}}), Whole("0 0 0000010 11 00000" + EndMarker16));
    const std::string shortest = Ones(127 * 8 - 9);
    EXPECT_EQ(Update(format, {{0, shortest}}), Whole("0 0 1111111" + shortest + EndMarker16));
    // One bit more, and the three bits that the longer form takes.
    const std::string longer = Ones(127 * 8 - 8);
    EXPECT_EQ(Update(format, {{0, longer}}),
              Whole("0 1 0010000000" + longer + "0000" + EndMarker16));
    const std::string longest = Ones(1023 * 8 - 12);
    EXPECT_EQ(Update(format, {{0, longest}}), Whole("0 1 1111111111" + longest + EndMarker16));
    const std::string tooLong = Ones(1023 * 8 - 11);
    EXPECT_EQ(Update(format, {{0, tooLong}}), Whole("0 0 0000000" + tooLong + EndMarker16));
}

TEST(UpdateWriter, ForcedLongLbeLengthsCarrySmallNumbers) {
    UpdateFormat format = Format(2, RecordLayout::Pool, Codec::Lbe);
    format.m_bLongLengthPrefix = true;
    EXPECT_EQ(Update(format, {{0, "1111"}}), Whole("0 1 0000000010 1111" + EndMarker16));
    format.m_layout = RecordLayout::InPlace;
    EXPECT_EQ(Update(format, {{0, "1111"}}), Whole("0 1 0000000000 1111" + EndMarker16));
}

TEST(UpdateWriter, StartsANewUpdateAfterFinish) {
    UpdateWriter writer(Format(1));
    writer.WriteBlock(0, WriterOf("101"));
    writer.Finish();
    EXPECT_EQ(BitStringOf(writer.Finish()), Whole(EndMarker16));
}

TEST(UpdateWriter, RejectsUnknownProtocolVersions) {
    EXPECT_THROW(UpdateWriter(Format(3)), std::invalid_argument);
}

} // namespace
} // namespace Vostrel::streamencoder
