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
};

TEST_P(IctFastTablesOf, DcEntriesAgreeWithEveryPeekThatStartsWithThem) {
    for (size_t peek = 0; peek < 65536; ++peek) {
        const auto entry = m_Fast.Dc(peek >> (16 - IctFastTables::DcIndexBits));
        if (entry.m_uiCodeBits == 0)
            continue;
        ASSERT_EQ(entry.m_uiCategory, m_vDc[peek].size) << peek;
        ASSERT_EQ(entry.m_uiCodeBits, 16 - m_vDc[peek].stallCount) << peek;
    }
}

TEST_P(IctFastTablesOf, DcEntriesLeaveOutOnlyLongCodes) {
    for (size_t peek = 0; peek < 65536; ++peek) {
        const auto entry = m_Fast.Dc(peek >> (16 - IctFastTables::DcIndexBits));
        if (entry.m_uiCodeBits == 0) {
            ASSERT_GT(16U - m_vDc[peek].stallCount, IctFastTables::DcIndexBits) << peek;
        }
    }
}

TEST_P(IctFastTablesOf, AcEntriesAgreeWithEveryPeekThatStartsWithThem) {
    const unsigned endBits = m_Fast.EndCodeBits();
    for (unsigned peek = 0; peek < 65536; ++peek) {
        const auto entry = m_Fast.Ac(peek >> (16 - IctFastTables::AcIndexBits));
        const Entry& code = m_vAc[peek];
        const unsigned bits = 16U - code.stallCount + code.size;
        if (entry.m_uiBits == 0) {
            ASSERT_GT(bits, IctFastTables::AcIndexBits) << peek;
            continue;
        }
        if (code.size == 0 && code.run == 0) {
            ASSERT_EQ(entry.m_uiAdvance, IctFastTables::EndAlone);
            ASSERT_EQ(entry.m_uiBits, endBits);
            continue;
        }
        const bool ends = entry.m_uiAdvance >= IctFastTables::EndFollows;
        ASSERT_EQ(entry.m_uiAdvance % IctFastTables::EndFollows, code.run + 1) << peek;
        ASSERT_EQ(entry.m_uiBits, bits + (ends ? endBits : 0)) << peek;
        const unsigned level = peek >> (16 - bits) & ((1U << code.size) - 1);
        ASSERT_EQ(entry.m_iLevel, Extend(level, code.size)) << peek;
        if (ends) {
            const Entry& next = m_vAc[peek << bits & 0xFFFF];
            ASSERT_TRUE(next.size == 0 && next.run == 0) << peek;
        }
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
