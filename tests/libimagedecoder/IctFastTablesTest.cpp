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

    static bool IsEnd(const Entry& code) { return code.size == 0 && code.run == 0; }

    static int LevelAt(unsigned peek, unsigned bits, unsigned size) {
        return Extend(peek >> (16 - bits) & ((1U << size) - 1), size);
    }

    /// What an entry says whose level does not fit: the code's own length, if at least that fits.
    static void ExpectCodeAlone(const IctFastTables::Entry& entry, unsigned codeBits, unsigned size,
                                unsigned indexBits) {
        if (codeBits > indexBits) {
            ASSERT_EQ(entry.CodeBits(), 0U);
        } else if (entry.CodeBits() != 0) {
            ASSERT_EQ(entry.CodeBits(), codeBits);
            ASSERT_EQ(entry.LevelBits(), size);
        }
    }
};

TEST_P(IctFastTablesOf, DcEntriesAgreeWithEveryPeekThatStartsWithThem) {
    for (unsigned peek = 0; peek < 65536; ++peek) {
        const auto entry = m_Fast.Dc(peek >> (16 - IctFastTables::DcIndexBits));
        const Entry& code = m_vDc[peek];
        const unsigned codeBits = 16U - code.stallCount;
        const unsigned bits = codeBits + code.size;
        if (entry.Bits() == 0) {
            ASSERT_GT(bits, IctFastTables::DcIndexBits) << peek;
            ExpectCodeAlone(entry, codeBits, code.size, IctFastTables::DcIndexBits);
            continue;
        }
        ASSERT_EQ(entry.Level(), LevelAt(peek, bits, code.size)) << peek;
        const bool ends = entry.Advance() == IctFastTables::EndFollows;
        ASSERT_EQ(entry.Advance(), ends ? IctFastTables::EndFollows : 0) << peek;
        ASSERT_EQ(entry.Bits(), bits + (ends ? m_Fast.EndCodeBits() : 0)) << peek;
        if (ends) {
            ASSERT_TRUE(IsEnd(m_vAc[peek << bits & 0xFFFF])) << peek;
        }
    }
}

TEST_P(IctFastTablesOf, AcEntriesAgreeWithEveryPeekThatStartsWithThem) {
    for (unsigned peek = 0; peek < 65536; ++peek) {
        const auto entry = m_Fast.Ac(peek >> (16 - IctFastTables::AcIndexBits));
        const Entry& code = m_vAc[peek];
        const unsigned codeBits = 16U - code.stallCount;
        const unsigned bits = codeBits + code.size;
        if (entry.Bits() == 0) {
            ASSERT_GT(bits, IctFastTables::AcIndexBits) << peek;
            ExpectCodeAlone(entry, codeBits, code.size, IctFastTables::AcIndexBits);
            if (entry.CodeBits() != 0) {
                ASSERT_EQ(entry.Advance(), code.run + 1U) << peek;
            }
            continue;
        }
        if (IsEnd(code)) {
            ASSERT_EQ(entry.Advance(), IctFastTables::EndAlone);
            ASSERT_EQ(entry.Bits(), m_Fast.EndCodeBits());
            continue;
        }
        const bool ends = entry.Advance() >= IctFastTables::EndFollows;
        ASSERT_EQ(entry.Advance() % IctFastTables::EndFollows, code.run + 1U) << peek;
        ASSERT_EQ(entry.Bits(), bits + (ends ? m_Fast.EndCodeBits() : 0)) << peek;
        ASSERT_EQ(entry.Level(), LevelAt(peek, bits, code.size)) << peek;
        if (ends) {
            ASSERT_TRUE(IsEnd(m_vAc[peek << bits & 0xFFFF])) << peek;
        }
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
    EXPECT_EQ(m_Fast.Repeats(1), luma ? 0b001010U : 0b0000U);
    EXPECT_EQ(m_Fast.Repeats(2), luma ? 0b001010001010U : 0b00000000U);
    EXPECT_EQ(m_Fast.Repeats(3), luma ? 0b001010001010001010U : 0U);
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
