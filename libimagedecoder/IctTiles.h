#pragma once

#include "libimagedecoder/Macroblock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Vostrel::libimagedecoder {

/// Edge of an ICT tile in samples.
constexpr size_t TileEdge = 8;
constexpr size_t TileCoefficients = TileEdge * TileEdge;

enum IctComponent : uint8_t { ComponentY, ComponentCb, ComponentCr, ComponentCount };

/// Where one tile of a macroblock goes: its plane, and the samples from the corner of the
/// macroblock's area in that plane.
struct IctTile {
    IctComponent m_Component;
    uint8_t m_uiColumn;
    uint8_t m_uiRow;
};

/// The tiles of a macroblock in stream order: four of Y, then those of Cb, then those of Cr, each
/// component in row order. A chroma area is 16 / chromaDivX columns by 16 / chromaDivY rows.
template <size_t ChromaDivX, size_t ChromaDivY>
constexpr auto MacroblockTiles() {
    constexpr size_t ChromaTiles = 4 / ChromaDivX / ChromaDivY;
    std::array<IctTile, 4 + 2 * ChromaTiles> tiles{};
    size_t count = 0;
    const auto addArea = [&](IctComponent component, size_t width, size_t height) {
        for (size_t row = 0; row < height; row += TileEdge) {
            for (size_t column = 0; column < width; column += TileEdge)
                tiles[count++] = {component, static_cast<uint8_t>(column),
                                  static_cast<uint8_t>(row)};
        }
    };
    addArea(ComponentY, MacroblockEdge, MacroblockEdge);
    addArea(ComponentCb, MacroblockEdge / ChromaDivX, MacroblockEdge / ChromaDivY);
    addArea(ComponentCr, MacroblockEdge / ChromaDivX, MacroblockEdge / ChromaDivY);
    return tiles;
}

using IctTiles = std::span<const IctTile>;

inline constexpr auto IctTiles420 = MacroblockTiles<2, 2>();
inline constexpr auto IctTiles422 = MacroblockTiles<2, 1>();
inline constexpr auto IctTiles444 = MacroblockTiles<1, 1>();

} // namespace Vostrel::libimagedecoder
