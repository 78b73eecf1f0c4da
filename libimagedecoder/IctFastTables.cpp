#include "libimagedecoder/IctFastTables.h"

namespace Vostrel::libimagedecoder {
namespace {

using HuffCodeEntry = HuffmanYCbCrDcAc::HuffCodeEntry;

constexpr size_t EndSymbol = 0;
constexpr size_t DcAbortMarker = 12;

/// A value of size bits, by the sign rule of ITU-T T.81, EXTEND.
int Extended(uint32_t bits, unsigned int size) {
    if (size == 0)
        return 0;
    const bool positive = bits >> (size - 1) != 0;
    return static_cast<int>(bits) - (positive ? 0 : (1 << size) - 1);
}

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
    : m_uiEndCode(acCodes[EndSymbol].m_uiCode), m_uiEndCodeBits(acCodes[EndSymbol].m_uiLength) {
    FillDc(dcCodes);
    FillAc(acCodes);
    FillRepeats(dcCodes);
}

void IctFastTables::SetDequantisation(const std::array<uint8_t, TileCoefficients>& slots,
                                      const std::array<int32_t, TileCoefficients>& multipliers) {
    for (size_t position = 0; position < TileCoefficients; ++position)
        m_aScan[position] = {multipliers[slots[position]], slots[position]};
}

void IctFastTables::FillDc(Codes codes) {
    for (unsigned int category = 0; category < codes.size(); ++category) {
        if (category == DcAbortMarker)
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
            m_aAc[index] = symbol == EndSymbol ? Entry(0, EndAlone, code.m_uiLength)
                                               : EntryAt(index, AcIndexBits, code.m_uiLength,
                                                         symbol & 15, (symbol >> 4) + 1);
        });
    }
}

void IctFastTables::FillRepeats(Codes dcCodes) {
    const HuffCodeEntry& noDifference = dcCodes[0];
    m_uiRepeatBits = noDifference.m_uiLength + m_uiEndCodeBits;
    const uint64_t repeat = uint64_t{noDifference.m_uiCode} << m_uiEndCodeBits | m_uiEndCode;
    for (size_t tiles = 1; tiles < m_auiRepeats.size(); ++tiles)
        m_auiRepeats[tiles] = m_auiRepeats[tiles - 1] << m_uiRepeatBits | repeat;
}

/// The entry of an index that starts with a code of codeBits and has the level after it, if all of
/// that fits.
IctFastTables::Entry IctFastTables::EntryAt(uint32_t index, unsigned int indexBits,
                                            unsigned int codeBits, unsigned int size,
                                            unsigned int advance) const {
    const unsigned int bits = codeBits + size;
    if (bits > indexBits)
        return Entry::OfCode(codeBits, size, advance);
    const unsigned int bitsLeft = indexBits - bits;
    const int level = Extended(LowBits(index >> bitsLeft, size), size);
    const bool endFollows = bitsLeft >= m_uiEndCodeBits &&
                            LowBits(index, bitsLeft) >> (bitsLeft - m_uiEndCodeBits) == m_uiEndCode;
    if (endFollows)
        return Entry(level, advance + EndFollows, bits + m_uiEndCodeBits);
    return Entry(level, advance, bits);
}

} // namespace Vostrel::libimagedecoder
