#pragma once

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Edge of a macroblock in luma pixels; both encodings cut an update into such squares.
constexpr size_t MacroblockEdge = 16;

/// Macroblocks that a length in pixels touches.
constexpr size_t MacroblocksAcross(size_t pixels) {
    return (pixels + MacroblockEdge - 1) / MacroblockEdge;
}

/// A length in pixels rounded up to whole macroblocks.
constexpr size_t RoundedUpToMacroblocks(size_t pixels) {
    return MacroblocksAcross(pixels) * MacroblockEdge;
}

/// Rectangle of one update, in framebuffer pixels.
struct UpdateRectangle {
    uint16_t m_uiX = 0;
    uint16_t m_uiY = 0;
    uint16_t m_uiWidth = 0;
    uint16_t m_uiHeight = 0;

    bool IsEmpty() const { return m_uiWidth == 0 || m_uiHeight == 0; }
    size_t MacroblockColumns() const { return MacroblocksAcross(m_uiWidth); }
    size_t MacroblockRows() const { return MacroblocksAcross(m_uiHeight); }
    size_t MacroblockCount() const { return MacroblockColumns() * MacroblockRows(); }

    /// Row stride, in samples, of the planes in which the rectangle is decoded: whole macroblocks,
    /// so that the last one of a row never runs into the first one of the next.
    size_t LumaStride() const { return RoundedUpToMacroblocks(m_uiWidth); }
};

/// Place of one macroblock in its update.
struct Macroblock {
    size_t m_uiLeft; ///< pixels from the rectangle's left edge, a multiple of 16
    size_t m_uiTop;  ///< pixels from the rectangle's top edge, a multiple of 16
};

/// A place in the walk over the macroblocks of a rectangle, in row order.
class MacroblockPlace {
public:
    explicit MacroblockPlace(const UpdateRectangle& rectangle)
        : m_uiColumns(static_cast<uint32_t>(rectangle.MacroblockColumns())),
          m_uiCount(static_cast<uint32_t>(rectangle.MacroblockCount())) {}

    /// macroblocks: at most 65535, the longest skip.
    void Advance(uint32_t macroblocks) {
        m_uiIndex += macroblocks;
        m_uiColumn += macroblocks;
        if (m_uiColumn >= m_uiColumns && m_uiColumns != 0) {
            m_uiRow += m_uiColumn / m_uiColumns;
            m_uiColumn %= m_uiColumns;
        }
    }

    bool IsAtEnd() const { return m_uiIndex >= m_uiCount; }
    /// Macroblocks from this one on.
    uint32_t Remaining() const { return IsAtEnd() ? 0 : m_uiCount - m_uiIndex; }
    size_t Index() const { return m_uiIndex; }
    Macroblock GetMacroblock() const {
        return {m_uiColumn * MacroblockEdge, m_uiRow * MacroblockEdge};
    }

private:
    uint32_t m_uiColumns;
    uint32_t m_uiCount;
    uint32_t m_uiIndex = 0;
    uint32_t m_uiColumn = 0;
    uint32_t m_uiRow = 0;
};

} // namespace Vostrel::libimagedecoder
