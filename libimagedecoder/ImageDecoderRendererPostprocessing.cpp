#include "libimagedecoder/ImageDecoderRenderer.h"

#include <algorithm>

namespace Vostrel::libimagedecoder {
namespace {

constexpr uint32_t Alpha = 0xFF000000;

struct Rgb {
    int m_iRed;
    int m_iGreen;
    int m_iBlue;

    template <class Change>
    Rgb With(Change change) const {
        return {change(m_iRed), change(m_iGreen), change(m_iBlue)};
    }

    uint32_t Word() const {
        return Alpha | static_cast<uint32_t>(m_iRed << 16 | m_iGreen << 8 | m_iBlue);
    }
};

/// Scales a pixel down towards black, or up towards white, until its luma is the wanted one. One
/// unit of difference is rounding and stays.
uint32_t WithLuma(uint32_t pixel, int wanted) {
    const Rgb rgb{static_cast<int>(pixel >> 16 & 0xFF), static_cast<int>(pixel >> 8 & 0xFF),
                  static_cast<int>(pixel & 0xFF)};
    const int luma = (77 * rgb.m_iRed + 150 * rgb.m_iGreen + 29 * rgb.m_iBlue) >> 8;
    if (luma - wanted > 1)
        return rgb.With([&](int value) { return value * wanted / luma; }).Word();
    if (wanted - luma > 1)
        return rgb
            .With([&](int value) { return 255 - (255 - value) * (255 - wanted) / (255 - luma); })
            .Word();
    return rgb.Word();
}

} // namespace

/// luma points at the sample of the region's corner, already stretched by the contrast.
void ImageDecoderRenderer::AdjustRgb(const ArgbTarget& target, const ArgbRegion& region,
                                     size_t lumaStride, const unsigned char* luma) const {
    if (!m_bClientPostprocessingEnabled)
        return;
    const size_t maskStride = MacroblocksAcross(region.m_uiWidth);
    for (size_t row = 0; row < region.m_uiHeight; ++row) {
        const bool* const skip = region.m_pbSkipMask + row / MacroblockEdge * maskStride;
        uint32_t* const pixels = target.At(0, row).m_puiPixels;
        for (size_t column = 0; column < region.m_uiWidth; ++column) {
            if (!skip[column / MacroblockEdge])
                pixels[column] = WithLuma(pixels[column], luma[row * lumaStride + column]);
        }
    }
}

} // namespace Vostrel::libimagedecoder
