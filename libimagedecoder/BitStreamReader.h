#pragma once

#include "libimagedecoder/IStreambuffer.h"

#include <array>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The four counters of a bit reader: together with a stream they are its whole state.
struct BitReaderState {
    uint32_t m_uiWindow = 0;      ///< bits ready for use, right-aligned
    uint32_t m_uiWindowBits = 0;  ///< 0..16
    uint32_t m_uiReserve = 0;     ///< bits of fetched bytes not yet in the window, right-aligned
    uint32_t m_uiReserveBits = 0; ///< 0..23 during a read, 0..7 between reads

    uint32_t HeldBits() const { return m_uiWindowBits + m_uiReserveBits; }

    bool operator==(const BitReaderState&) const = default;
};

/// Reads bit fields of 1 to 16 bits, most significant bit first, from a byte stream.
///
/// Bytes are taken one at a time and only when a read needs them, because the protocol counts every
/// fetched byte: what is not used goes back to the stream, or on to a job. Bits above the count in
/// each register are always zero.
///
/// Thread safety: one thread at a time.
class BitStreamReader : protected BitReaderState {
public:
    /// The stream is not owned. A fresh reader passes four zeros; the counters of a saved reader
    /// continue where that one stood.
    BitStreamReader(IStreambuffer* stream, unsigned window, unsigned windowBits, unsigned reserve,
                    unsigned reserveBits)
        : BitStreamReader(stream, {window, windowBits, reserve, reserveBits}) {}

    BitStreamReader(IStreambuffer* stream, const BitReaderState& state)
        : BitReaderState(state), m_pStream(stream) {}

    /// The next n bits, 1..16, right-aligned. Throws what the stream's FetchByte throws.
    uint32_t ReadStreamBits(uint32_t n);

    /// The next bit: 0 or 1.
    uint32_t ReadStreamBit() { return ReadStreamBits(1); }

    /// Puts the low count bits of bits back in front of the stream. Throws std::invalid_argument,
    /// the reader unchanged, when the window would hold more than 16 bits.
    void StallStreamBits(uint32_t count, uint32_t bits);

    IStreambuffer& GetStream() { return *m_pStream; }
    const BitReaderState& GetState() const { return *this; }
    void SetState(const BitReaderState& state) { static_cast<BitReaderState&>(*this) = state; }

    /// Entry n has the low n bits set.
    static constexpr std::array<uint32_t, 16> m_TwoPowIndexMinusOneMask = {
        0x0000, 0x0001, 0x0003, 0x0007, 0x000F, 0x001F, 0x003F, 0x007F,
        0x00FF, 0x01FF, 0x03FF, 0x07FF, 0x0FFF, 0x1FFF, 0x3FFF, 0x7FFF};

protected:
    IStreambuffer* m_pStream;

private:
    static constexpr uint32_t MaxWindowBits = 16;

    /// The table ends where a well-used reader does; a hand-made state may hold more.
    static uint32_t LowBitsMask(uint32_t n) {
        return n < m_TwoPowIndexMinusOneMask.size() ? m_TwoPowIndexMinusOneMask[n] : (1u << n) - 1;
    }

    [[noreturn]] static void ThrowStallOverflow();
};

inline uint32_t BitStreamReader::ReadStreamBits(uint32_t n) {
    if (m_uiWindowBits >= n) {
        m_uiWindowBits -= n;
        const uint32_t bits = m_uiWindow >> m_uiWindowBits;
        m_uiWindow &= LowBitsMask(m_uiWindowBits);
        return bits;
    }
    const uint32_t missing = n - m_uiWindowBits;
    while (m_uiReserveBits < missing) {
        m_uiReserve = (m_uiReserve << 8) | m_pStream->FetchByte();
        m_uiReserveBits += 8;
    }
    m_uiReserveBits -= missing;
    const uint32_t bits = (m_uiWindow << missing) | (m_uiReserve >> m_uiReserveBits);
    m_uiReserve &= LowBitsMask(m_uiReserveBits);
    m_uiWindow = 0;
    m_uiWindowBits = 0;
    return bits;
}

inline void BitStreamReader::StallStreamBits(uint32_t count, uint32_t bits) {
    if (count == 0)
        return;
    if (count > MaxWindowBits - m_uiWindowBits) [[unlikely]]
        ThrowStallOverflow();
    m_uiWindow = (m_uiWindow << count) | (bits & LowBitsMask(count));
    m_uiWindowBits += count;
}

} // namespace Vostrel::libimagedecoder
