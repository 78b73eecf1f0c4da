#include "libimagedecoder/IctTileCursor.h"

#include "libimagedecoder/IctSyntax.h"

#include <emmintrin.h>

namespace Vostrel::libimagedecoder {
namespace {

using Entry = IctFastTables::Entry;

constexpr unsigned int PeekBits = StreamWindow::PeekBits;

/// Written out: g++ 12 turns a loop into string stores, which cost
/// 30 cycles to start.
[[gnu::always_inline]] inline void ClearTile(int16_t* coefficients) {
    auto* const registers = reinterpret_cast<__m128i*>(coefficients);
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(registers + 0, zero);
    _mm_storeu_si128(registers + 1, zero);
    _mm_storeu_si128(registers + 2, zero);
    _mm_storeu_si128(registers + 3, zero);
    _mm_storeu_si128(registers + 4, zero);
    _mm_storeu_si128(registers + 5, zero);
    _mm_storeu_si128(registers + 6, zero);
    _mm_storeu_si128(registers + 7, zero);
}

/// Tile state, kept in processor registers: every member is inlined by force, since one call would
/// put them all into memory and double the time of a tile.
struct Tile {
    BitRegister m_Bits;
    const IctTileTables& m_Tables;
    Entry m_Entry{};         ///< what was taken last
    size_t m_uiPosition = 0; ///< of its coefficient in the scan, and behind the scan at the end

    /// The difference to the DC predictor. 56 bits must be valid; at least 46 are afterwards.
    [[gnu::always_inline]] int TakeDc() {
        m_Entry = m_Tables.m_pFast->Dc(m_Bits.Peek(IctFastTables::DcIndexBits));
        if (m_Entry.Bits() != 0) [[likely]]
            m_Bits.Skip(m_Entry.Bits());
        else
            TakeLongDc();
        return m_Entry.First().m_iLevel;
    }

    /// Decodes one AC code, or two, and writes the coefficients; false after the last one. 11 bits
    /// must be valid; it uses up no more of them, or tops up itself.
    [[gnu::always_inline]] bool TakeCoefficients(int16_t* coefficients) {
        m_Entry = m_Tables.m_pFast->Ac(m_Bits.Peek(IctFastTables::AcIndexBits));
        if (m_Entry.Bits() != 0) [[likely]]
            m_Bits.Skip(m_Entry.Bits());
        else
            TakeLongAc();
        Write(m_Entry.First(), coefficients);
        Write(m_Entry.Second(), coefficients);
        return m_uiPosition < TileCoefficients;
    }

    [[gnu::always_inline]] bool EndsAfterDc() const { return HasEnd(m_Entry.Second()); }

    /// The abort marker stands where a DC code should. Such a tile ends there, too.
    [[gnu::always_inline]] bool IsAborted() const {
        return m_Entry.Second().m_uiAdvance == AbortMark;
    }

    /// The position runs on over the end code, so that one comparison a lookup finds the end, the
    /// tile's own as well as the scan's. False if it was the scan's.
    ///
    /// "At least" an end code: asked whether it is equal to one, g++ keeps one register less for
    /// the loop (bench IctDesktop*, level 0: 9 %).
    [[gnu::always_inline]] bool EndsWell() const {
        return (m_Entry.First().m_uiAdvance >= IctFastTables::EndAlone ||
                HasEnd(m_Entry.Second())) &&
               m_uiPosition < IctFastTables::EndFollows + TileCoefficients;
    }

    [[gnu::always_inline]] size_t LastPosition() const { return m_uiPosition % TileCoefficients; }

private:
    using Value = IctFastTables::Value;
    static constexpr unsigned int AbortMark = IctFastTables::EndFollows + 1;

    [[gnu::always_inline]] static bool HasEnd(const Value& value) {
        return value.m_uiAdvance >= IctFastTables::EndFollows;
    }

    [[gnu::always_inline]] void Write(const Value& value, int16_t* coefficients) {
        m_uiPosition += value.m_uiAdvance;
        const IctFastTables::ScanEntry& scan = m_Tables.m_pFast->Scan(m_uiPosition);
        coefficients[scan.m_uiSlot] = IctFastTables::Dequantise(value.m_iLevel, scan.m_iMultiplier);
    }

    [[gnu::always_inline]] const huff_entry_t& TakeLongCode(const huff_entry_t* table) {
        const huff_entry_t& code = table[m_Bits.Peek(PeekBits)];
        m_Bits.Skip(PeekBits - code.stallCount);
        return code;
    }

    [[gnu::always_inline]] void TakeLongDc() {
        unsigned int category = m_Entry.LevelBits();
        if (m_Entry.CodeBits() != 0)
            m_Bits.Skip(m_Entry.CodeBits());
        else
            category = TakeLongCode(m_Tables.m_pDc).size;
        m_Entry = Entry(0, {0, m_Bits.ReadExtended(category)},
                        category == IctAbortMarker ? AbortMark : 0);
        m_Bits.Refill();
    }

    [[gnu::always_inline]] void TakeLongAc() {
        m_Bits.Refill();
        if (m_Entry.CodeBits() != 0) {
            m_Bits.Skip(m_Entry.CodeBits());
            m_Entry =
                Entry(0, {m_Entry.First().m_uiAdvance, m_Bits.ReadExtended(m_Entry.LevelBits())});
        } else {
            const huff_entry_t& code = TakeLongCode(m_Tables.m_pAc);
            m_Entry = Entry(0, {code.run + 1u, m_Bits.ReadExtended(code.size)});
        }
        m_Bits.Refill();
    }
};

} // namespace

/// May overrun the window: then the commit at the tile's end is refused.
IctTileCursor::Outcome IctTileCursor::DecodeTile(const IctTileTables& tables, int& dcPredictor,
                                                 int16_t* coefficients) {
    if (!m_Window.IsReady()) [[unlikely]]
        return Outcome::Declined;
    const IctFastTables& fast = *tables.m_pFast;
    const unsigned int windowBits = PeekBits - fast.EndCodeBits();
    Tile tile{m_Window.GetBits(), tables};
    tile.m_Bits.Refill();

    const auto difference = static_cast<uint32_t>(tile.TakeDc());
    const int predictor = static_cast<int>(static_cast<uint32_t>(dcPredictor) + difference);
    const int16_t dc = fast.DequantiseDc(predictor);
    if (tile.EndsAfterDc()) {
        if (tile.IsAborted() || !m_Window.Commit(tile.m_Bits, windowBits)) [[unlikely]]
            return Decline();
        dcPredictor = predictor;
        coefficients[0] = dc;
        return Outcome::Flat;
    }

    ClearTile(coefficients);
    // Four lookups take 44 bits at most.
    while (tile.TakeCoefficients(coefficients) && tile.TakeCoefficients(coefficients) &&
           tile.TakeCoefficients(coefficients) && tile.TakeCoefficients(coefficients))
        tile.m_Bits.Refill();
    coefficients[0] = dc;

    if (!tile.EndsWell() || !m_Window.Commit(tile.m_Bits, windowBits)) [[unlikely]]
        return Decline();
    dcPredictor = predictor;
    return tile.LastPosition() < LowPositions ? Outcome::Low : Outcome::Full;
}

bool IctTileCursor::SkipRepeats(const RepeatedTiles& tiles) {
    if (!m_Window.IsReady()) [[unlikely]]
        return false;
    BitRegister bits = m_Window.GetBits();
    bits.Refill();
    if (bits.Peek(tiles.Bits()) != tiles.Codes())
        return false;
    bits.Skip(tiles.Bits());
    return m_Window.Commit(bits, PeekBits - tiles.EndCodeBits());
}

IctTileCursor::Outcome IctTileCursor::Decline() {
    GiveBack();
    return Outcome::Declined;
}

} // namespace Vostrel::libimagedecoder
