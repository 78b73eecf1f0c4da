#include "libimagedecoder/ImageDecoderRenderer.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"

#include <utility>

namespace Vostrel::libimagedecoder {

using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

ImageDecoderRenderer::ImageDecoderRenderer(ILogger* logger)
    : ImageDecoderRenderer(YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(logger, true)) {}

ImageDecoderRenderer::ImageDecoderRenderer(std::shared_ptr<IYCbCr4xxToArgb32> converter)
    : m_pConverter(std::move(converter)) {
    if (!m_pConverter)
        throw ImageDecoderException("No colour conversion could be created");
    SetContrastEnhance(0);
    BuildQuantizedTablesOnce();
}

void ImageDecoderRenderer::SetFramebufferSize(unsigned short width, unsigned short height,
                                              bool rectangleRelative) {
    m_usFramebufferWidth = width;
    m_usFramebufferHeight = height;
    m_bRectangleRelative = rectangleRelative;
}

void ImageDecoderRenderer::SetFramebufferArgb(unsigned char* framebuffer) {
    m_puiFramebufferArgb = reinterpret_cast<uint32_t*>(framebuffer);
}

bool ImageDecoderRenderer::CanDrawRowsApart(const UpdateRectangle& rectangle) const {
    constexpr uint32_t LargestCoordinate = 65535;
    return m_pConverter->IsReentrant() && m_puiFramebufferArgb != nullptr &&
           !m_bRectangleRelative &&
           uint32_t{rectangle.m_uiY} + rectangle.m_uiHeight <= LargestCoordinate;
}

void ImageDecoderRenderer::DrawDataYCbCr420(unsigned short x, unsigned short y,
                                            unsigned short width, unsigned short height,
                                            unsigned long lumaStride, unsigned long chromaStride,
                                            unsigned char* luma, unsigned char* cb,
                                            unsigned char* cr, const bool* skipMask) {
    DrawDataYCbCr4xx({{x, y, width, height}, lumaStride, chromaStride, luma, cb, cr, skipMask},
                     &ImageDecoderRenderer::FinalizeArgb420,
                     &ImageDecoderRenderer::FinalizeYCbCr420);
}

void ImageDecoderRenderer::DrawDataYCbCr422(unsigned short x, unsigned short y,
                                            unsigned short width, unsigned short height,
                                            unsigned long lumaStride, unsigned long chromaStride,
                                            unsigned char* luma, unsigned char* cb,
                                            unsigned char* cr, const bool* skipMask) {
    DrawDataYCbCr4xx({{x, y, width, height}, lumaStride, chromaStride, luma, cb, cr, skipMask},
                     &ImageDecoderRenderer::FinalizeArgb422,
                     &ImageDecoderRenderer::FinalizeYCbCr422);
}

void ImageDecoderRenderer::DrawDataYCbCr444(unsigned short x, unsigned short y,
                                            unsigned short width, unsigned short height,
                                            unsigned long lumaStride, unsigned long chromaStride,
                                            unsigned char* luma, unsigned char* cb,
                                            unsigned char* cr, const bool* skipMask) {
    DrawDataYCbCr4xx({{x, y, width, height}, lumaStride, chromaStride, luma, cb, cr, skipMask},
                     &ImageDecoderRenderer::FinalizeArgb444,
                     &ImageDecoderRenderer::FinalizeYCbCr444);
}

void ImageDecoderRenderer::DrawDataYCbCr4xx(const Planes& planes, FinalizeFunction finalizeArgb,
                                            FinalizeFunction finalizeYCbCr) {
    if (m_puiFramebufferArgb != nullptr) {
        ApplyContrastEnhancement(planes.m_Rectangle.m_uiWidth, planes.m_Rectangle.m_uiHeight,
                                 planes.m_uiLumaStride, planes.m_pucY, 8, planes.m_pbSkipMask);
        (this->*finalizeArgb)(planes);
    } else if (m_pucFramebufferY != nullptr && m_pucFramebufferCb != nullptr &&
               m_pucFramebufferCr != nullptr) {
        (this->*finalizeYCbCr)(planes);
    }
}

void ImageDecoderRenderer::FinalizeArgb420(const Planes& planes) {
    FinalizeArgb4xx<2, 2>(planes, &IYCbCr4xxToArgb32::Convert420);
}

void ImageDecoderRenderer::FinalizeArgb422(const Planes& planes) {
    FinalizeArgb4xx<2, 1>(planes, &IYCbCr4xxToArgb32::Convert422);
}

void ImageDecoderRenderer::FinalizeArgb444(const Planes& planes) {
    FinalizeArgb4xx<1, 1>(planes, &IYCbCr4xxToArgb32::Convert444);
}

template <size_t ChromaDivX, size_t ChromaDivY>
void ImageDecoderRenderer::FinalizeArgb4xx(const Planes& planes, ConvertFunction convert) {
    const auto draw = [&](const ArgbRegion& region, const ArgbTarget& target) {
        const unsigned char* const luma =
            planes.m_pucY + region.m_uiRow * planes.m_uiLumaStride + region.m_uiColumn;
        const size_t chroma =
            region.m_uiRow / ChromaDivY * planes.m_uiChromaStride + region.m_uiColumn / ChromaDivX;
        (m_pConverter.get()->*convert)(
            target.m_puiPixels, luma, planes.m_pucCb + chroma, planes.m_pucCr + chroma,
            static_cast<unsigned short>(region.m_uiWidth),
            static_cast<unsigned short>(region.m_uiHeight), target.m_uiStride,
            planes.m_uiLumaStride, planes.m_uiChromaStride, region.m_pbSkipMask);
        AdjustRgb(target, region, planes.m_uiLumaStride, luma);
    };
    const ArgbDrawing drawing =
        PrepareArgbDrawing(planes.m_Rectangle, ChromaDivX, ChromaDivY, planes.m_pbSkipMask);
    ArgbRegions(drawing, draw).DrawAll();
}

ImageDecoderRenderer::Placement
ImageDecoderRenderer::PlaceInFramebuffer(const UpdateRectangle& rectangle) const {
    const size_t framebufferWidth = m_usFramebufferWidth;
    const size_t framebufferHeight = m_usFramebufferHeight;
    const size_t x = rectangle.m_uiX;
    const size_t y = rectangle.m_uiY;
    const size_t width = rectangle.m_uiWidth;
    if (rectangle.IsEmpty())
        return {};
    if (m_bRectangleRelative)
        return {0, width, width, framebufferWidth * framebufferHeight / width};
    if (x >= framebufferWidth || y >= framebufferHeight)
        return {};
    return {y * framebufferWidth + x, framebufferWidth, framebufferWidth - x,
            framebufferHeight - y};
}

ArgbDrawing ImageDecoderRenderer::PrepareArgbDrawing(const UpdateRectangle& rectangle,
                                                     size_t chromaDivX, size_t chromaDivY,
                                                     const bool* skipMask) const {
    const Placement placement = PlaceInFramebuffer(rectangle);
    return {{m_puiFramebufferArgb + placement.m_uiOffset, placement.m_uiStride},
            placement.m_uiVisibleWidth,
            placement.m_uiVisibleHeight,
            rectangle,
            chromaDivX,
            chromaDivY,
            skipMask};
}

} // namespace Vostrel::libimagedecoder
