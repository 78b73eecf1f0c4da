#pragma once

#include <cstdint>

namespace Vostrel::model {

/// The value that a 32-bit signed register keeps of a wide result.
inline int64_t Wrap32(int64_t value) {
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

/// The value that a 16-bit signed register keeps of a wide result.
inline int64_t Wrap16(int64_t value) {
    return static_cast<int16_t>(static_cast<uint16_t>(value));
}

/// Division by 2^shift that rounds towards minus infinity.
inline int64_t FloorShift(int64_t value, int shift) {
    const int64_t divisor = int64_t{1} << shift;
    const int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

/// Blocks and macroblocks have 16 pixels a side.
constexpr int BlockEdge = 16;

inline int RoundUpToBlock(int pixels) {
    return (pixels + BlockEdge - 1) / BlockEdge * BlockEdge;
}

} // namespace Vostrel::model
