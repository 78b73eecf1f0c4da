#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/MaskRuns.h"

#include <algorithm>

namespace Vostrel::libimagedecoder {
namespace {

constexpr uint32_t Alpha = 0xFF000000;

/// How the channels of a pixel change: c becomes (c ^ flip) * factor / divisor ^ flip, where flip
/// is 255 to measure from white instead of black.
struct Scaling {
    int m_iFlip;
    int m_iFactor;
    int m_iDivisor;

    /// Dividing in float and cutting off is exact: the quotients are below 256, and those that are
    /// no whole number miss one by 1/255 or more.
    uint32_t Of(uint32_t channel) const {
        const int product = (static_cast<int>(channel) ^ m_iFlip) * m_iFactor;
        const float quotient = static_cast<float>(product) / static_cast<float>(m_iDivisor);
        return static_cast<uint32_t>(static_cast<int>(quotient) ^ m_iFlip);
    }
};

/// Scales a pixel down towards black, or up towards white, until its luma is the wanted one. One
/// unit of difference is rounding and stays. Every pixel divides, those that stay by 1, for without
/// branches the compiler makes it four pixels at a time (bench: AdjustScreen).
uint32_t WithLuma(uint32_t pixel, int wanted) {
    const uint32_t red = pixel >> 16 & 0xFF;
    const uint32_t green = pixel >> 8 & 0xFF;
    const uint32_t blue = pixel & 0xFF;
    const int luma = static_cast<int>((77 * red + 150 * green + 29 * blue) >> 8);
    const bool brighter = luma - wanted > 1;
    const bool darker = wanted - luma > 1;
    const Scaling scaling{darker ? 255 : 0,
                          brighter ? wanted
                          : darker ? 255 - wanted
                                   : 1,
                          brighter ? luma
                          : darker ? 255 - luma
                                   : 1};
    return Alpha | scaling.Of(red) << 16 | scaling.Of(green) << 8 | scaling.Of(blue);
}

void AdjustPixels(uint32_t* pixels, const unsigned char* luma, size_t count) {
    for (size_t i = 0; i < count; ++i)
        pixels[i] = WithLuma(pixels[i], luma[i]);
}

} // namespace

/// luma points at the sample of the region's corner, already stretched by the contrast.
void ImageDecoderRenderer::AdjustRgb(const ArgbTarget& target, const ArgbRegion& region,
                                     size_t lumaStride, const unsigned char* luma) const {
    if (!m_bClientPostprocessingEnabled)
        return;
    const size_t columns = MacroblocksAcross(region.m_uiWidth);
    const bool* skip = region.m_pbSkipMask;
    for (size_t top = 0; top < region.m_uiHeight; top += MacroblockEdge, skip += columns) {
        const size_t bottom = std::min(top + MacroblockEdge, region.m_uiHeight);
        ForEachUnmaskedRun(skip, columns, [&](size_t first, size_t end) {
            const size_t left = first * MacroblockEdge;
            const size_t pixels = std::min(end * MacroblockEdge, region.m_uiWidth) - left;
            for (size_t row = top; row < bottom; ++row)
                AdjustPixels(target.At(left, row).m_puiPixels, luma + row * lumaStride + left,
                             pixels);
        });
    }
}

} // namespace Vostrel::libimagedecoder
