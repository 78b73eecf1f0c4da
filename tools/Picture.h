#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::streamencoder {

using RgbPixel = std::array<uint8_t, 3>;

struct PictureSize {
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;

    bool operator==(const PictureSize&) const = default;
};

/// An RGB picture, rows from top to bottom without gaps.
struct Picture {
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;
    std::vector<RgbPixel> m_vPixels;

    Picture() = default;
    Picture(size_t width, size_t height, RgbPixel colour = {0, 0, 0})
        : m_uiWidth(width), m_uiHeight(height), m_vPixels(width * height, colour) {}

    PictureSize GetSize() const { return {m_uiWidth, m_uiHeight}; }
    RgbPixel& At(size_t x, size_t y) { return m_vPixels[y * m_uiWidth + x]; }
    const RgbPixel& At(size_t x, size_t y) const { return m_vPixels[y * m_uiWidth + x]; }
};

} // namespace Vostrel::streamencoder
