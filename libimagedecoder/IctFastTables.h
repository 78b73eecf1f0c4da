#pragma once

#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "libimagedecoder/IctTiles.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Vostrel::libimagedecoder {

/// Small first-level tables of one component, for IctTileCursor. They are derived from the same
/// code tables as the big ones of 65536 entries and answer what those would, for the codes that are
/// frequent and short; the cursor asks the big tables for the others.
///
/// Widths were measured: 11 bits for AC are best or equal over all qualities; 9 lose up to 20 %, 13
/// and more fall out of the first-level cache.
class IctFastTables {
public:
    static constexpr unsigned int DcIndexBits = 9;
    static constexpr unsigned int AcIndexBits = 11;

    /// A DC code: the bits of the difference that follow it.
    struct DcEntry {
        uint8_t m_uiCategory;
        uint8_t m_uiCodeBits; ///< 0: the code is longer than the index
    };

    /// An AC code together with the level that follows it and, where there is room, the code that
    /// ends the tile.
    struct AcEntry {
        int16_t m_iLevel;
        uint8_t m_uiAdvance; ///< positions from the last coefficient to this one, and EndFollows
        uint8_t m_uiBits;    ///< of code, level and end; 0: they do not fit into the index
    };

    /// Advance of an end code on its own: it leads behind every position.
    static constexpr uint8_t EndAlone = 64;
    /// Added to the advance of a coefficient that is the tile's last, its end code included.
    static constexpr uint8_t EndFollows = 128;

    IctFastTables(std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> dcCodes,
                  std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> acCodes);

    /// Takes over the multipliers of a quality level and the slots of the transform, both in the
    /// order in which a tile codes its coefficients. multipliers is indexed by slot.
    void SetDequantisation(const std::array<uint8_t, TileCoefficients>& slots,
                           const std::array<int32_t, TileCoefficients>& multipliers);

    const DcEntry& Dc(size_t index) const { return m_aDc[index]; }
    const AcEntry& Ac(size_t index) const { return m_aAc[index]; }
    unsigned int EndCodeBits() const { return m_uiEndCodeBits; }
    size_t Slot(size_t position) const { return m_auiSlot[position]; }

    /// level * multiplier >> 10 at a position of the scan, of which the low 16 bits count.
    int16_t Dequantise(size_t position, int32_t level) const {
        const uint32_t product =
            static_cast<uint32_t>(level) * static_cast<uint32_t>(m_aiMultiplier[position]);
        return static_cast<int16_t>(static_cast<int32_t>(product) >> 10);
    }

private:
    void FillDc(std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> codes);
    void FillAc(std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> codes);
    AcEntry AcEntryAt(uint32_t index, unsigned int symbol, unsigned int codeBits,
                      uint32_t endCode) const;

    std::array<DcEntry, size_t{1} << DcIndexBits> m_aDc{};
    std::array<AcEntry, size_t{1} << AcIndexBits> m_aAc{};
    unsigned int m_uiEndCodeBits = 0;
    std::array<uint8_t, TileCoefficients> m_auiSlot{};
    std::array<int32_t, TileCoefficients> m_aiMultiplier{};
};

} // namespace Vostrel::libimagedecoder
