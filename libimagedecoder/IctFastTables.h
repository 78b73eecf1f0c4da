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
/// Widths were measured (bench IctDesktop*, IctPhoto*): 11 bits for AC are best or equal over all
/// qualities; 9 lose up to 20 %, 13 and more fall out of the first-level cache.
class IctFastTables {
public:
    static constexpr unsigned int DcIndexBits = 10;
    static constexpr unsigned int AcIndexBits = 11;

    /// A code together with the level that follows it and, where there is room, the code that ends
    /// the tile. One 32-bit word, so that a lookup is one load, with the bit count lowest, where a
    /// shift takes it as it is.
    class Entry {
    public:
        constexpr Entry() = default;
        constexpr Entry(int level, unsigned int advance, unsigned int bits)
            : m_uiWord(static_cast<uint32_t>(level) << 16 | advance << 8 | bits) {}

        /// Of code, level and end together, 1..11; 0: they do not fit into the index. The mask is
        /// the one that a 64-bit shift applies anyway.
        unsigned int Bits() const { return m_uiWord & 63; }
        /// Positions from the last coefficient to this one, or an end mark.
        unsigned int Advance() const { return m_uiWord >> 8 & 0xFF; }
        int Level() const { return static_cast<int32_t>(m_uiWord) >> 16; }

        /// An entry for a code alone, since its level does not fit into the index: Bits is 0, the
        /// level is the bit size of the level, and the code's length is told apart.
        static constexpr Entry OfCode(unsigned int codeBits, unsigned int size,
                                      unsigned int advance) {
            return Entry(static_cast<int>(size | codeBits << 4), advance, 0);
        }
        unsigned int LevelBits() const { return m_uiWord >> 16 & 15; }
        unsigned int CodeBits() const { return m_uiWord >> 20; }

    private:
        uint32_t m_uiWord = 0;
    };

    /// Advance of an end code on its own: it leads behind every position.
    static constexpr unsigned int EndAlone = 64;
    /// Added to the advance of a value that is the tile's last, its end code included.
    static constexpr unsigned int EndFollows = 128;

    /// What a coefficient at a position of the scan is multiplied with, and where it goes.
    struct ScanEntry {
        int32_t m_iMultiplier = 0;
        uint32_t m_uiSlot = 0;
    };

    IctFastTables(std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> dcCodes,
                  std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> acCodes);

    /// Takes over the multipliers of a quality level and the slots of the transform.
    /// slots is indexed by scan position, multipliers by slot.
    void SetDequantisation(const std::array<uint8_t, TileCoefficients>& slots,
                           const std::array<int32_t, TileCoefficients>& multipliers);

    /// The level of a DC entry is the difference to the predictor; its advance is 0 or EndFollows.
    Entry Dc(size_t index) const { return m_aDc[index]; }
    Entry Ac(size_t index) const { return m_aAc[index]; }
    unsigned int EndCodeBits() const { return m_uiEndCodeBits; }

    /// position: as the sum of advances leaves it. What lies behind the scan goes to slot 0, which
    /// is the DC value's and written last.
    const ScanEntry& Scan(size_t position) const { return m_aScan[position % m_aScan.size()]; }

    /// level * multiplier >> 10, of which the low 16 bits count.
    static int16_t Dequantise(int32_t level, int32_t multiplier) {
        const uint32_t product = static_cast<uint32_t>(level) * static_cast<uint32_t>(multiplier);
        return static_cast<int16_t>(static_cast<int32_t>(product) >> 10);
    }

    /// Bits of a tile that repeats its predecessor: difference 0, then the end.
    unsigned int RepeatBits() const { return m_uiRepeatBits; }
    /// That many such tiles in a row, right-aligned. tiles: 0..3.
    uint64_t Repeats(size_t tiles) const { return m_auiRepeats[tiles]; }

private:
    using Codes = std::span<const HuffmanYCbCrDcAc::HuffCodeEntry>;

    void FillDc(Codes codes);
    void FillAc(Codes codes);
    void FillRepeats(Codes dcCodes);
    Entry EntryAt(uint32_t index, unsigned int indexBits, unsigned int codeBits, unsigned int size,
                  unsigned int advance) const;

    std::array<Entry, size_t{1} << DcIndexBits> m_aDc{};
    std::array<Entry, size_t{1} << AcIndexBits> m_aAc{};
    std::array<ScanEntry, 2 * TileCoefficients> m_aScan{};
    std::array<uint64_t, 4> m_auiRepeats{};
    uint32_t m_uiEndCode = 0;
    unsigned int m_uiEndCodeBits = 0;
    unsigned int m_uiRepeatBits = 0;
};

} // namespace Vostrel::libimagedecoder
