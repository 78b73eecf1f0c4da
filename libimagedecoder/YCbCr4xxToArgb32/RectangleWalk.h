#pragma once

#include "libimagedecoder/MaskRuns.h"

#include <cstddef>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// In an unnamed namespace for the reason that MaskRuns.h gives.
namespace {

/// Adjacent unmasked pixels on the luma row, or the two luma rows, that share one chroma row.
struct Stretch {
    std::size_t row;    ///< Of the rectangle; the upper one of two.
    std::size_t column; ///< Of the first pixel in the rectangle; a multiple of 16.
    std::size_t pixels; ///< On one row; a multiple of the horizontal chroma divisor.
};

constexpr std::size_t MacroblockEdge = 16;

constexpr std::size_t Smaller(std::size_t a, std::size_t b) {
    return a < b ? a : b;
}

/// Walks the unmasked parts of a rectangle. Each row of macroblocks is cut into stretches as long
/// as the mask allows; convert(const Stretch&) gets a stretch row by row. Columns and rows that do
/// not fill a chroma sample are left out.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename Convert>
void WalkRectangle(std::size_t width, std::size_t height, const bool* skipMask,
                   const Convert& convert) {
    const std::size_t drawnWidth = width / ChromaDivX * ChromaDivX;
    const std::size_t macroblocks = (drawnWidth + MacroblockEdge - 1) / MacroblockEdge;
    for (std::size_t top = 0; top < height; top += MacroblockEdge) {
        const std::size_t bottom = Smaller(top + MacroblockEdge, height);
        // Callers index the mask with a width that need not be a multiple of 16.
        const bool* skip = skipMask + ((top / MacroblockEdge * width) >> 4);
        ForEachUnmaskedRun(skip, macroblocks, [&](std::size_t first, std::size_t end) {
            const std::size_t begin = first * MacroblockEdge;
            const std::size_t pixels = Smaller(end * MacroblockEdge, drawnWidth) - begin;
            for (std::size_t row = top; row + ChromaDivY <= bottom; row += ChromaDivY)
                convert(Stretch{row, begin, pixels});
        });
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
