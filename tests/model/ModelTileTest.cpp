#include "tests/model/ModelTile.h"
#include "tests/model/BitText.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

// Codes of the luminance tables that the tests spell out.
const std::string EndOfBlock = "1010";
const std::string ZeroRun = "11111111001";
const std::string Abort = "1111111110";

/// A tile whose multipliers are all one (1024 in units of 2^-10).
class ModelTile : public testing::Test {
protected:
    TileTable Decode(const std::string& text) {
        std::string padded = text;
        padded.append(32, '0');
        ModelStream stream(BytesOf(padded), 1000);
        ModelBits bits(stream);
        const TileTable tile =
            DecodeTile(bits, {&DcLuminance(), &AcLuminance(), &m_Dequantisation}, m_iPredictor);
        m_uiUsedBits = stream.Consumed() * 8 - static_cast<size_t>(bits.HeldBits());
        return tile;
    }

    TileTable m_Dequantisation = [] {
        TileTable ones{};
        ones.fill(1024);
        return ones;
    }();
    int64_t m_iPredictor = 0;
    size_t m_uiUsedBits = 0;
};

TEST_F(ModelTile, EmptyDifferenceKeepsThePredictor) {
    m_iPredictor = 9;
    TileTable expected{};
    expected[0] = 9;
    EXPECT_EQ(Decode("00" + EndOfBlock), expected);
    EXPECT_EQ(m_iPredictor, 9);
    EXPECT_EQ(m_uiUsedBits, 6u);
}

TEST_F(ModelTile, ClearTopBitMakesANegativeDifference) {
    EXPECT_EQ(Decode("100 010" + EndOfBlock)[0], -5);
    EXPECT_EQ(Decode("100 101" + EndOfBlock)[0], 0);
    EXPECT_EQ(m_iPredictor, 0);
}

TEST_F(ModelTile, AbortMarkerFailsTheUpdate) {
    EXPECT_THROW(Decode(Abort), ModelError);
}

TEST_F(ModelTile, RunAndSizeReachTheirPosition) {
    m_Dequantisation[16] = 1500;
    // Run 2, size 1 is 11100: the third position of the scan is row 2, column 0.
    TileTable expected{};
    expected[16] = -2; // -1500 / 1024, rounded down
    EXPECT_EQ(Decode("00 11100 0" + EndOfBlock), expected);
}

TEST_F(ModelTile, SixtyThreeIsTheLastPosition) {
    const std::string threeRuns = ZeroRun + ZeroRun + ZeroRun;
    // Run 14, size 1 after 48 positions ends at 63.
    TileTable expected{};
    expected[63] = 1;
    EXPECT_EQ(Decode("00" + threeRuns + "1111111111101011 1" + EndOfBlock), expected);
    EXPECT_THROW(Decode("00" + threeRuns + ZeroRun + EndOfBlock), ModelError);
}

TEST_F(ModelTile, ProductsKeepTheirLowSixteenBits) {
    m_Dequantisation[0] = 1024 * 100;
    m_iPredictor = 1000;
    EXPECT_EQ(Decode("00" + EndOfBlock)[0], 100000 - 131072);
}

/// Decodes the pattern, followed by zeros, and gives the symbol and the code's length.
std::pair<int, int> SymbolAndLength(const HuffmanTable& table, const std::string& pattern) {
    ModelStream stream(BytesOf(pattern + std::string(16, '0')), 100);
    ModelBits bits(stream);
    const int symbol = table.Decode(bits);
    return {symbol, 16 - bits.HeldBits() % 16};
}

TEST(ModelTables, CodesDecodeToTheirSymbols) {
    EXPECT_EQ(SymbolAndLength(DcLuminance(), "1111111110"), std::pair(12, 10));
    EXPECT_EQ(SymbolAndLength(AcLuminance(), "1010"), std::pair(0x00, 4));
    EXPECT_EQ(SymbolAndLength(AcLuminance(), "11111111001"), std::pair(0xF0, 11));
    EXPECT_EQ(SymbolAndLength(DcChrominance(), "11111111110"), std::pair(11, 11));
    EXPECT_EQ(SymbolAndLength(AcChrominance(), "00"), std::pair(0x00, 2));
    EXPECT_EQ(SymbolAndLength(AcChrominance(), "1111111010"), std::pair(0xF0, 10));
}

TEST(ModelTables, AllOnesDecodesAsTheLastCode) {
    const std::string allOnes(16, '1');
    EXPECT_EQ(SymbolAndLength(DcLuminance(), allOnes), std::pair(12, 10));
    EXPECT_EQ(SymbolAndLength(DcChrominance(), allOnes), std::pair(11, 11));
    EXPECT_EQ(SymbolAndLength(AcLuminance(), allOnes), std::pair(0xFA, 16));
    EXPECT_EQ(SymbolAndLength(AcChrominance(), allOnes), std::pair(0xFA, 16));
}

TEST(ModelTables, ScanRunsAlongTheDiagonals) {
    const std::array<int, 10> begin{0, 1, 8, 16, 9, 2, 3, 10, 17, 24};
    EXPECT_TRUE(std::equal(begin.begin(), begin.end(), ZigZag().begin()));
    EXPECT_EQ(ZigZag()[62], 62);
    EXPECT_EQ(ZigZag()[63], 63);
}

TEST(ModelTables, MultiplierIsTheStepOfTheReciprocal) {
    // 8192 / (16 * 0.7) is 731 when rounded; 8192 / 731 * 1024 is 11475.6.
    EXPECT_EQ(DequantisationValue(16, 0.7, 0, 10, 1.0), 11476);
    // A reciprocal of 8192 does not fit into 13 bits: 8192 / 8191 * 1024 is 1024.1.
    EXPECT_EQ(DequantisationValue(1, 1.0, 0, 10, 1.0), 1024);
    // 731 >> 3 is 91; 8192 / 91 * 1024 is 92182.505.
    EXPECT_EQ(DequantisationValue(16, 0.7, 3, 10, 1.0), 92183);
}

} // namespace

} // namespace Vostrel::model
