#include "libimagedecoder/IctTileCursor.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Vostrel::libimagedecoder {
namespace {

constexpr unsigned int PeekBits = 16;

/// DC luminance category that is not a bit size but aborts the update.
constexpr unsigned int AbortMarker = 12;

/// Bytes that a reader has fetched after a 16-bit peek at a bit position.
size_t BytesAfterPeek(size_t bitPosition) {
    return (bitPosition + PeekBits + 7) / 8;
}

/// Bits ahead of a position in memory, left-aligned in a register. After Refill at least 56 of them
/// are valid; bytes up to 8 behind the last valid one must be readable.
class BitRegister {
public:
    BitRegister(const uint8_t* bytes, size_t position)
        : m_puiNext(bytes + position / 8), m_uiBits(Load(m_puiNext) << position % 8),
          m_uiCount(56 - static_cast<unsigned int>(position % 8)) {
        m_puiNext += 7;
    }

    void Refill() {
        m_uiBits |= Load(m_puiNext) >> m_uiCount;
        m_puiNext += (63 - m_uiCount) / 8;
        m_uiCount |= 56;
    }

    /// bits: 1..16.
    size_t Peek(unsigned int bits) const { return m_uiBits >> (64 - bits); }

    void Skip(unsigned int bits) {
        m_uiBits <<= bits;
        m_uiCount -= bits;
    }

    /// A value of size bits, 0..15, by the sign rule of ITU-T T.81, EXTEND: a clear top bit means
    /// negative.
    int32_t ReadExtended(unsigned int size) {
        const auto negative = static_cast<int32_t>(~m_uiBits >> 63);
        const auto value = static_cast<int32_t>(m_uiBits >> 1 >> (63 - size));
        Skip(size);
        return value - (-negative & ((1 << size) - 1));
    }

    size_t Position(const uint8_t* bytes) const {
        return static_cast<size_t>(m_puiNext - bytes) * 8 - m_uiCount;
    }

private:
    static uint64_t Load(const uint8_t* bytes) {
        static_assert(std::endian::native == std::endian::little);
        uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        return __builtin_bswap64(word);
    }

    const uint8_t* m_puiNext; ///< the first byte of which no bit counts as valid yet
    uint64_t m_uiBits;        ///< bits below the valid ones are those that follow, or zero
    unsigned int m_uiCount;
};

unsigned int ReadCategory(BitRegister& bits, const IctTileTables& tables) {
    const auto entry = tables.m_pFast->Dc(bits.Peek(IctFastTables::DcIndexBits));
    if (entry.m_uiCodeBits != 0) [[likely]] {
        bits.Skip(entry.m_uiCodeBits);
        return entry.m_uiCategory;
    }
    const huff_entry_t& code = tables.m_pDc[bits.Peek(PeekBits)];
    bits.Skip(PeekBits - code.stallCount);
    return code.size;
}

} // namespace

IctTileCursor::Outcome IctTileCursor::DecodeTile(const IctTileTables& tables, int& dcPredictor,
                                                 int16_t* coefficients) {
    if (!m_bBorrowed && !Borrow())
        return Outcome::Declined;
    const size_t firstByte = m_uiPosition / 8;
    if (!m_bInTail && firstByte + TileRoom > m_uiSize)
        CopyTail(firstByte);

    const size_t start = m_uiPosition;
    const unsigned int endCodeBits = tables.m_pFast->EndCodeBits();
    int predictor = dcPredictor;
    const Outcome outcome = DecodeBits(tables, predictor, coefficients);
    if (outcome == Outcome::Declined || BytesAfterPeek(m_uiPosition - endCodeBits) > m_uiSize) {
        m_uiPosition = start;
        GiveBack();
        return Outcome::Declined;
    }
    dcPredictor = predictor;
    m_uiEndCodeBits = endCodeBits;
    return outcome;
}

/// Takes the reader's position, if all bits that the reader holds come from the current window.
bool IctTileCursor::Borrow() {
    const IStreambuffer& stream = m_Reader.GetStream();
    const size_t fetchedBits = stream.GetPosition() * 8;
    const size_t heldBits = m_Reader.GetState().HeldBits();
    if (stream.GetSize() == 0 || fetchedBits < heldBits || stream.GetPaddingCount() != 0)
        return false;
    m_bBorrowed = true;
    m_bInTail = false;
    m_uiEndCodeBits = 0;
    m_puiBytes = stream.GetWindow();
    m_uiBase = 0;
    m_uiSize = stream.GetSize();
    m_uiPosition = fetchedBits - heldBits;
    return true;
}

void IctTileCursor::CopyTail(size_t firstByte) {
    const size_t tailBytes = m_uiSize - firstByte;
    std::memcpy(m_auiTail.data(), m_puiBytes + firstByte, tailBytes);
    std::fill(m_auiTail.begin() + static_cast<ptrdiff_t>(tailBytes), m_auiTail.end(), uint8_t{0});
    m_bInTail = true;
    m_puiBytes = m_auiTail.data();
    m_uiBase += firstByte;
    m_uiSize = tailBytes;
    m_uiPosition -= firstByte * 8;
}

void IctTileCursor::GiveBack() {
    if (!m_bBorrowed)
        return;
    m_bBorrowed = false;
    if (m_uiEndCodeBits == 0)
        return;
    const size_t fetchedBytes = BytesAfterPeek(m_uiPosition - m_uiEndCodeBits);
    BitReaderState state;
    state.m_uiWindowBits = PeekBits - m_uiEndCodeBits;
    state.m_uiReserveBits =
        static_cast<uint32_t>(fetchedBytes * 8 - m_uiPosition) - state.m_uiWindowBits;
    uint32_t held = 0;
    for (size_t byte = m_uiPosition / 8; byte < fetchedBytes; ++byte)
        held = held << 8 | m_puiBytes[byte];
    state.m_uiReserve = held & ((1u << state.m_uiReserveBits) - 1);
    state.m_uiWindow = held >> state.m_uiReserveBits & ((1u << state.m_uiWindowBits) - 1);
    m_Reader.SetState(state);
    m_Reader.GetStream().SetPosition(m_uiBase + fetchedBytes);
}

/// Decodes a tile and moves behind it. Bytes behind the window count as zeros here: whether the
/// tile ran into them is for the caller to find out.
IctTileCursor::Outcome IctTileCursor::DecodeBits(const IctTileTables& tables, int& dcPredictor,
                                                 int16_t* coefficients) {
    const IctFastTables& fast = *tables.m_pFast;
    BitRegister bits(m_puiBytes, m_uiPosition);

    const unsigned int category = ReadCategory(bits, tables);
    if (category == AbortMarker) [[unlikely]]
        return Outcome::Declined;
    dcPredictor = static_cast<int>(static_cast<uint32_t>(dcPredictor) +
                                   static_cast<uint32_t>(bits.ReadExtended(category)));
    const int16_t dc = fast.Dequantise(0, dcPredictor);

    bits.Refill();
    IctFastTables::AcEntry entry = fast.Ac(bits.Peek(IctFastTables::AcIndexBits));
    if (entry.m_uiAdvance == IctFastTables::EndAlone) {
        coefficients[0] = dc;
        m_uiPosition = bits.Position(m_puiBytes) + entry.m_uiBits;
        return Outcome::Flat;
    }
    std::fill_n(coefficients, TileCoefficients, int16_t{0});
    coefficients[0] = dc;
    for (size_t position = 0;;) {
        int32_t level = entry.m_iLevel;
        if (entry.m_uiBits != 0) [[likely]] {
            bits.Skip(entry.m_uiBits);
            position += entry.m_uiAdvance & ~size_t{IctFastTables::EndFollows};
        } else {
            const huff_entry_t& code = tables.m_pAc[bits.Peek(PeekBits)];
            bits.Skip(PeekBits - code.stallCount);
            level = bits.ReadExtended(code.size);
            position += code.run + size_t{1};
        }
        if (position >= TileCoefficients) {
            if (entry.m_uiAdvance != IctFastTables::EndAlone)
                return Outcome::Declined;
            break;
        }
        coefficients[fast.Slot(position)] = fast.Dequantise(position, level);
        if (entry.m_uiAdvance >= IctFastTables::EndFollows)
            break;
        bits.Refill();
        entry = fast.Ac(bits.Peek(IctFastTables::AcIndexBits));
    }
    m_uiPosition = bits.Position(m_puiBytes);
    return Outcome::Full;
}

} // namespace Vostrel::libimagedecoder
