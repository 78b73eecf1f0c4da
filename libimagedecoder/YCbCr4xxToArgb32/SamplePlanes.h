#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/Rectangle.h"
#include "libimagedecoder/YCbCr4xxToArgb32/RectangleWalk.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// In an unnamed namespace for the reason that MaskRuns.h gives.
namespace {

/// A stretch of full-depth samples and where its pixels go.
struct Run {
    std::uint32_t* destination;
    const std::uint8_t* luma;
    const std::uint8_t* cb;
    const std::uint8_t* cr;
    std::size_t column; ///< As in Stretch.
    std::size_t pixels; ///< As in Stretch.
    std::size_t destinationStride;
    std::size_t lumaStride;
};

template <std::size_t ChromaDivX, std::size_t ChromaDivY>
Run RunAt(const Rectangle& area, const Stretch& stretch) {
    const auto [row, column, pixels] = stretch;
    const std::size_t chroma = row / ChromaDivY * area.chromaStride + column / ChromaDivX;
    return {area.destination + row * area.destinationStride + column,
            area.luma + row * area.lumaStride + column,
            area.cb + chroma,
            area.cr + chroma,
            column,
            pixels,
            area.destinationStride,
            area.lumaStride};
}

/// Calls convert(const Run&) for the unmasked stretches of a rectangle.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename Convert>
void WalkRuns(const Rectangle& area, const Convert& convert) {
    WalkRectangle<ChromaDivX, ChromaDivY>(
        area.width, area.height, area.skipMask,
        [&](const Stretch& stretch) { convert(RunAt<ChromaDivX, ChromaDivY>(area, stretch)); });
}

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
