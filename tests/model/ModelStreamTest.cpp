#include "tests/model/BitText.h"
#include "tests/model/ModelBits.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

TEST(ModelStream, BytesThenTwoZerosThenTheError) {
    ModelStream stream({7, 8, 9}, 2);
    for (const int expected : {7, 8, 9, 0, 0})
        EXPECT_EQ(stream.NextByte(), expected);
    try {
        stream.NextByte();
        FAIL() << "a third padding byte";
    } catch (const ModelError& error) {
        EXPECT_STREQ(error.what(), "Stream has no more bytes!");
    }
}

TEST(ModelStream, PaddingIsNoData) {
    ModelStream stream({7}, 1);
    EXPECT_EQ(stream.NextDataByte(), 7);
    EXPECT_EQ(stream.NextDataByte(), std::nullopt);
}

TEST(ModelStream, GivenBackBytesAreNotConsumed) {
    ModelStream stream({1, 2, 3, 4}, 4);
    for (int i = 0; i < 4; ++i)
        stream.NextByte();
    stream.GiveBack(2);
    EXPECT_EQ(stream.Consumed(), 2u);
}

TEST(ModelStream, GiveBackStopsAtTheStartOfThePiece) {
    ModelStream stream({1, 2, 3, 4}, 3);
    for (int i = 0; i < 4; ++i)
        stream.NextByte();
    stream.GiveBack(3);
    EXPECT_EQ(stream.Consumed(), 3u);
}

TEST(ModelStream, PaddingIsGivenBackFirst) {
    ModelStream stream({1, 2}, 2);
    for (int i = 0; i < 4; ++i)
        stream.NextByte();
    stream.GiveBack(1);
    EXPECT_EQ(stream.Consumed(), 2u);
    stream.GiveBack(3);
    EXPECT_EQ(stream.Consumed(), 1u);
}

TEST(ModelBits, TheMostSignificantBitComesFirst) {
    ModelStream stream(BytesOf("101 00001 1111 0000"), 2);
    ModelBits bits(stream);
    EXPECT_EQ(bits.Read(3), 5);
    EXPECT_EQ(bits.Read(9), 0b000011111);
}

TEST(ModelBits, BytesAreFetchedOnlyWhenNeeded) {
    ModelStream stream({0xFF, 0xFF, 0xFF, 0xFF}, 4);
    ModelBits bits(stream);
    bits.Read(8);
    EXPECT_EQ(stream.Consumed(), 1u);
    bits.Peek16();
    EXPECT_EQ(stream.Consumed(), 3u);
    bits.Drop(5);
    bits.Peek16();
    EXPECT_EQ(stream.Consumed(), 4u);
    EXPECT_EQ(bits.HeldBits(), 19);
}

TEST(ModelBits, AReaderContinuesWithTheBitsOfAnother) {
    ModelStream first(BytesOf("1011 0110"), 1);
    ModelBits bits(first);
    bits.Read(4);
    ModelStream second(BytesOf("1001 0000"), 1);
    ModelBits continued(second, bits);
    EXPECT_EQ(continued.Read(8), 0b01101001);
}

} // namespace

} // namespace Vostrel::model
