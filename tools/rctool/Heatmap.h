#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/walker/WalkedStream.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::rctool {

enum class HeatmapKind { Bits, Changes };

/// Sums up what every place of a screen cost: the bits of the macroblocks that were coded there, or
/// how many they were. The sums are exact for every pixel, and are kept for cells of 16x16 pixels
/// as long as all rectangles begin at multiples of 16; for smaller ones, down to a pixel, after
/// others.
class Heatmap : public walker::IStreamVisitor {
public:
    Heatmap(size_t width, size_t height, HeatmapKind kind) : m_kind(kind) {
        UseSize(width, height);
    }

    /// Starts anew when the size differs. Returns whether it did.
    bool UseSize(size_t width, size_t height);

    /// The macroblocks of this rectangle follow.
    void BeginUpdate(const libimagedecoder::UpdateRectangle& rectangle);
    void OnMacroblock(const walker::Macroblock& block) override;

    size_t GetWidth() const { return m_uiWidth; }
    size_t GetHeight() const { return m_uiHeight; }
    HeatmapKind GetKind() const { return m_kind; }

    /// The sum at a pixel; it stays at 2^32 - 1 when it would be more.
    uint32_t At(size_t x, size_t y) const {
        return m_vuiSums[y / m_uiEdge * m_uiColumns + x / m_uiEdge];
    }

    /// The largest sum, and the largest part of one that a single macroblock has.
    uint32_t GetMost() const;
    uint32_t GetMostInOneUpdate() const { return m_uiMostInOneUpdate; }

private:
    void UseEdge(size_t edge);

    HeatmapKind m_kind;
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;
    size_t m_uiEdge = 0;    ///< of a cell in pixels: 16, 8, 4, 2 or 1
    size_t m_uiColumns = 0; ///< of cells
    size_t m_uiRows = 0;
    std::vector<uint32_t> m_vuiSums;
    uint32_t m_uiMostInOneUpdate = 0;
    libimagedecoder::UpdateRectangle m_rectangle;
};

} // namespace Vostrel::rctool
