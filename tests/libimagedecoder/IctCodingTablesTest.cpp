#include "libimagedecoder/IctCodingTables.h"
#include "libimagedecoder/HuffmanYCbCrDcAc.h"

// jpeglib.h uses FILE and size_t without including what declares them.
#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {
namespace {

/// A compressor of libjpeg at quality 50 (where the quantisation tables have scale 1), which serves
/// as an independent source of the tables in Annex K of ITU-T T.81.
class JpegTables {
public:
    JpegTables() {
        m_compressor.err = jpeg_std_error(&m_errors);
        jpeg_create_compress(&m_compressor);
        m_compressor.in_color_space = JCS_RGB;
        m_compressor.input_components = 3;
        jpeg_set_defaults(&m_compressor);
        jpeg_set_quality(&m_compressor, 50, TRUE);
    }
    ~JpegTables() { jpeg_destroy_compress(&m_compressor); }
    JpegTables(const JpegTables&) = delete;
    JpegTables& operator=(const JpegTables&) = delete;

    const JHUFF_TBL& Dc(int component) const { return *m_compressor.dc_huff_tbl_ptrs[component]; }
    const JHUFF_TBL& Ac(int component) const { return *m_compressor.ac_huff_tbl_ptrs[component]; }
    const JQUANT_TBL& Quant(int component) const { return *m_compressor.quant_tbl_ptrs[component]; }

private:
    jpeg_error_mgr m_errors{};
    jpeg_compress_struct m_compressor{};
};

constexpr int Luma = 0;
constexpr int Chroma = 1;

/// Code words as strings of '0' and '1', "" for a symbol without a code.
using CodeWords = std::vector<std::string>;

template <class Table>
CodeWords CodeWordsOf(const Table& table) {
    CodeWords words;
    for (const auto& entry : table) {
        std::string word;
        for (int bit = entry.m_uiLength - 1; bit >= 0; --bit) {
            word += (entry.m_uiCode >> bit & 1) != 0 ? '1' : '0';
        }
        words.push_back(word);
    }
    return words;
}

/// Adds one to a binary number written as a string; all ones cannot happen in a prefix code.
std::string Successor(std::string word) {
    const size_t lastZero = word.rfind('0');
    word[lastZero] = '1';
    std::fill(word.begin() + static_cast<std::ptrdiff_t>(lastZero) + 1, word.end(), '0');
    return word;
}

/// Figures C.1 to C.3 of ITU-T T.81, on strings.
CodeWords CodeWordsOf(const JHUFF_TBL& compact, size_t tableSize) {
    CodeWords words(tableSize);
    std::string last;
    size_t next = 0;
    for (size_t length = 1; length <= 16; ++length) {
        for (int i = 0; i < compact.bits[length]; ++i) {
            std::string word = last.empty() ? last : Successor(last);
            word.resize(length, '0');
            words.at(compact.huffval[next++]) = word;
            last = word;
        }
    }
    return words;
}

TEST(HuffmanYCbCrDcAc, AcTablesAreTheTypicalOnesOfJpeg) {
    const JpegTables jpeg;
    EXPECT_EQ(CodeWordsOf(HuffmanYCbCrDcAc::s_aAcLuminance), CodeWordsOf(jpeg.Ac(Luma), 256));
    EXPECT_EQ(CodeWordsOf(HuffmanYCbCrDcAc::s_aAcChrominance), CodeWordsOf(jpeg.Ac(Chroma), 256));
}

TEST(HuffmanYCbCrDcAc, DcChrominanceIsTheTypicalTableOfJpeg) {
    const JpegTables jpeg;
    EXPECT_EQ(CodeWordsOf(HuffmanYCbCrDcAc::s_aDcChrominance), CodeWordsOf(jpeg.Dc(Chroma), 12));
}

TEST(HuffmanYCbCrDcAc, DcLuminanceIsTheTypicalTableOfJpegAndTheAbortMarker) {
    const JpegTables jpeg;
    CodeWords expected = CodeWordsOf(jpeg.Dc(Luma), 13);
    ASSERT_EQ(expected[12], "");
    expected[12] = "1111111110";
    EXPECT_EQ(CodeWordsOf(HuffmanYCbCrDcAc::s_aDcLuminance), expected);
}

TEST(HuffmanYCbCrDcAc, EndOfBlockAndZeroRunCodes) {
    const CodeWords luma = CodeWordsOf(HuffmanYCbCrDcAc::s_aAcLuminance);
    EXPECT_EQ(luma[0x00], "1010");
    EXPECT_EQ(luma[0xF0], "11111111001");
}

TEST(HuffmanYCbCrDcAc, AcTablesCode162Symbols) {
    for (const auto* table :
         {&HuffmanYCbCrDcAc::s_aAcLuminance, &HuffmanYCbCrDcAc::s_aAcChrominance}) {
        const CodeWords words = CodeWordsOf(*table);
        EXPECT_EQ(std::count(words.begin(), words.end(), ""), 256 - 162);
    }
}

TEST(IctCodingTables, BaseTilesAreThoseOfJpegAtScaleOne) {
    const JpegTables jpeg;
    for (size_t i = 0; i < 64; ++i) {
        EXPECT_EQ(IctCodingTables::s_aLumQuantBaseTile[i], jpeg.Quant(Luma).quantval[i]) << i;
        EXPECT_EQ(IctCodingTables::s_aChromaQuantBaseTile[i], jpeg.Quant(Chroma).quantval[i]) << i;
    }
}

TEST(IctCodingTables, ZigZagWalksTheDiagonalsInTurn) {
    size_t k = 0;
    for (int diagonal = 0; diagonal <= 14; ++diagonal) {
        for (int step = 0; step <= diagonal; ++step) {
            // Even diagonals run up and to the right, odd ones down and to the left.
            const int row = diagonal % 2 == 0 ? diagonal - step : step;
            const int column = diagonal - row;
            if (row < 8 && column < 8) {
                EXPECT_EQ(IctCodingTables::s_aZigZagTile.at(k), 8 * row + column) << k;
                ++k;
            }
        }
    }
    EXPECT_EQ(k, 64U);
}

TEST(IctCodingTables, QualityFactorFallsWithEveryLevel) {
    constexpr double factors[16] = {5.6, 4,   2.8, 2,   1.6, 1.4, 1.2, 1,
                                    0.8, 0.7, 0.6, 0.5, 0.4, 0.3, 0.2, 0.15};
    constexpr double scales[16] = {0.7, 0.5, 0.7,  0.5, 0.2, 0.7,  0.15, 0.5,
                                   0.2, 0.7, 0.15, 0.5, 0.2, 0.15, 0.2,  0.15};
    for (size_t level = 0; level < 16; ++level) {
        const IctQuality& row = IctCodingTables::s_aQualityTable[level];
        EXPECT_EQ(row.m_fScale, scales[level]) << level;
        EXPECT_NEAR(row.m_fScale * (1 << row.m_uiShift), factors[level], 1e-12) << level;
    }
}

TEST(QuantiserReciprocal, RoundsTheFractionBeforeItDropsBits) {
    EXPECT_EQ(QuantiserReciprocal(16, 0.7, 0), 731U);   // 8192 / 11.2 = 731.43
    EXPECT_EQ(QuantiserReciprocal(16, 0.7, 3), 91U);    // 731 / 8 = 91.375
    EXPECT_EQ(QuantiserReciprocal(10, 0.15, 0), 5461U); // 8192 / 1.5 = 5461.33
    EXPECT_EQ(QuantiserReciprocal(14, 0.2, 0), 2926U);  // 8192 / 2.8 = 2925.71, upwards
}

TEST(QuantiserReciprocal, StepOfOneGivesTheLargestFraction) {
    EXPECT_EQ(QuantiserReciprocal(10, 0.1, 0), 8191U);
    EXPECT_EQ(QuantiserReciprocal(2, 0.5, 1), 4095U);
}

TEST(QuantiserReciprocal, IsPositiveForEveryStepAndLevel) {
    for (const IctQuality& row : IctCodingTables::s_aQualityTable) {
        for (size_t i = 0; i < 64; ++i) {
            EXPECT_GT(QuantiserReciprocal(IctCodingTables::s_aLumQuantBaseTile[i], row.m_fScale,
                                          row.m_uiShift),
                      0U);
            EXPECT_GT(QuantiserReciprocal(IctCodingTables::s_aChromaQuantBaseTile[i], row.m_fScale,
                                          row.m_uiShift),
                      0U);
        }
    }
}

} // namespace
} // namespace Vostrel::libimagedecoder
