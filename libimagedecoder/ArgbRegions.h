#pragma once

#include "libimagedecoder/Macroblock.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Pixels to write to, and the distance in pixels from one row to the next.
struct ArgbTarget {
    uint32_t* m_puiPixels;
    size_t m_uiStride;

    ArgbTarget At(size_t column, size_t row) const {
        return {m_puiPixels + row * m_uiStride + column, m_uiStride};
    }
};

/// A part of an update's rectangle, in pixels from the rectangle's corner. Either its width is a
/// multiple of 16, or it lies within one row of macroblocks; so every way to index a skip mask by
/// pixel width agrees.
struct ArgbRegion {
    size_t m_uiColumn;
    size_t m_uiRow;
    size_t m_uiWidth;
    size_t m_uiHeight;
    const bool* m_pbSkipMask; ///< one entry per macroblock of the region, in row order
};

/// An update's rectangle on its way to a framebuffer, of which only a part may lie inside.
struct ArgbDrawing {
    ArgbTarget m_Target;      ///< the rectangle's corner in the framebuffer
    size_t m_uiVisibleWidth;  ///< pixels from that corner to the framebuffer's right edge
    size_t m_uiVisibleHeight; ///< and to its bottom edge
    UpdateRectangle m_Rectangle;
    size_t m_uiChromaDivX; ///< luma columns per chroma sample
    size_t m_uiChromaDivY; ///< luma rows per chroma sample
    const bool* m_pbSkipMask;
};

/// Draws the visible part of a rectangle: calls draw(const ArgbRegion&, const ArgbTarget&) for
/// regions of whole chroma samples that cover it. Columns and rows of the rectangle that do not
/// fill a chroma sample are not drawn; the framebuffer's edge, in contrast, may cut a chroma sample
/// in two, and then the macroblock at the edge takes a way through scratch memory.
template <class Draw>
class ArgbRegions {
public:
    ArgbRegions(const ArgbDrawing& drawing, const Draw& draw)
        : m_Drawing(drawing), m_Draw(draw),
          m_uiDrawnWidth(WholeSamples(drawing.m_Rectangle.m_uiWidth, drawing.m_uiChromaDivX)),
          m_uiDrawnHeight(WholeSamples(drawing.m_Rectangle.m_uiHeight, drawing.m_uiChromaDivY)),
          m_uiWidth(std::min(m_uiDrawnWidth, drawing.m_uiVisibleWidth)),
          m_uiHeight(std::min(m_uiDrawnHeight, drawing.m_uiVisibleHeight)) {}

    void DrawAll() const {
        if (m_uiWidth == 0 || m_uiHeight == 0)
            return;
        const bool* skipMask = m_Drawing.m_pbSkipMask;
        const bool wholeMacroblocks = m_Drawing.m_Rectangle.m_uiWidth % MacroblockEdge == 0;
        if (wholeMacroblocks && m_uiWidth == m_uiDrawnWidth &&
            m_uiHeight % m_Drawing.m_uiChromaDivY == 0) {
            m_Draw(ArgbRegion{0, 0, m_uiWidth, m_uiHeight, skipMask}, m_Drawing.m_Target);
            return;
        }
        for (size_t row = 0; row < m_uiHeight; row += MacroblockEdge) {
            DrawMacroblockRow(row, skipMask);
            skipMask += m_Drawing.m_Rectangle.MacroblockColumns();
        }
    }

private:
    static size_t WholeSamples(size_t pixels, size_t divisor) { return pixels - pixels % divisor; }

    void DrawMacroblockRow(size_t row, const bool* skipMask) const {
        const size_t height = std::min(MacroblockEdge, m_uiHeight - row);
        size_t width = m_uiWidth;
        if (height % m_Drawing.m_uiChromaDivY != 0)
            width = 0;
        else if (width % m_Drawing.m_uiChromaDivX != 0)
            width -= width % MacroblockEdge;
        if (width > 0)
            m_Draw(ArgbRegion{0, row, width, height, skipMask}, m_Drawing.m_Target.At(0, row));
        for (size_t column = width; column < m_uiWidth; column += MacroblockEdge) {
            if (!skipMask[column / MacroblockEdge])
                DrawThroughScratch(column, row);
        }
    }

    void DrawThroughScratch(size_t column, size_t row) const {
        static constexpr bool NotSkipped = false;
        std::array<uint32_t, MacroblockEdge * MacroblockEdge> scratch;
        m_Draw(ArgbRegion{column, row, std::min(MacroblockEdge, m_uiDrawnWidth - column),
                          std::min(MacroblockEdge, m_uiDrawnHeight - row), &NotSkipped},
               ArgbTarget{scratch.data(), MacroblockEdge});
        const size_t width = std::min(MacroblockEdge, m_uiWidth - column);
        const size_t height = std::min(MacroblockEdge, m_uiHeight - row);
        for (size_t line = 0; line < height; ++line)
            std::copy_n(&scratch[line * MacroblockEdge], width,
                        m_Drawing.m_Target.At(column, row + line).m_puiPixels);
    }

    const ArgbDrawing& m_Drawing;
    const Draw& m_Draw;
    size_t m_uiDrawnWidth;
    size_t m_uiDrawnHeight;
    size_t m_uiWidth;
    size_t m_uiHeight;
};

} // namespace Vostrel::libimagedecoder
