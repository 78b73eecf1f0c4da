#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/MaskRuns.h"

#include <algorithm>
#include <cstring>

namespace Vostrel::libimagedecoder {
namespace {

/// One plane on its way into a plane framebuffer.
struct PlaneCopy {
    const unsigned char* m_pucSource;
    size_t m_uiSourceStride;
    unsigned char* m_pucDestination;
    size_t m_uiDestinationStride;
    size_t m_uiWidth; ///< samples to copy in a row
    size_t m_uiHeight;
    size_t m_uiBlockWidth; ///< samples of a macroblock in this plane
    size_t m_uiBlockHeight;
};

void CopyUnskipped(const PlaneCopy& copy, const bool* skipMask, size_t maskStride) {
    const size_t blocks = (copy.m_uiWidth + copy.m_uiBlockWidth - 1) / copy.m_uiBlockWidth;
    for (size_t top = 0; top < copy.m_uiHeight; top += copy.m_uiBlockHeight) {
        const size_t bottom = std::min(top + copy.m_uiBlockHeight, copy.m_uiHeight);
        ForEachUnmaskedRun(skipMask, blocks, [&](size_t first, size_t end) {
            const size_t left = first * copy.m_uiBlockWidth;
            const size_t samples = std::min(end * copy.m_uiBlockWidth, copy.m_uiWidth) - left;
            for (size_t row = top; row < bottom; ++row)
                std::memcpy(copy.m_pucDestination + row * copy.m_uiDestinationStride + left,
                            copy.m_pucSource + row * copy.m_uiSourceStride + left, samples);
        });
        skipMask += maskStride;
    }
}

} // namespace

void ImageDecoderRenderer::FinalizeYCbCr420(const Planes& planes) {
    FinalizeYCbCr4xx<2, 2>(planes);
}

void ImageDecoderRenderer::FinalizeYCbCr422(const Planes& planes) {
    FinalizeYCbCr4xx<2, 1>(planes);
}

void ImageDecoderRenderer::FinalizeYCbCr444(const Planes& planes) {
    FinalizeYCbCr4xx<1, 1>(planes);
}

/// Viewers expect an odd placement in whole-frame mode: the rectangle's position moves the source,
/// as if it had the framebuffer's width, while the destination starts at its first byte; and the
/// chroma source moves by half of the luma offset in every subsampling. Whole macroblocks are
/// copied. What would come from outside the framebuffer is cut off, which also keeps the reads
/// inside the decoder's planes.
template <size_t ChromaDivX, size_t ChromaDivY>
void ImageDecoderRenderer::FinalizeYCbCr4xx(const Planes& planes) {
    const UpdateRectangle& rectangle = planes.m_Rectangle;
    const Placement placement = PlaceInFramebuffer(rectangle);
    const size_t width =
        std::min(RoundedUpToMacroblocks(rectangle.m_uiWidth), placement.m_uiVisibleWidth);
    const size_t height = std::min<size_t>(rectangle.m_uiHeight, placement.m_uiVisibleHeight);
    const size_t chromaStride = placement.m_uiStride / ChromaDivX;
    // A packed rectangle has rows of its own width, so only its framebuffer's size bounds it.
    const size_t chromaRoom =
        (m_usFramebufferWidth / ChromaDivX) * (m_usFramebufferHeight / ChromaDivY);
    const size_t visibleChromaHeight = m_bRectangleRelative
                                           ? chromaRoom / std::max<size_t>(chromaStride, 1)
                                           : placement.m_uiVisibleHeight / ChromaDivY;
    const size_t chromaHeight =
        std::min((rectangle.m_uiHeight + ChromaDivY - 1) / ChromaDivY, visibleChromaHeight);
    const size_t maskStride = rectangle.MacroblockColumns();

    CopyUnskipped({planes.m_pucY + placement.m_uiOffset, planes.m_uiLumaStride, m_pucFramebufferY,
                   placement.m_uiStride, width, height, MacroblockEdge, MacroblockEdge},
                  planes.m_pbSkipMask, maskStride);
    const auto copyChroma = [&](const unsigned char* source, unsigned char* destination) {
        CopyUnskipped({source + placement.m_uiOffset / 2, planes.m_uiChromaStride, destination,
                       chromaStride, width / ChromaDivX, chromaHeight, MacroblockEdge / ChromaDivX,
                       MacroblockEdge / ChromaDivY},
                      planes.m_pbSkipMask, maskStride);
    };
    copyChroma(planes.m_pucCb, m_pucFramebufferCb);
    copyChroma(planes.m_pucCr, m_pucFramebufferCr);
}

} // namespace Vostrel::libimagedecoder
