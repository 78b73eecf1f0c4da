#include "libimagedecoder/IctFastTables.h"
#include "libimagedecoder/ImageDecoderIct.h"

#include <gtest/gtest.h>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using Codes = HuffmanYCbCrDcAc;
using Entry = ImageDecoderIct::huff_entry_t;

/// The big table of a code, which answers for every 16-bit peek.
std::vector<Entry> BigTable(std::span<const Codes::HuffCodeEntry> codes) {
    std::vector<Entry> table(65536, Entry{0xFF, 0xFF, 0xFF, 0xFFFF});
    ImageDecoderIct::CreateHuffDecodeTableFromEncodeTable(table, codes.data(), codes.size());
    return table;
}

int Extend(unsigned bits, unsigned size) {
    if (size == 0 || bits >> (size - 1) != 0)
        return static_cast<int>(bits);
    return static_cast<int>(bits) - ((1 << size) - 1);
}

struct CodeSet {
    std::span<const Codes::HuffCodeEntry> dc;
    std::span<const Codes::HuffCodeEntry> ac;
};

class IctFastTablesOf : public testing::TestWithParam<CodeSet> {
protected:
    IctFastTables m_Fast{GetParam().dc, GetParam().ac};
    std::vector<Entry> m_vDc = BigTable(GetParam().dc);
    std::vector<Entry> m_vAc = BigTable(GetParam().ac);

    /// What the big table tells at the start of 16 bits.
    struct Plain {
        unsigned codeBits;
        unsigned bits; ///< of code and level
        unsigned size;
        unsigned advance;
        int level;
        bool isEnd;
    };

    static Plain At(const std::vector<Entry>& table, unsigned peek) {
        const Entry& code = table[peek & 0xFFFF];
        const unsigned codeBits = 16U - code.stallCount;
        const unsigned bits = codeBits + code.size;
        const unsigned level = (peek & 0xFFFF) >> (16 - std::min(bits, 16U));
        return {codeBits,
                bits,
                code.size,
                code.run + 1U,
                Extend(level & ((1U << code.size) - 1), code.size),
                code.size == 0 && code.run == 0};
    }

    /// What an entry says whose level does not fit: the code's own length, if at least that fits.
    static void ExpectCodeAlone(const IctFastTables::Entry& entry, const Plain& code,
                                unsigned indexBits) {
        ASSERT_GT(code.bits, indexBits);
        if (code.codeBits > indexBits) {
            ASSERT_EQ(entry.CodeBits(), 0U);
        } else if (entry.CodeBits() != 0) {
            ASSERT_EQ(entry.CodeBits(), code.codeBits);
            ASSERT_EQ(entry.LevelBits(), code.size);
        }
    }
};

TEST_P(IctFastTablesOf, DcEntriesAgreeWithEveryPeekThatStartsWithThem) {
    for (unsigned peek = 0; peek < 65536; ++peek) {
        SCOPED_TRACE(peek);
        const auto entry = m_Fast.Dc(peek >> (16 - IctFastTables::DcIndexBits));
        const Plain code = At(m_vDc, peek);
        if (entry.Bits() == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectCodeAlone(entry, code, IctFastTables::DcIndexBits));
            continue;
        }
        ASSERT_EQ(entry.First().m_iLevel, code.level);
        ASSERT_EQ(entry.First().m_uiAdvance, 0U);
        const bool ends = At(m_vAc, peek << code.bits).isEnd &&
                          code.bits + m_Fast.EndCodeBits() <= IctFastTables::DcIndexBits;
        ASSERT_EQ(entry.Second().m_uiAdvance, ends ? IctFastTables::EndFollows : 0);
        ASSERT_EQ(entry.Bits(), code.bits + (ends ? m_Fast.EndCodeBits() : 0));
    }
}

/// An entry holds everything that fits into its index: a value, a second one, and the end.
TEST_P(IctFastTablesOf, AcEntriesAgreeWithEveryPeekThatStartsWithThem) {
    for (unsigned peek = 0; peek < 65536; ++peek) {
        SCOPED_TRACE(peek);
        const auto entry = m_Fast.Ac(peek >> (16 - IctFastTables::AcIndexBits));
        const Plain first = At(m_vAc, peek);
        if (entry.Bits() == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectCodeAlone(entry, first, IctFastTables::AcIndexBits));
            if (entry.CodeBits() != 0) {
                ASSERT_EQ(entry.First().m_uiAdvance, first.advance);
            }
            continue;
        }
        if (first.isEnd) {
            ASSERT_EQ(entry.First().m_uiAdvance, IctFastTables::EndAlone);
            ASSERT_EQ(entry.Second().m_uiAdvance, 0U);
            ASSERT_EQ(entry.Bits(), m_Fast.EndCodeBits());
            continue;
        }
        ASSERT_EQ(entry.First().m_uiAdvance, first.advance);
        ASSERT_EQ(entry.First().m_iLevel, first.level);
        unsigned bits = first.bits;
        unsigned advance = 0;
        int level = first.level;
        const Plain second = At(m_vAc, peek << bits);
        if (!second.isEnd && bits + second.bits <= IctFastTables::AcIndexBits) {
            bits += second.bits;
            advance = second.advance;
            level = second.level;
        }
        if (At(m_vAc, peek << bits).isEnd &&
            bits + m_Fast.EndCodeBits() <= IctFastTables::AcIndexBits) {
            bits += m_Fast.EndCodeBits();
            advance += IctFastTables::EndFollows;
        }
        ASSERT_EQ(entry.Bits(), bits);
        ASSERT_EQ(entry.Second().m_uiAdvance, advance);
        ASSERT_EQ(entry.Second().m_iLevel, level);
    }
}

TEST_P(IctFastTablesOf, NoDcEntryStandsForTheAbortMarker) {
    for (unsigned peek = 0; peek < 65536; ++peek) {
        if (m_vDc[peek].size != 12)
            continue;
        const auto entry = m_Fast.Dc(peek >> (16 - IctFastTables::DcIndexBits));
        ASSERT_EQ(entry.Bits(), 0U) << peek;
        ASSERT_EQ(entry.CodeBits(), 0U) << peek;
    }
}

TEST_P(IctFastTablesOf, RepeatsAreNoDifferenceAndAnEndEach) {
    const bool luma = GetParam().ac.data() == Codes::s_aAcLuminance.data();
    EXPECT_EQ(m_Fast.RepeatBits(), luma ? 6U : 4U);
    EXPECT_EQ(m_Fast.RepeatCode(), luma ? 0b001010U : 0b0000U);
    const RepeatedTiles three = RepeatedTiles().Then(m_Fast, 3);
    EXPECT_EQ(three.Bits(), luma ? 18U : 12U);
    EXPECT_EQ(three.Codes(), luma ? 0b001010001010001010U : 0U);
    EXPECT_EQ(three.EndCodeBits(), luma ? 4U : 2U);
}

TEST(RepeatedTiles, OfAMacroblockLieBehindEachOther) {
    const IctFastTables luma(Codes::s_aDcLuminance, Codes::s_aAcLuminance);
    const IctFastTables chroma(Codes::s_aDcChrominance, Codes::s_aAcChrominance);
    const RepeatedTiles smallest = RepeatedTiles().Then(luma, 4).Then(chroma, 2);
    EXPECT_EQ(smallest.Bits(), 32U);
    EXPECT_EQ(smallest.Codes(), 0b001010001010001010001010U << 8);
    EXPECT_EQ(smallest.EndCodeBits(), 2U);
    EXPECT_EQ(RepeatedTiles().Then(luma, 4).Then(chroma, 8).Bits(), 56U);
}

TEST_P(IctFastTablesOf, WhatLiesBehindTheScanGoesToTheFirstSlot) {
    std::array<uint8_t, TileCoefficients> slots{};
    std::array<int32_t, TileCoefficients> multipliers{};
    for (size_t i = 0; i < TileCoefficients; ++i) {
        slots[i] = static_cast<uint8_t>(63 - i);
        multipliers[i] = static_cast<int32_t>(1000 + i);
    }
    m_Fast.SetDequantisation(slots, multipliers);
    for (size_t position = 0; position < TileCoefficients; ++position) {
        EXPECT_EQ(m_Fast.Scan(position).m_uiSlot, 63 - position);
        EXPECT_EQ(m_Fast.Scan(position).m_iMultiplier, 1063 - static_cast<int>(position));
        EXPECT_EQ(m_Fast.Scan(position + IctFastTables::EndFollows).m_uiSlot, 63 - position);
        EXPECT_EQ(m_Fast.Scan(position + IctFastTables::EndAlone).m_uiSlot, 0U);
    }
}

INSTANTIATE_TEST_SUITE_P(Codes, IctFastTablesOf,
                         testing::Values(CodeSet{Codes::s_aDcLuminance, Codes::s_aAcLuminance},
                                         CodeSet{Codes::s_aDcChrominance, Codes::s_aAcChrominance}),
                         [](const auto& set) {
                             return set.index == 0 ? "Luminance" : "Chrominance";
                         });

} // namespace

} // namespace Vostrel::libimagedecoder
