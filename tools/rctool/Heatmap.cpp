#include "tools/rctool/Heatmap.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace Vostrel::rctool {

using libimagedecoder::MacroblockEdge;

bool Heatmap::UseSize(size_t width, size_t height) {
    if (width == m_uiWidth && height == m_uiHeight)
        return false;
    m_uiWidth = width;
    m_uiHeight = height;
    m_uiMostInOneUpdate = 0;
    m_vuiSums.clear();
    UseEdge(MacroblockEdge);
    return true;
}

/// Divides the cells that there are.
void Heatmap::UseEdge(size_t edge) {
    const size_t columns = (m_uiWidth + edge - 1) / edge;
    const size_t rows = (m_uiHeight + edge - 1) / edge;
    std::vector<uint32_t> sums(columns * rows);
    for (size_t y = 0; y < rows && !m_vuiSums.empty(); ++y) {
        for (size_t x = 0; x < columns; ++x)
            sums[y * columns + x] = At(x * edge, y * edge);
    }
    m_vuiSums = std::move(sums);
    m_uiEdge = edge;
    m_uiColumns = columns;
    m_uiRows = rows;
}

void Heatmap::BeginUpdate(const libimagedecoder::UpdateRectangle& rectangle) {
    m_rectangle = rectangle;
    if (rectangle.m_uiX >= m_uiWidth || rectangle.m_uiY >= m_uiHeight)
        return;
    const size_t edge =
        std::gcd(std::gcd(size_t{rectangle.m_uiX}, size_t{rectangle.m_uiY}), m_uiEdge);
    if (edge != m_uiEdge)
        UseEdge(edge);
}

void Heatmap::OnMacroblock(const walker::Macroblock& block) {
    const size_t heat = m_kind == HeatmapKind::Bits ? block.m_record.m_uiCount : 1;
    const size_t x0 = m_rectangle.m_uiX + block.m_place.m_uiLeft;
    const size_t y0 = m_rectangle.m_uiY + block.m_place.m_uiTop;
    if (x0 >= m_uiWidth || y0 >= m_uiHeight)
        return; // Such a rectangle need not fit the cells.
    const size_t left = x0 / m_uiEdge;
    const size_t top = y0 / m_uiEdge;
    const size_t right = std::min(left + MacroblockEdge / m_uiEdge, m_uiColumns);
    const size_t bottom = std::min(top + MacroblockEdge / m_uiEdge, m_uiRows);
    for (size_t y = top; y < bottom; ++y) {
        for (size_t x = left; x < right; ++x) {
            uint32_t& sum = m_vuiSums[y * m_uiColumns + x];
            const uint64_t more = uint64_t{sum} + heat;
            sum = static_cast<uint32_t>(
                std::min<uint64_t>(more, std::numeric_limits<uint32_t>::max()));
            m_uiMostInOneUpdate = std::max(m_uiMostInOneUpdate, static_cast<uint32_t>(heat));
        }
    }
}

uint32_t Heatmap::GetMost() const {
    return *std::max_element(m_vuiSums.begin(), m_vuiSums.end());
}

} // namespace Vostrel::rctool
