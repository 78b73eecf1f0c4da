#include "libimagedecoder/IctTileCursor.h"

#include <algorithm>
#include <emmintrin.h>

namespace Vostrel::libimagedecoder {
namespace {

using Entry = IctFastTables::Entry;

constexpr unsigned int PeekBits = 16;

/// DC luminance category that is not a bit size but aborts the update.
constexpr unsigned int AbortMarker = 12;

size_t BytesUpTo(size_t bitPosition) {
    return (bitPosition + 7) / 8;
}

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

/// One tile on its way. Everything in here lives in processor registers: every member is inlined by
/// force, since one call would put them all into memory, and doubles the time of a tile.
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
        m_Entry =
            Entry(0, {0, m_Bits.ReadExtended(category)}, category == AbortMarker ? AbortMark : 0);
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

/// What lies behind the window is decoded as well: whether the tile ran into it is found out at its
/// end.
IctTileCursor::Outcome IctTileCursor::DecodeTile(const IctTileTables& tables, int& dcPredictor,
                                                 int16_t* coefficients) {
    if (!IsReady()) [[unlikely]]
        return Outcome::Declined;
    const IctFastTables& fast = *tables.m_pFast;
    const unsigned int windowBits = PeekBits - fast.EndCodeBits();
    Tile tile{m_Bits, tables};
    tile.m_Bits.Refill();

    const auto difference = static_cast<uint32_t>(tile.TakeDc());
    const int predictor = static_cast<int>(static_cast<uint32_t>(dcPredictor) + difference);
    const int16_t dc = fast.DequantiseDc(predictor);
    if (tile.EndsAfterDc()) {
        if (tile.IsAborted() || !Commit(tile.m_Bits, windowBits)) [[unlikely]]
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

    if (!tile.EndsWell() || !Commit(tile.m_Bits, windowBits)) [[unlikely]]
        return Decline();
    dcPredictor = predictor;
    return tile.LastPosition() < LowPositions ? Outcome::Low : Outcome::Full;
}

bool IctTileCursor::SkipRepeats(const RepeatedTiles& tiles) {
    if (!IsReady()) [[unlikely]]
        return false;
    BitRegister bits = m_Bits;
    bits.Refill();
    if (bits.Peek(tiles.Bits()) != tiles.Codes())
        return false;
    bits.Skip(tiles.Bits());
    return Commit(bits, PeekBits - tiles.EndCodeBits());
}

bool IctTileCursor::TakeBits(unsigned int n, uint32_t& value) {
    MakeRoom();
    BitRegister bits = m_Bits;
    bits.Refill();
    value = static_cast<uint32_t>(bits.Peek(n));
    bits.Skip(n);
    return Commit(bits, m_uiWindowBits - std::min(m_uiWindowBits, n));
}

uint32_t IctTileCursor::ReadBitsPlainly(unsigned int n) {
    GiveBack();
    return m_Reader.ReadStreamBits(n);
}

bool IctTileCursor::IsReady() {
    if (!m_bBorrowed && !Borrow()) [[unlikely]]
        return false;
    MakeRoom();
    return true;
}

/// Sees to it that a tile can be decoded without looking where the bytes end.
void IctTileCursor::MakeRoom() {
    if (m_Bits.Next() > m_puiRoomEnd) [[unlikely]]
        CopyTail(Position());
}

/// Moves on, unless the reader would have needed a byte behind the window.
bool IctTileCursor::Commit(const BitRegister& bits, unsigned int windowBits) {
    if (bits.Next() > m_puiSurelyInside &&
        BytesUpTo(bits.Position(m_puiBytes) + windowBits) > m_uiSize) [[unlikely]]
        return false;
    m_Bits = bits;
    m_uiWindowBits = windowBits;
    return true;
}

IctTileCursor::Outcome IctTileCursor::Decline() {
    GiveBack();
    return Outcome::Declined;
}

/// Takes the reader's position, if all bits that the reader holds come from the current window.
bool IctTileCursor::Borrow() {
    const IStreambuffer& stream = m_Reader.GetStream();
    const BitReaderState& state = m_Reader.GetState();
    const size_t fetchedBits = stream.GetPosition() * 8;
    if (stream.GetSize() == 0 || stream.GetPaddingCount() != 0 || fetchedBits < state.HeldBits() ||
        state.m_uiReserveBits >= 8)
        return false;
    const size_t position = fetchedBits - state.HeldBits();
    m_bBorrowed = true;
    SetBytes(stream.GetWindow(), stream.GetSize());
    m_uiBase = 0;
    m_uiWindowBits = state.m_uiWindowBits;
    if (m_bReadableBehind) {
        m_puiRoomEnd = m_puiBytes + m_uiSize + ReadAhead;
        m_Bits = BitRegister(m_puiBytes, position);
    } else if (position / 8 + SlackBytes <= m_uiSize) {
        m_puiRoomEnd = m_puiBytes + m_uiSize - TileRoom;
        m_Bits = BitRegister(m_puiBytes, position);
    } else {
        CopyTail(position);
    }
    return true;
}

void IctTileCursor::SetBytes(const uint8_t* bytes, size_t size) {
    constexpr size_t WindowBytes = PeekBits / 8;
    m_puiBytes = bytes;
    m_uiSize = size;
    m_puiSurelyInside = bytes + size - std::min(size, WindowBytes);
}

/// Goes on in a copy of the window's bytes from a position on.
void IctTileCursor::CopyTail(size_t position) {
    const size_t firstByte = position / 8;
    const size_t tailBytes = m_uiSize - firstByte;
    std::copy_n(m_puiBytes + firstByte, tailBytes, m_auiTail.data());
    std::fill(m_auiTail.begin() + static_cast<ptrdiff_t>(tailBytes), m_auiTail.end(), uint8_t{0});
    SetBytes(m_auiTail.data(), tailBytes);
    m_puiRoomEnd = m_puiBytes + SlackBytes + ReadAhead;
    m_uiBase += firstByte;
    m_Bits = BitRegister(m_puiBytes, position % 8);
}

void IctTileCursor::GiveBack() {
    if (!m_bBorrowed)
        return;
    m_bBorrowed = false;
    const size_t position = Position();
    const size_t windowEnd = position + m_uiWindowBits;
    const size_t fetchedBytes = BytesUpTo(windowEnd);
    BitReaderState state;
    state.m_uiWindowBits = m_uiWindowBits;
    state.m_uiReserveBits = static_cast<uint32_t>(fetchedBytes * 8 - windowEnd);
    uint32_t held = 0;
    for (size_t byte = position / 8; byte < fetchedBytes; ++byte)
        held = held << 8 | m_puiBytes[byte];
    state.m_uiReserve = held & ((1u << state.m_uiReserveBits) - 1);
    state.m_uiWindow = held >> state.m_uiReserveBits & ((1u << state.m_uiWindowBits) - 1);
    m_Reader.SetState(state);
    m_Reader.GetStream().SetPosition(m_uiBase + fetchedBytes);
}

} // namespace Vostrel::libimagedecoder
