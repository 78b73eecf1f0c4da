#pragma once

#include "libimagedecoder/Macroblock.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Edge of an ICT tile in samples.
constexpr size_t TileEdge = 8;
constexpr size_t TileCoefficients = TileEdge * TileEdge;

/// Luma tiles of a macroblock.
constexpr size_t LumaTiles = MacroblockEdge * MacroblockEdge / TileCoefficients;

enum IctComponent : uint8_t { ComponentY, ComponentCb, ComponentCr, ComponentCount };

/// The chroma geometry of a macroblock: luma samples per chroma sample, and the samples of its area
/// in each chroma plane.
///
/// A macroblock codes its areas in the order Y, Cb, Cr, and the tiles of an area in row order.
template <size_t ChromaDivX, size_t ChromaDivY>
struct IctChroma {
    static constexpr size_t DivX = ChromaDivX;
    static constexpr size_t DivY = ChromaDivY;
    static constexpr size_t Width = MacroblockEdge / DivX;
    static constexpr size_t Height = MacroblockEdge / DivY;
};

using IctChroma420 = IctChroma<2, 2>;
using IctChroma422 = IctChroma<2, 1>;
using IctChroma444 = IctChroma<1, 1>;

} // namespace Vostrel::libimagedecoder
