#include "libimagedecoder/IctFastTables.h"

namespace Vostrel::libimagedecoder {
namespace {

using HuffCodeEntry = HuffmanYCbCrDcAc::HuffCodeEntry;

constexpr size_t EndSymbol = 0;

/// A value of size bits, by the sign rule of ITU-T T.81, EXTEND.
int32_t Extended(uint32_t bits, unsigned int size) {
    if (size == 0)
        return 0;
    const bool positive = bits >> (size - 1) != 0;
    return static_cast<int32_t>(bits) - (positive ? 0 : (1 << size) - 1);
}

/// Calls fill(index) for every index of indexBits bits that starts with the code.
template <class Fill>
void ForEachIndex(const HuffCodeEntry& code, unsigned int indexBits, Fill fill) {
    const unsigned int freeBits = indexBits - code.m_uiLength;
    const uint32_t first = uint32_t{code.m_uiCode} << freeBits;
    for (uint32_t rest = 0; rest < 1u << freeBits; ++rest)
        fill(first + rest);
}

} // namespace

IctFastTables::IctFastTables(std::span<const HuffCodeEntry> dcCodes,
                             std::span<const HuffCodeEntry> acCodes)
    : m_uiEndCodeBits(acCodes[EndSymbol].m_uiLength) {
    FillDc(dcCodes);
    FillAc(acCodes);
}

void IctFastTables::SetDequantisation(const std::array<uint8_t, TileCoefficients>& slots,
                                      const std::array<int32_t, TileCoefficients>& multipliers) {
    m_auiSlot = slots;
    for (size_t position = 0; position < TileCoefficients; ++position)
        m_aiMultiplier[position] = multipliers[slots[position]];
}

void IctFastTables::FillDc(std::span<const HuffCodeEntry> codes) {
    for (size_t symbol = 0; symbol < codes.size(); ++symbol) {
        const HuffCodeEntry& code = codes[symbol];
        if (code.m_uiLength == 0 || code.m_uiLength > DcIndexBits)
            continue;
        ForEachIndex(code, DcIndexBits, [&](uint32_t index) {
            m_aDc[index] = {static_cast<uint8_t>(symbol), code.m_uiLength};
        });
    }
}

void IctFastTables::FillAc(std::span<const HuffCodeEntry> codes) {
    for (size_t symbol = 0; symbol < codes.size(); ++symbol) {
        const HuffCodeEntry& code = codes[symbol];
        if (code.m_uiLength == 0 || code.m_uiLength > AcIndexBits)
            continue;
        ForEachIndex(code, AcIndexBits, [&](uint32_t index) {
            m_aAc[index] = AcEntryAt(index, static_cast<unsigned int>(symbol), code.m_uiLength,
                                     codes[EndSymbol].m_uiCode);
        });
    }
}

IctFastTables::AcEntry IctFastTables::AcEntryAt(uint32_t index, unsigned int symbol,
                                                unsigned int codeBits, uint32_t endCode) const {
    if (symbol == EndSymbol)
        return {0, EndAlone, static_cast<uint8_t>(codeBits)};
    const unsigned int size = symbol & 15;
    const unsigned int bits = codeBits + size;
    if (bits > AcIndexBits)
        return {};
    const unsigned int bitsLeft = AcIndexBits - bits;
    const uint32_t levelBits = (index >> bitsLeft) & ((1u << size) - 1);
    AcEntry entry{static_cast<int16_t>(Extended(levelBits, size)),
                  static_cast<uint8_t>((symbol >> 4) + 1), static_cast<uint8_t>(bits)};
    if (bitsLeft >= m_uiEndCodeBits) {
        const uint32_t next = (index & ((1u << bitsLeft) - 1)) >> (bitsLeft - m_uiEndCodeBits);
        if (next == endCode) {
            entry.m_uiAdvance = static_cast<uint8_t>(entry.m_uiAdvance + EndFollows);
            entry.m_uiBits = static_cast<uint8_t>(bits + m_uiEndCodeBits);
        }
    }
    return entry;
}

} // namespace Vostrel::libimagedecoder
