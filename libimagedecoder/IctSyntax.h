#pragma once

#include "libimagedecoder/IImageDecoder.h"

#include <cstdint>

/// The syntax of an ICT tile: a DC code with the bits of a difference, then AC codes of a zero run
/// and a size, each with the bits of a level, up to the end code (ITU-T T.81, F.1.2).
namespace Vostrel::libimagedecoder {

/// DC luminance category that is no bit size: an encoder aborts an update with it.
constexpr uint32_t IctAbortMarker = 12;

/// The value of size bits (0..11) by ITU-T T.81, EXTEND: those with a clear top bit are negative.
constexpr int ExtendIctValue(uint32_t bits, uint32_t size) {
    const bool positive = (bits & IImageDecoder::m_sign[size]) != 0;
    return static_cast<int>(bits) - (positive ? 0 : static_cast<int>(IImageDecoder::m_cats[size]));
}

} // namespace Vostrel::libimagedecoder
