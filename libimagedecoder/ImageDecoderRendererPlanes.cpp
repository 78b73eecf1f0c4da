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

/// How a plane relates to pixels.
struct PlaneScale {
    size_t m_uiDivX;
    size_t m_uiDivY;
    size_t m_uiOffsetDivisor; ///< of the source's offset in pixels
};

/// The viewer's framebuffer in pixels.
struct PlaneScreen {
    size_t m_uiWidth;
    size_t m_uiHeight;
    bool m_bRectangleRelative;
};

/// Where the samples of a rectangle come from and go to, in one plane.
struct PlanePlacement {
    size_t m_uiSourceOffset;
    size_t m_uiStride; ///< of the destination
    size_t m_uiWidth;  ///< samples to copy in a row
    size_t m_uiHeight;
};

/// A packed rectangle has rows of its own width, so only its framebuffer's size bounds it.
PlanePlacement PlacePacked(const PlaneScreen& screen, const UpdateRectangle& rectangle,
                           const PlaneScale& scale) {
    const size_t stride = rectangle.m_uiWidth / scale.m_uiDivX;
    const size_t room = (screen.m_uiWidth / scale.m_uiDivX) * (screen.m_uiHeight / scale.m_uiDivY);
    return {0, stride, stride, room / std::max<size_t>(stride, 1)};
}

/// Viewers expect an odd placement in whole-frame mode: the rectangle's position moves the source,
/// as if it had the framebuffer's width, while the destination starts at its first byte; and the
/// chroma source moves by half of the luma offset in every subsampling.
PlanePlacement PlaceInWholeFrame(const PlaneScreen& screen, const UpdateRectangle& rectangle,
                                 const PlaneScale& scale) {
    const size_t offset = rectangle.m_uiX + rectangle.m_uiY * screen.m_uiWidth;
    const size_t width = screen.m_uiWidth / scale.m_uiDivX;
    return {offset / scale.m_uiOffsetDivisor, width,
            std::min(RoundedUpToMacroblocks(rectangle.m_uiWidth) / scale.m_uiDivX, width),
            screen.m_uiHeight / scale.m_uiDivY};
}

/// Rows that end within the source. Those of a rectangle on the screen all do, since the decoder's
/// planes hold the screen in whole macroblocks.
size_t RowsWithinSource(const PlaneScreen& screen, const PlaneScale& scale,
                        const PlanePlacement& placement, size_t sourceStride) {
    const size_t columns = RoundedUpToMacroblocks(screen.m_uiWidth) / scale.m_uiDivX;
    const size_t samples =
        std::max(columns, sourceStride) * RoundedUpToMacroblocks(screen.m_uiHeight);
    const size_t end = placement.m_uiSourceOffset + placement.m_uiWidth;
    return end > samples ? 0 : (samples - end) / std::max<size_t>(sourceStride, 1) + 1;
}

/// A row of chroma for every m_uiDivY-th row of luma, the last of an odd number among them.
size_t RowsOf(const UpdateRectangle& rectangle, const PlaneScale& scale) {
    return (rectangle.m_uiHeight + scale.m_uiDivY - 1) / scale.m_uiDivY;
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

/// Whole macroblocks are copied, cut at the destination's size wherever the rectangle lies.
template <size_t ChromaDivX, size_t ChromaDivY>
void ImageDecoderRenderer::FinalizeYCbCr4xx(const Planes& planes) {
    const UpdateRectangle& rectangle = planes.m_Rectangle;
    const PlaneScreen screen{m_usFramebufferWidth, m_usFramebufferHeight, m_bRectangleRelative};
    const auto copy = [&](const PlaneScale& scale, const unsigned char* source, size_t stride,
                          unsigned char* destination) {
        const bool packed = screen.m_bRectangleRelative;
        const PlanePlacement placement =
            (packed ? PlacePacked : PlaceInWholeFrame)(screen, rectangle, scale);
        size_t rows = std::min(RowsOf(rectangle, scale), placement.m_uiHeight);
        if (!packed)
            rows = std::min(rows, RowsWithinSource(screen, scale, placement, stride));
        if (rows == 0 || placement.m_uiWidth == 0)
            return; // There need not be a source, then.
        CopyUnskipped({source + placement.m_uiSourceOffset, stride, destination,
                       placement.m_uiStride, placement.m_uiWidth, rows,
                       MacroblockEdge / scale.m_uiDivX, MacroblockEdge / scale.m_uiDivY},
                      planes.m_pbSkipMask, rectangle.MacroblockColumns());
    };
    constexpr PlaneScale Luma{1, 1, 1};
    constexpr PlaneScale Chroma{ChromaDivX, ChromaDivY, 2};
    copy(Luma, planes.m_pucY, planes.m_uiLumaStride, m_pucFramebufferY);
    copy(Chroma, planes.m_pucCb, planes.m_uiChromaStride, m_pucFramebufferCb);
    copy(Chroma, planes.m_pucCr, planes.m_uiChromaStride, m_pucFramebufferCr);
}

} // namespace Vostrel::libimagedecoder
