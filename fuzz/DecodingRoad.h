#pragma once

#include "fuzz/FuzzCheck.h"
#include "fuzz/GuardedStreambuffer.h"
#include "libimagedecoder/BitStreamReader.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vostrel::fuzz {

/// How many bytes arrive at once: a few, about as many as a tile or a plane can have, or all.
inline size_t PieceOf(uint8_t choice) {
    if (choice < 96)
        return 1 + choice % 16u;
    return choice < 192 ? 17 + (choice - 96u) * 4 : GuardedStreambuffer::MaxPiece;
}

/// Why a tile or a plane cannot be decoded.
enum class Failure { None, StreamError, OutOfBytes };

inline Failure FailureOf(std::string_view text) {
    if (text == "StreamError")
        return Failure::StreamError;
    Check(text == "Stream has no more bytes!", "decoding fails with another text");
    return Failure::OutOfBytes;
}

/// A reader from the start of its stream on.
struct DecodingRoad {
    explicit DecodingRoad(GuardedStreambuffer& itsStream)
        : stream(itsStream), reader(&itsStream, {}) {}

    GuardedStreambuffer& stream;
    libimagedecoder::BitStreamReader reader;
};

/// Where a road stands: all that a reader and a stream show.
struct Milestone {
    explicit Milestone(const DecodingRoad& road)
        : window(road.reader.GetState().m_uiWindow),
          windowBits(road.reader.GetState().m_uiWindowBits),
          reserve(road.reader.GetState().m_uiReserve),
          reserveBits(road.reader.GetState().m_uiReserveBits), position(road.stream.GetPosition()),
          padding(road.stream.GetPaddingCount()), consumed(road.stream.GetConsumedBytes()) {}

    bool operator==(const Milestone&) const = default;

    uint32_t window;
    uint32_t windowBits;
    uint32_t reserve;
    uint32_t reserveBits;
    size_t position;
    size_t padding;
    size_t consumed;
};

} // namespace Vostrel::fuzz
