#include "tools/BitWriter.h"

#include <algorithm>

namespace Vostrel::streamencoder {

void BitWriter::Write(uint32_t value, unsigned count) {
    while (count > 0) {
        const auto used = static_cast<unsigned>(m_uiBitCount % 8);
        if (used == 0) {
            m_vuiBytes.push_back(0);
        }
        const unsigned room = 8 - used;
        const unsigned taken = std::min(room, count);
        const uint32_t field = (value >> (count - taken)) & ((1U << taken) - 1);
        m_vuiBytes.back() = static_cast<uint8_t>(m_vuiBytes.back() | field << (room - taken));
        count -= taken;
        m_uiBitCount += taken;
    }
}

void BitWriter::Append(const BitWriter& other) {
    const size_t wholeBytes = other.m_uiBitCount / 8;
    for (size_t i = 0; i < wholeBytes; ++i) {
        Write(other.m_vuiBytes[i], 8);
    }
    const auto rest = static_cast<unsigned>(other.m_uiBitCount % 8);
    if (rest > 0) {
        Write(static_cast<uint32_t>(other.m_vuiBytes.back()) >> (8 - rest), rest);
    }
}

void BitWriter::Clear() {
    m_vuiBytes.clear();
    m_uiBitCount = 0;
}

} // namespace Vostrel::streamencoder
