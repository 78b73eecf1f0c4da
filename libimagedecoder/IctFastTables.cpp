#include "libimagedecoder/IctFastTables.h"

#include "libimagedecoder/IctSyntax.h"

namespace Vostrel::libimagedecoder {
namespace {

using HuffCodeEntry = HuffmanYCbCrDcAc::HuffCodeEntry;

constexpr size_t EndSymbol = 0;
constexpr size_t NoDifference = 0;

/// Calls fill(index) for every index of indexBits bits that starts with the code.
template <class Fill>
void ForEachIndex(const HuffCodeEntry& code, unsigned int indexBits, Fill fill) {
    if (code.m_uiLength == 0 || code.m_uiLength > indexBits)
        return;
    const unsigned int freeBits = indexBits - code.m_uiLength;
    const uint32_t first = uint32_t{code.m_uiCode} << freeBits;
    for (uint32_t rest = 0; rest < 1u << freeBits; ++rest)
        fill(first + rest);
}

uint32_t LowBits(uint32_t value, unsigned int bits) {
    return value & ((1u << bits) - 1);
}

} // namespace

IctFastTables::IctFastTables(Codes dcCodes, Codes acCodes)
    : m_uiEndCode(acCodes[EndSymbol].m_uiCode), m_uiEndCodeBits(acCodes[EndSymbol].m_uiLength),
      m_uiRepeatCode(uint64_t{dcCodes[NoDifference].m_uiCode} << m_uiEndCodeBits | m_uiEndCode),
      m_uiRepeatBits(dcCodes[NoDifference].m_uiLength + m_uiEndCodeBits) {
    FillDc(dcCodes);
    FillAc(acCodes);
    PairUp();
}

void IctFastTables::SetDequantisation(const std::array<uint8_t, TileCoefficients>& slots,
                                      const std::array<int32_t, TileCoefficients>& multipliers) {
    for (size_t position = 0; position < TileCoefficients; ++position)
        m_aScan[position] = {multipliers[slots[position]], slots[position]};
}

void IctFastTables::FillDc(Codes codes) {
    for (unsigned int category = 0; category < codes.size(); ++category) {
        if (category == IctAbortMarker)
            continue;
        const HuffCodeEntry& code = codes[category];
        ForEachIndex(code, DcIndexBits, [&](uint32_t index) {
            m_aDc[index] = EntryAt(index, DcIndexBits, code.m_uiLength, category, 0);
        });
    }
}

void IctFastTables::FillAc(Codes codes) {
    for (unsigned int symbol = 0; symbol < codes.size(); ++symbol) {
        const HuffCodeEntry& code = codes[symbol];
        ForEachIndex(code, AcIndexBits, [&](uint32_t index) {
            m_aAc[index] = symbol == EndSymbol ? Entry(code.m_uiLength, {EndAlone, 0})
                                               : EntryAt(index, AcIndexBits, code.m_uiLength,
                                                         symbol & 15, (symbol >> 4) + 1);
        });
    }
}

/// Joins an entry of one value with that of the bits behind it, if those still lie in the index.
void IctFastTables::PairUp() {
    const auto single = m_aAc;
    for (uint32_t index = 0; index < single.size(); ++index) {
        const Entry& first = single[index];
        if (first.Bits() == 0 || first.First().m_uiAdvance == EndAlone ||
            first.Second().m_uiAdvance == EndFollows)
            continue;
        const unsigned int bitsLeft = AcIndexBits - first.Bits();
        const Entry& second = single[LowBits(index, bitsLeft) << first.Bits()];
        unsigned int bits = second.Bits();
        unsigned int end = second.Second().m_uiAdvance;
        if (end != 0 && bits > bitsLeft) { // made of the zeros behind the index
            bits -= m_uiEndCodeBits;
            end = 0;
        }
        if (bits == 0 || bits > bitsLeft)
            continue;
        const Value value{second.First().m_uiAdvance + end, second.First().m_iLevel};
        m_aAc[index] = Entry(first.Bits() + bits, first.First(), value);
    }
}

/// The entry of an index that starts with a code of codeBits and has the level after it, if all of
/// that fits.
IctFastTables::Entry IctFastTables::EntryAt(uint32_t index, unsigned int indexBits,
                                            unsigned int codeBits, unsigned int levelBits,
                                            unsigned int advance) const {
    const unsigned int bits = codeBits + levelBits;
    if (bits > indexBits)
        return Entry::OfCode(codeBits, levelBits, advance);
    const unsigned int bitsLeft = indexBits - bits;
    const Value value{advance, ExtendIctValue(LowBits(index >> bitsLeft, levelBits), levelBits)};
    const bool endFollows = bitsLeft >= m_uiEndCodeBits &&
                            LowBits(index, bitsLeft) >> (bitsLeft - m_uiEndCodeBits) == m_uiEndCode;
    return endFollows ? Entry(bits + m_uiEndCodeBits, value, EndFollows) : Entry(bits, value);
}

RepeatedTiles RepeatedTiles::Then(const IctFastTables& tables, size_t tiles) const {
    RepeatedTiles all = *this;
    for (size_t i = 0; i < tiles; ++i) {
        all.m_uiCodes = all.m_uiCodes << tables.RepeatBits() | tables.RepeatCode();
        all.m_uiBits += tables.RepeatBits();
        all.m_uiEndCodeBits = tables.EndCodeBits();
    }
    return all;
}

} // namespace Vostrel::libimagedecoder
