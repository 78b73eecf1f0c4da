#pragma once

#include "libimagedecoder/BitRegister.h"
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

/// The fast road through the tiles of an update.
///
/// The cursor borrows the position of a bit reader and decodes from the stream's current window
/// with a 64-bit register and small tables. It decides about nothing but ordinary tiles: when a
/// tile is malformed, carries the abort marker, or needs a byte beyond the window, it declines, and
/// the plain tile decoder takes the tile from its start. So errors, refills and padding happen in
/// one place only.
///
/// While the cursor holds a position the reader is stale; GiveBack makes it what it would be had it
/// read everything itself. That is possible because its state follows from the position and from
/// what is left of the last 16-bit peek, of which it stalls what it does not use.
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

    /// Bytes behind a window that save the cursor from copying the window's end.
    static constexpr size_t SlackBytes = 240;

    /// readableBehind: bytes of memory behind the stream's window that may be looked at, whatever
    /// they hold.
    explicit IctTileCursor(BitStreamReader& reader, size_t readableBehind = 0)
        : m_Reader(reader), m_bReadableBehind(readableBehind >= SlackBytes) {}

    /// Decodes one tile like ImageDecoderIct::HuffmannDecodeReorderDequantTile.
    Outcome DecodeTile(const IctTileTables& tables, int& dcPredictor, int16_t* coefficients);

    /// Moves behind the next tiles if they are these. false tells nothing: they may be these and
    /// lie at a window's end.
    bool SkipRepeats(const RepeatedTiles& tiles);

    /// BitStreamReader::ReadStreamBits; n: 1..16.
    uint32_t ReadBits(unsigned int n) {
        uint32_t value;
        return m_bBorrowed && TakeBits(n, value) ? value : ReadBitsPlainly(n);
    }

    /// Makes the reader current.
    void GiveBack();

private:
    /// Bytes that decoding a tile may touch from the register's next load on: 22 bits of DC, 63
    /// times 26 of AC, an end code, and what a 64-bit load reads ahead.
    static constexpr size_t TileRoom = 232;
    /// Bytes that the register may be ahead of the position.
    static constexpr size_t ReadAhead = 8;
    static_assert(SlackBytes == TileRoom + ReadAhead);

    bool Borrow();
    void SetBytes(const uint8_t* bytes, size_t size);
    bool IsReady();
    void MakeRoom();
    bool Commit(const BitRegister& bits, unsigned int windowBits);
    Outcome Decline();
    void CopyTail(size_t position);
    bool TakeBits(unsigned int n, uint32_t& value);
    uint32_t ReadBitsPlainly(unsigned int n);
    size_t Position() const { return m_Bits.Position(m_puiBytes); }

    BitStreamReader& m_Reader;
    bool m_bReadableBehind;
    bool m_bBorrowed = false;
    BitRegister m_Bits;
    const uint8_t* m_puiBytes = nullptr;        ///< the window, or its tail
    const uint8_t* m_puiRoomEnd = nullptr;      ///< where the register may stand when a tile begins
    size_t m_uiBase = 0;                        ///< byte of the window where m_puiBytes starts
    size_t m_uiSize = 0;                        ///< bytes of the window from there on
    const uint8_t* m_puiSurelyInside = nullptr; ///< up to here the register needs no closer look
    unsigned int m_uiWindowBits = 0;            ///< what the reader would have stalled, 0..16
    /// The window's last bytes, and zeros behind them.
    std::array<uint8_t, 2 * SlackBytes> m_auiTail;
};

} // namespace Vostrel::libimagedecoder
