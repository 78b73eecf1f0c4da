#pragma once

#include "libimagedecoder/IctFastTables.h"
#include "libimagedecoder/IctHuffEntry.h"
#include "libimagedecoder/StreamWindow.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The tables of one component.
struct IctTileTables {
    const IctFastTables* m_pFast;
    const huff_entry_t* m_pDc; ///< the big tables, for long codes
    const huff_entry_t* m_pAc;
};

/// The fast path through the tiles of an update.
///
/// The cursor decodes from the stream's current window with a 64-bit register and small tables. It
/// handles ordinary tiles only: when a tile is malformed, carries the abort marker, or needs a byte
/// past the window, it declines, and the plain tile decoder takes the tile from its start.
class IctTileCursor {
public:
    /// What became of a tile.
    enum class Outcome {
        Declined, ///< nothing: the predictor is as before, the reader current at the tile's start
        Flat,     ///< only coefficients[0] is written, the others are zero
        Low,      ///< all are written, and the scan positions from LowPositions on are zero
        Full,     ///< all are written
    };

    /// Scan positions of which neither frequency is above 3.
    static constexpr size_t LowPositions = 10;

    /// readableAfter: see StreamWindow.
    explicit IctTileCursor(BitStreamReader& reader, size_t readableAfter = 0)
        : m_Window(reader, TileRoom, readableAfter) {}

    StreamWindow& GetWindow() { return m_Window; }

    /// Decodes one tile like ImageDecoderIct::HuffmannDecodeReorderDequantTile.
    Outcome DecodeTile(const IctTileTables& tables, int& dcPredictor, int16_t* coefficients);

    /// Skips these tiles if they come next. false is inconclusive: they may come next and lie at
    /// the window's end.
    bool SkipRepeats(const RepeatedTiles& tiles);

    /// Makes the reader current.
    void GiveBack() { m_Window.GiveBack(); }

private:
    /// Bytes that decoding a tile may touch from the register's next load on: 22 bits of DC, 63
    /// times 26 of AC, an end code, and what a 64-bit load reads ahead.
    static constexpr size_t TileRoom = 232;
    static_assert(TileRoom <= StreamWindow::MaxRoom);

    Outcome Decline();

    StreamWindow m_Window;
};

} // namespace Vostrel::libimagedecoder
