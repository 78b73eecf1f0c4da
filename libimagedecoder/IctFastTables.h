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
/// qualities; 9 lose up to 20 %, 13 and more fall out of the first-level cache. Pairs of values in
/// an entry save 5 to 15 % of the time that tiles take, on a console 25 %.
class IctFastTables {
public:
    static constexpr unsigned int DcIndexBits = 10;
    static constexpr unsigned int AcIndexBits = 11;

    /// Advance of an end code on its own: it leads behind every position.
    static constexpr unsigned int EndAlone = 64;
    /// Added to the advance of a value that is the tile's last, its end code included.
    static constexpr unsigned int EndFollows = 128;

    /// A value that codes tell: how far it is from its predecessor, and how large.
    struct Value {
        unsigned int m_uiAdvance = 0; ///< positions of the scan, or an end mark, or both
        int m_iLevel = 0;
    };

    /// What an index starts with: one value or two, with all their bits, and the end of the tile
    /// where there is room for it.
    ///
    /// It is one 64-bit word, so that a lookup is one load, with the bit count lowest, where a
    /// shift takes it as it is. A second value that is not there repeats the first at the same
    /// position, so that it can be stored without a question.
    class Entry {
    public:
        constexpr Entry() = default;
        constexpr Entry(unsigned int bits, const Value& first, const Value& second)
            : m_uiWord(Word(second.m_iLevel, 48) | Word(first.m_iLevel, 32) |
                       uint64_t{second.m_uiAdvance} << 16 | first.m_uiAdvance << 8 | bits) {}
        constexpr Entry(unsigned int bits, const Value& value, unsigned int end = 0)
            : Entry(bits, value, {end, value.m_iLevel}) {}

        /// Of everything in the entry, 1..11; 0: not even the first value fits into the index. The
        /// mask is the one that a 64-bit shift applies anyway.
        unsigned int Bits() const { return static_cast<unsigned int>(m_uiWord & 63); }
        Value First() const {
            return {static_cast<unsigned int>(m_uiWord >> 8 & 0xFF),
                    static_cast<int16_t>(m_uiWord >> 32)};
        }
        Value Second() const {
            return {static_cast<unsigned int>(m_uiWord >> 16 & 0xFF),
                    static_cast<int>(static_cast<int64_t>(m_uiWord) >> 48)};
        }

        /// An entry for a code alone, since its level does not fit into the index.
        static constexpr Entry OfCode(unsigned int codeBits, unsigned int levelBits,
                                      unsigned int advance) {
            return Entry(0, {advance, static_cast<int>(levelBits | codeBits << 4)});
        }
        /// Of such an entry; 0: not even the code fits.
        unsigned int CodeBits() const { return static_cast<unsigned int>(First().m_iLevel) >> 4; }
        unsigned int LevelBits() const { return static_cast<unsigned int>(First().m_iLevel) & 15; }

    private:
        static constexpr uint64_t Word(int level, unsigned int shift) {
            return uint64_t{static_cast<uint16_t>(level)} << shift;
        }

        uint64_t m_uiWord = 0;
    };

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

    /// The first value of a DC entry is the difference to the predictor, the second one at most an
    /// end mark.
    Entry Dc(size_t index) const { return m_aDc[index]; }
    Entry Ac(size_t index) const { return m_aAc[index]; }
    unsigned int EndCodeBits() const { return m_uiEndCodeBits; }

    /// position: as the sum of advances leaves it. What lies behind the scan goes to slot 0, which
    /// is the DC value's and written last.
    const ScanEntry& Scan(size_t position) const { return m_aScan[position % m_aScan.size()]; }

    /// What a DC level is multiplied to.
    int16_t DequantiseDc(int level) const { return Dequantise(level, m_aScan[0].m_iMultiplier); }

    /// level * multiplier >> 10, of which the transform takes the low 16 bits.
    static int16_t Dequantise(int32_t level, int32_t multiplier) {
        const uint32_t product = static_cast<uint32_t>(level) * static_cast<uint32_t>(multiplier);
        return static_cast<int16_t>(static_cast<int32_t>(product) >> 10);
    }

    /// A tile that repeats its predecessor, right-aligned: difference 0, then the end.
    uint64_t RepeatCode() const { return m_uiRepeatCode; }
    unsigned int RepeatBits() const { return m_uiRepeatBits; }

private:
    using Codes = std::span<const HuffmanYCbCrDcAc::HuffCodeEntry>;

    void FillDc(Codes codes);
    void FillAc(Codes codes);
    void PairUp();
    Entry EntryAt(uint32_t index, unsigned int indexBits, unsigned int codeBits,
                  unsigned int levelBits, unsigned int advance) const;

    std::array<Entry, size_t{1} << DcIndexBits> m_aDc{};
    std::array<Entry, size_t{1} << AcIndexBits> m_aAc{};
    std::array<ScanEntry, 2 * TileCoefficients> m_aScan{};
    uint32_t m_uiEndCode;
    unsigned int m_uiEndCodeBits;
    uint64_t m_uiRepeatCode;
    unsigned int m_uiRepeatBits;
};

/// The codes of adjacent tiles, each of which repeats its predecessor's DC level in its component
/// and has no other coefficient.
class RepeatedTiles {
public:
    /// These, and behind them some more of one component. All together at most 56 bits, which is a
    /// macroblock of 4:4:4.
    RepeatedTiles Then(const IctFastTables& tables, size_t tiles) const;

    uint64_t Codes() const { return m_uiCodes; } ///< right-aligned
    unsigned int Bits() const { return m_uiBits; }
    unsigned int EndCodeBits() const { return m_uiEndCodeBits; } ///< of the last tile

private:
    uint64_t m_uiCodes = 0;
    unsigned int m_uiBits = 0;
    unsigned int m_uiEndCodeBits = 0;
};

} // namespace Vostrel::libimagedecoder
