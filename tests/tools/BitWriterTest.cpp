#include "tests/tools/BitString.h"

#include <gtest/gtest.h>

namespace Vostrel::streamencoder {
namespace {

TEST(BitWriter, PutsTheHighestBitOfAFieldFirst) {
    BitWriter bits;
    bits.Write(0b101, 3);
    bits.Write(0b0011, 4);
    EXPECT_EQ(BitStringOf(bits), "1010011");
    EXPECT_EQ(bits.GetBytes(), std::vector<uint8_t>{0b10100110});
}

TEST(BitWriter, FieldsCrossBytes) {
    BitWriter bits;
    bits.Write(0b1, 1);
    bits.Write(0x80000001, 32);
    EXPECT_EQ(bits.GetBitCount(), 33U);
    EXPECT_EQ(bits.GetBytes(), (std::vector<uint8_t>{0xC0, 0x00, 0x00, 0x00, 0x80}));
}

TEST(BitWriter, IgnoresBitsAboveTheField) {
    BitWriter bits;
    bits.Write(0xFFFFFFF0, 4);
    bits.Write(0xABC, 0);
    EXPECT_EQ(BitStringOf(bits), "0000");
}

TEST(BitWriter, AligningFillsWithZerosAndKeepsAWholeByte) {
    BitWriter bits;
    bits.AlignToByte();
    EXPECT_EQ(bits.GetBitCount(), 0U);
    bits.Write(1, 1);
    bits.AlignToByte();
    bits.AlignToByte();
    bits.Write(1, 1);
    EXPECT_EQ(BitStringOf(bits), "100000001");
}

TEST(BitWriter, AppendsAnotherWriterAtAnyBit) {
    for (unsigned start = 0; start < 9; ++start) {
        BitWriter bits;
        bits.Write(0, start);
        bits.Append(WriterOf("110 10101010 1"));
        EXPECT_EQ(BitStringOf(bits), std::string(start, '0') + "110101010101");
    }
}

TEST(BitWriter, IsEmptyAfterClear) {
    BitWriter bits = WriterOf("111");
    bits.Clear();
    bits.Write(0b01, 2);
    EXPECT_EQ(BitStringOf(bits), "01");
}

} // namespace
} // namespace Vostrel::streamencoder
