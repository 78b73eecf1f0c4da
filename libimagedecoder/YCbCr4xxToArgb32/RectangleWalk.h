#pragma once

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// In an unnamed namespace on purpose: every variant compiles its own copy with its own instruction
// set. With external linkage the linker would keep one copy, maybe the AVX2 one, for all of them.
namespace {

/// The rectangle of one conversion; see IYCbCr4xxToArgb32.
struct Rectangle {
    std::uint32_t* destination;
    const std::uint8_t* luma;
    const std::uint8_t* cb;
    const std::uint8_t* cr;
    std::size_t width;
    std::size_t height;
    std::size_t destinationStride;
    std::size_t lumaStride;
    std::size_t chromaStride;
    const bool* skipMask;
};

/// Adjacent unmasked pixels on the luma row, or the two luma rows, that share one chroma row.
struct Run {
    std::uint32_t* destination;
    const std::uint8_t* luma;
    const std::uint8_t* cb;
    const std::uint8_t* cr;
    std::size_t column; ///< Of the first pixel in the rectangle; a multiple of 16.
    std::size_t pixels; ///< On one row; a multiple of the horizontal chroma divisor.
    std::size_t destinationStride;
    std::size_t lumaStride;
};

constexpr std::size_t MacroblockEdge = 16;

constexpr std::size_t Smaller(std::size_t a, std::size_t b) {
    return a < b ? a : b;
}

/// Converts the columns [begin, end) of the rows [top, bottom), one chroma row after the other.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename ConvertRun>
void WalkRows(const Rectangle& area, std::size_t begin, std::size_t end, std::size_t top,
              std::size_t bottom, const ConvertRun& convertRun) {
    for (std::size_t y = top; y + ChromaDivY <= bottom; y += ChromaDivY) {
        const std::size_t chroma = y / ChromaDivY * area.chromaStride + begin / ChromaDivX;
        convertRun(Run{area.destination + y * area.destinationStride + begin,
                       area.luma + y * area.lumaStride + begin, area.cb + chroma, area.cr + chroma,
                       begin, end - begin, area.destinationStride, area.lumaStride});
    }
}

/// Walks the unmasked parts of a rectangle. Each row of macroblocks is cut into runs as long as the
/// mask allows; convertRun(const Run&) gets a run row by row. Columns and rows that do not fill a
/// chroma sample are left out.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename ConvertRun>
void WalkRectangle(const Rectangle& area, const ConvertRun& convertRun) {
    const std::size_t width = area.width / ChromaDivX * ChromaDivX;
    for (std::size_t top = 0; top < area.height; top += MacroblockEdge) {
        const std::size_t bottom = Smaller(top + MacroblockEdge, area.height);
        // The renderer indexes the mask with a width that need not be a multiple of 16.
        const bool* skip = area.skipMask + ((top / MacroblockEdge * area.width) >> 4);
        std::size_t begin = 0;
        while (begin < width) {
            std::size_t end = begin;
            while (end < width && !skip[end / MacroblockEdge])
                end += MacroblockEdge;
            if (end > begin)
                WalkRows<ChromaDivX, ChromaDivY>(area, begin, Smaller(end, width), top, bottom,
                                                 convertRun);
            // What stopped the run is a masked macroblock or the edge.
            begin = end + MacroblockEdge;
        }
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
