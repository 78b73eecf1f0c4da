#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::streamencoder {

/// Collects bit fields, the most significant bit of each byte first.
class BitWriter {
public:
    /// Appends the low `count` (0..32) bits of a value, the highest of them first.
    void Write(uint32_t value, unsigned count);

    /// Appends all bits of another writer.
    void Append(const BitWriter& other);

    /// Fills the last byte with zero bits.
    void AlignToByte() { m_uiBitCount = 8 * m_vuiBytes.size(); }

    void Clear();

    size_t GetBitCount() const { return m_uiBitCount; }

    /// The bits written so far; the unused low bits of the last byte are zero.
    const std::vector<uint8_t>& GetBytes() const { return m_vuiBytes; }

private:
    std::vector<uint8_t> m_vuiBytes;
    size_t m_uiBitCount = 0;
};

} // namespace Vostrel::streamencoder
