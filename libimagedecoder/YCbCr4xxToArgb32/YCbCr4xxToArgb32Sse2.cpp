#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.h"

#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/YCbCr4xxToArgb32/AcceleratedPixels.h"
#include "libimagedecoder/YCbCr4xxToArgb32/Lanes128.h"
#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedPixels.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

YCbCr4xxToArgb32Sse2::YCbCr4xxToArgb32Sse2(ILogger* logger) : IYCbCr4xxToArgb32(logger) {
    m_pLogger->Log("YCbCr420 to ARGB conversion is SSE2 accelerated.");
}

YCbCr4xxToArgb32Sse2::~YCbCr4xxToArgb32Sse2() = default;

std::uint16_t YCbCr4xxToArgb32Sse2::GetDataAlignmentBytes() const {
    return 16;
}

bool YCbCr4xxToArgb32Sse2::IsReentrant() const {
    return true;
}

void YCbCr4xxToArgb32Sse2::Convert420(std::uint32_t* destination, const std::uint8_t* luma,
                                      const std::uint8_t* cb, const std::uint8_t* cr,
                                      unsigned short width, unsigned short height,
                                      unsigned long destinationStride, unsigned long lumaStride,
                                      unsigned long chromaStride, const bool* skipMask) const {
    ConvertRectangle<2, 2, Lanes128>({destination, luma, cb, cr, width, height, destinationStride,
                                      lumaStride, chromaStride, skipMask});
}

void YCbCr4xxToArgb32Sse2::Convert422(std::uint32_t* destination, const std::uint8_t* luma,
                                      const std::uint8_t* cb, const std::uint8_t* cr,
                                      unsigned short width, unsigned short height,
                                      unsigned long destinationStride, unsigned long lumaStride,
                                      unsigned long chromaStride, const bool* skipMask) const {
    ConvertRectangle<2, 1, Lanes128>({destination, luma, cb, cr, width, height, destinationStride,
                                      lumaStride, chromaStride, skipMask});
}

void YCbCr4xxToArgb32Sse2::Convert444(std::uint32_t* destination, const std::uint8_t* luma,
                                      const std::uint8_t* cb, const std::uint8_t* cr,
                                      unsigned short width, unsigned short height,
                                      unsigned long destinationStride, unsigned long lumaStride,
                                      unsigned long chromaStride, const bool* skipMask) const {
    ConvertRectangle<1, 1, Lanes128>({destination, luma, cb, cr, width, height, destinationStride,
                                      lumaStride, chromaStride, skipMask});
}

void YCbCr4xxToArgb32Sse2::ConvertQuantized420(const QuantizedRectangle& area,
                                               QuantizedColours colours) const {
    ConvertQuantizedRectangle<2, 2, Lanes128>(area, colours);
}

void YCbCr4xxToArgb32Sse2::ConvertQuantized422(const QuantizedRectangle& area,
                                               QuantizedColours colours) const {
    ConvertQuantizedRectangle<2, 1, Lanes128>(area, colours);
}

void YCbCr4xxToArgb32Sse2::ConvertQuantized444(const QuantizedRectangle& area,
                                               QuantizedColours colours) const {
    ConvertQuantizedRectangle<1, 1, Lanes128>(area, colours);
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
