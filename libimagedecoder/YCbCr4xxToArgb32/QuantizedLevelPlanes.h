#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedRectangle.h"
#include "libimagedecoder/YCbCr4xxToArgb32/RectangleWalk.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// In an unnamed namespace for the reason that MaskRuns.h gives.
namespace {

/// A stretch of reduced-depth samples and where its pixels go.
struct QuantizedRun {
    std::uint32_t* destination;
    const std::uint8_t* luma;
    const std::uint16_t* chroma;
    std::size_t pixels; ///< As in Stretch.
    std::size_t destinationStride;
    std::size_t lumaStride;
};

/// Calls convert(const QuantizedRun&) for the unmasked stretches of a rectangle.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename Convert>
void WalkRuns(const QuantizedRectangle& area, const Convert& convert) {
    WalkRectangle<ChromaDivX, ChromaDivY>(
        area.width, area.height, area.skipMask, [&](const Stretch& stretch) {
            const auto [row, column, pixels] = stretch;
            convert(QuantizedRun{area.destination + row * area.destinationStride + column,
                                 area.luma + row * area.lumaStride + column,
                                 area.chroma + row / ChromaDivY * area.chromaStride +
                                     column / ChromaDivX,
                                 pixels, area.destinationStride, area.lumaStride});
        });
}

/// Converts the pixels of a run from begin on by reading the table.
template <std::size_t ChromaDivX, std::size_t Rows>
inline void ReadTable(const QuantizedRun& run, std::size_t begin, const QuantizedColours& colours) {
    for (std::size_t row = 0; row < Rows; ++row) {
        std::uint32_t* const out = run.destination + row * run.destinationStride;
        const std::uint8_t* const luma = run.luma + row * run.lumaStride;
        for (std::size_t x = begin; x < run.pixels; ++x)
            out[x] = colours.Word(luma[x], run.chroma[x / ChromaDivX]);
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
