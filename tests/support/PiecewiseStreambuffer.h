#pragma once

#include "libimagedecoder/IStreambuffer.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace Vostrel::tests {

/// A stream over bytes in memory that arrive as from the viewer: each refill delivers a piece of at
/// most the given capacity, and what is left of the last piece is handed back at the end.
class PiecewiseStreambuffer : public libimagedecoder::IStreambuffer {
public:
    /// An empty stream. The logger is not owned and may be null.
    explicit PiecewiseStreambuffer(libimagedecoder::ILogger* logger) : IStreambuffer(logger) {}

    /// Starts with the bytes of one update. capacity: bytes per piece, at least 1.
    void Load(std::vector<uint8_t> bytes, size_t capacity) {
        ResetBufferState();
        m_bEndOfStream = false;
        m_uiCapacity = capacity;
        m_vuiBytes = std::move(bytes);
        m_uiDelivered = 0;
    }

    /// Every piece is an allocation of its own size, so that a sanitizer sees a read behind it.
    size_t ReadFromBuffer() override {
        const size_t count = std::min(m_uiCapacity, m_vuiBytes.size() - m_uiDelivered);
        if (count == 0)
            return 0;
        const uint8_t* const next = m_vuiBytes.data() + m_uiDelivered;
        m_vuiPiece = std::vector<uint8_t>(next, next + count);
        m_puiData = m_vuiPiece.data();
        m_uiDelivered += count;
        return count;
    }

    /// Bytes delivered since Load, less those that would be handed back now.
    size_t GetConsumedBytes() const { return m_uiDelivered - (m_uiSize - m_uiPosition); }

private:
    std::vector<uint8_t> m_vuiBytes;
    std::vector<uint8_t> m_vuiPiece;
    size_t m_uiDelivered = 0;
};

} // namespace Vostrel::tests
