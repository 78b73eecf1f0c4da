#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vostrel::libimagedecoder {

/// Bits ahead of a position in memory, most significant bit first, left-aligned in a register. It
/// counts nothing and throws nothing: whoever uses it knows how far the bytes reach, and asks for
/// the position afterwards.
///
/// At least 49 bits are valid after construction and at least 56 after Refill. Either reads up to
/// 16 bytes from the one on that holds the next bit: they must be readable, their values do not
/// matter.
///
/// Every member is inlined by force: files that are compiled for different processors include this,
/// and a copy out of line would be one for all of them.
class BitRegister {
public:
    /// Holds nothing and must not be asked for bits.
    [[gnu::always_inline]] BitRegister() = default;

    /// position: of the first bit, counted from bytes.
    [[gnu::always_inline]] BitRegister(const uint8_t* bytes, size_t position)
        : m_puiNext(bytes + position / 8 + 7), m_uiBits(Load(bytes + position / 8) << position % 8),
          m_uiCount(56 - static_cast<unsigned int>(position % 8)) {}

    /// Tops up without a branch: all bytes that fit count as valid, and the bits of the one behind
    /// them are set already to what the next call sets them to again.
    [[gnu::always_inline]] void Refill() {
        m_uiBits |= Load(m_puiNext) >> m_uiCount;
        m_puiNext += (63 - m_uiCount) / 8;
        m_uiCount |= 56;
    }

    /// bits: 1..56.
    [[gnu::always_inline]] size_t Peek(unsigned int bits) const { return m_uiBits >> (64 - bits); }

    /// bits: 0..56, no more than are valid.
    [[gnu::always_inline]] void Skip(unsigned int bits) {
        m_uiBits <<= bits;
        m_uiCount -= bits;
    }

    /// A value of size bits, 0..15, by the sign rule of ITU-T T.81, EXTEND: a clear top bit means
    /// negative.
    [[gnu::always_inline]] int ReadExtended(unsigned int size) {
        const auto negative = static_cast<int>(~m_uiBits >> 63);
        const auto value = static_cast<int>(m_uiBits >> 1 >> (63 - size));
        Skip(size);
        return value - (-negative & ((1 << size) - 1));
    }

    /// The first byte that a Refill would load; the next bit is at most 8 bytes before it.
    [[gnu::always_inline]] const uint8_t* Next() const { return m_puiNext; }

    /// Of the next bit, counted from bytes.
    [[gnu::always_inline]] size_t Position(const uint8_t* bytes) const {
        return static_cast<size_t>(m_puiNext - bytes) * 8 - m_uiCount;
    }

private:
    [[gnu::always_inline]] static uint64_t Load(const uint8_t* bytes) {
        static_assert(std::endian::native == std::endian::little);
        uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        return __builtin_bswap64(word);
    }

    const uint8_t* m_puiNext = nullptr; ///< the first byte of which no bit counts as valid yet
    uint64_t m_uiBits = 0;      ///< bits below the valid ones are those that follow, or zero
    unsigned int m_uiCount = 0; ///< of valid bits
};

} // namespace Vostrel::libimagedecoder
