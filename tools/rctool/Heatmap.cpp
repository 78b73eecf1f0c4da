#include "tools/rctool/Heatmap.h"

#include <algorithm>
#include <cmath>

namespace Vostrel::rctool {

using libimagedecoder::MacroblockEdge;
using streamencoder::Picture;
using streamencoder::RgbPixel;

namespace {

/// Blue, cyan, green, yellow, red for 0..1.
RgbPixel ColourOf(double heat) {
    constexpr RgbPixel Ramp[] = {
        {0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}};
    const double place = std::clamp(heat, 0.0, 1.0) * (std::size(Ramp) - 1);
    const size_t below = std::min<size_t>(static_cast<size_t>(place), std::size(Ramp) - 2);
    const double part = place - static_cast<double>(below);
    RgbPixel colour{};
    for (size_t i = 0; i < colour.size(); ++i)
        colour[i] = static_cast<uint8_t>(
            std::lround((1 - part) * Ramp[below][i] + part * Ramp[below + 1][i]));
    return colour;
}

uint8_t GreyOf(const RgbPixel& pixel) {
    return static_cast<uint8_t>((77 * pixel[0] + 150 * pixel[1] + 29 * pixel[2]) >> 8);
}

RgbPixel Mix(const RgbPixel& colour, uint8_t grey) {
    RgbPixel mixed{};
    for (size_t i = 0; i < mixed.size(); ++i)
        mixed[i] = static_cast<uint8_t>((colour[i] + grey) / 2);
    return mixed;
}

} // namespace

void Heatmap::UseSize(size_t width, size_t height) {
    if (width == m_uiWidth && height == m_uiHeight)
        return;
    m_uiWidth = width;
    m_uiHeight = height;
    m_vfSums.assign(width * height, 0);
}

void Heatmap::OnMacroblock(const walker::Macroblock& block) {
    const double heat =
        m_kind == HeatmapKind::Bits ? static_cast<double>(block.m_record.m_uiCount) : 1.0;
    const size_t left = m_rectangle.m_uiX + block.m_place.m_uiLeft;
    const size_t top = m_rectangle.m_uiY + block.m_place.m_uiTop;
    const size_t right = std::min(left + MacroblockEdge, m_uiWidth);
    const size_t bottom = std::min(top + MacroblockEdge, m_uiHeight);
    for (size_t y = top; y < bottom; ++y) {
        for (size_t x = left; x < right; ++x)
            m_vfSums[y * m_uiWidth + x] += heat;
    }
}

double Heatmap::GetMost() const {
    return *std::max_element(m_vfSums.begin(), m_vfSums.end());
}

/// A coded pixel beside one that was never coded, or at the edge of the screen.
bool Heatmap::IsEdge(size_t x, size_t y) const {
    if (x == 0 || y == 0 || x + 1 == m_uiWidth || y + 1 == m_uiHeight)
        return true;
    return At(x - 1, y) == 0 || At(x + 1, y) == 0 || At(x, y - 1) == 0 || At(x, y + 1) == 0;
}

Picture Heatmap::Paint(const Picture& picture) const {
    constexpr RgbPixel Frame{255, 255, 255};
    const double most = GetMost();
    Picture painted(m_uiWidth, m_uiHeight);
    for (size_t y = 0; y < m_uiHeight; ++y) {
        for (size_t x = 0; x < m_uiWidth; ++x) {
            const uint8_t grey = GreyOf(picture.At(x, y));
            if (At(x, y) == 0)
                painted.At(x, y) = {grey, grey, grey};
            else
                painted.At(x, y) = IsEdge(x, y) ? Frame : Mix(ColourOf(At(x, y) / most), grey);
        }
    }
    return painted;
}

} // namespace Vostrel::rctool
