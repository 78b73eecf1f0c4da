#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace Vostrel::walker {

/// Ends a walk at a field that cannot be decoded.
class WalkError : public std::runtime_error {
public:
    /// bit: where the field begins. end: the bits before this one decide that it is refused.
    /// failure: the decoder's message.
    WalkError(size_t bit, size_t end, std::string expected, std::string found, const char* failure)
        : std::runtime_error(failure), m_uiBit(bit), m_uiEnd(end), m_expected(std::move(expected)),
          m_found(std::move(found)) {}

    size_t m_uiBit;
    size_t m_uiEnd;
    std::string m_expected;
    std::string m_found;
};

constexpr const char* StreamErrorText = "StreamError";
constexpr const char* OutOfBytesText = "Stream has no more bytes!";

/// Reads bit fields and knows where it stands. Behind the data come some zero bytes, as decoders
/// see them, then an error. It counts fetched bytes as a decoder's reader does, which fetches one
/// at a time and only when a read needs it: a record's length is held against that.
class BitCursor {
public:
    /// zeroBytes: how many may be read behind the data.
    BitCursor(std::span<const uint8_t> data, size_t zeroBytes)
        : m_data(data), m_uiZeroBytes(zeroBytes) {}

    /// The next count (1..16) bits. what names the field for a failure.
    uint32_t Read(unsigned count, const char* what) {
        const uint32_t bits = Look(count, what);
        m_uiPosition += count;
        return bits;
    }

    /// The next 16 bits, which stay.
    uint32_t Peek16(const char* what) { return Look(16, what); }

    void Pass(size_t bits) { m_uiPosition += bits; }

    size_t GetPosition() const { return m_uiPosition; }
    size_t GetFetchedBytes() const { return m_uiFetched; }

    /// A cursor at the same place that sees only the first `bytes` bytes of the data.
    BitCursor CutTo(size_t bytes, size_t zeroBytes) const {
        BitCursor cut(m_data.first(bytes), zeroBytes);
        cut.m_uiPosition = m_uiPosition;
        cut.m_uiFetched = m_uiFetched;
        return cut;
    }

    /// Goes on at the first bit of a byte.
    void GoToByte(size_t byte) {
        m_uiPosition = 8 * byte;
        m_uiFetched = byte;
    }

    /// Bits that were read behind the data.
    size_t BitsBehindEnd() const {
        return m_uiPosition > 8 * m_data.size() ? m_uiPosition - 8 * m_data.size() : 0;
    }

    size_t GetSize() const { return m_data.size(); }

private:
    uint32_t Look(unsigned count, const char* what) {
        while (8 * m_uiFetched < m_uiPosition + count) {
            if (m_uiFetched >= m_data.size() + m_uiZeroBytes)
                throw WalkError(m_uiPosition, 8 * m_data.size(), what,
                                "the end of the data at bit " + std::to_string(8 * m_data.size()),
                                OutOfBytesText);
            ++m_uiFetched;
        }
        // Up to 16 bits lie in three bytes.
        const size_t first = m_uiPosition / 8;
        const uint32_t window = Byte(first) << 16 | Byte(first + 1) << 8 | Byte(first + 2);
        return window >> (24 - m_uiPosition % 8 - count) & ((1U << count) - 1);
    }

    uint32_t Byte(size_t i) const { return i < m_data.size() ? m_data[i] : 0; }

    std::span<const uint8_t> m_data;
    size_t m_uiZeroBytes;
    size_t m_uiPosition = 0;
    size_t m_uiFetched = 0;
};

} // namespace Vostrel::walker
