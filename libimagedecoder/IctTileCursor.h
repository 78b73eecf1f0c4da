#pragma once

#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/IctFastTables.h"
#include "libimagedecoder/IctHuffEntry.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The tables of one component.
struct IctTileTables {
    const IctFastTables* m_pFast;
    const huff_entry_t* m_pDc; ///< the big tables, for long codes
    const huff_entry_t* m_pAc;
};

/// The fast road through the tiles of a macroblock.
///
/// The cursor borrows the position of a bit reader and decodes from the stream's current window
/// with a 64-bit register and small tables. It decides about nothing but ordinary tiles: when a
/// tile is malformed, carries the abort marker, or needs a byte beyond the window, it declines, and
/// the plain tile decoder takes the tile from its start. So errors, refills and padding happen in
/// one place only.
///
/// While the cursor holds a position the reader is stale; GiveBack makes it what it would be after
/// the plain decoder. That is possible because every tile ends in the end code of its component:
/// the last thing that the plain decoder did is a 16-bit peek at that code, of which it stalled
/// what is not code.
class IctTileCursor {
public:
    /// What became of a tile.
    enum class Outcome {
        Declined, ///< nothing: the predictor is as before, the reader current at the tile's start
        Flat,     ///< only coefficients[0] is written, the others are zero
        Full,     ///< all coefficients are written
    };

    explicit IctTileCursor(BitStreamReader& reader) : m_Reader(reader) {}

    /// Decodes one tile like ImageDecoderIct::HuffmannDecodeReorderDequantTile.
    Outcome DecodeTile(const IctTileTables& tables, int& dcPredictor, int16_t* coefficients);

    /// Makes the reader current.
    void GiveBack();

private:
    /// Bytes that decoding a tile may touch from its first one on: 20 bits of DC, 63 times 26 of
    /// AC, an end code, and what a 64-bit load reads ahead.
    static constexpr size_t TileRoom = 232;

    bool Borrow();
    void CopyTail(size_t firstByte);
    Outcome DecodeBits(const IctTileTables& tables, int& dcPredictor, int16_t* coefficients);

    BitStreamReader& m_Reader;
    bool m_bBorrowed = false;
    bool m_bInTail = false;
    unsigned int m_uiEndCodeBits = 0;    ///< of the last tile since Borrow; 0: there was none
    const uint8_t* m_puiBytes = nullptr; ///< the window, or its tail
    size_t m_uiBase = 0;                 ///< byte of the window where m_puiBytes starts
    size_t m_uiSize = 0;                 ///< bytes of the window from there on
    size_t m_uiPosition = 0;             ///< next bit, counted from m_puiBytes
    std::array<uint8_t, 2 * TileRoom> m_auiTail; ///< the window's last bytes, zeros behind them
};

} // namespace Vostrel::libimagedecoder
