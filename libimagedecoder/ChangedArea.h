#pragma once

#include "libimagedecoder/Macroblock.h"

#include <algorithm>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Bounding box of the coded macroblocks of one update, and the 64-bit form in which the viewer
/// receives it.
class ChangedArea {
public:
    void Include(const Macroblock& macroblock) {
        m_uiMinX = std::min<uint64_t>(m_uiMinX, macroblock.m_uiLeft);
        m_uiMinY = std::min<uint64_t>(m_uiMinY, macroblock.m_uiTop);
        m_uiMaxX = std::max<uint64_t>(m_uiMaxX, macroblock.m_uiLeft);
        m_uiMaxY = std::max<uint64_t>(m_uiMaxY, macroblock.m_uiTop);
    }

    /// Four 16-bit fields, from the top: x, y, then two fields that viewers read as width and
    /// height. The last two carry the update's position added in; viewers depend on that.
    /// 0 when no macroblock was coded.
    uint64_t Packed(const UpdateRectangle& rectangle) const {
        if (m_uiMinX == Nothing)
            return 0;
        const uint64_t x = rectangle.m_uiX;
        const uint64_t y = rectangle.m_uiY;
        return Field(x + m_uiMinX) << 48 | Field(y + m_uiMinY) << 32 |
               Field(x + m_uiMaxX + MacroblockEdge - m_uiMinX) << 16 |
               Field(y + m_uiMaxY + MacroblockEdge - m_uiMinY);
    }

private:
    static constexpr uint64_t Nothing = 0xFFFF;
    static constexpr uint64_t Field(uint64_t value) { return value & 0xFFFF; }

    uint64_t m_uiMinX = Nothing;
    uint64_t m_uiMinY = Nothing;
    uint64_t m_uiMaxX = 0;
    uint64_t m_uiMaxY = 0;
};

} // namespace Vostrel::libimagedecoder
