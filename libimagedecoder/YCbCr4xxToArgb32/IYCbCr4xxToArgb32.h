#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedRectangle.h"

#include <cstdint>

namespace Vostrel::libimagedecoder {
class ILogger;
}

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

/// Conversion of rectangles of separate Y, Cb and Cr planes (full range, chroma centred on 128) to
/// ARGB32 words: alpha 255 in bits 24 to 31, then red, green and blue.
///
/// All three conversions take the top-left pixel of the destination and the top-left samples of the
/// planes; width and height of the rectangle in luma pixels; the destination stride in pixels and
/// the plane strides in bytes; and a skip mask, which must not be null unless the rectangle is
/// empty. Macroblocks of 16x16 pixels whose entry mask[((y >> 4) * width >> 4) + (x >> 4)] is true
/// stay untouched. Exactly the rectangle's samples are read and no pixel outside it is written;
/// nothing needs an alignment.
class IYCbCr4xxToArgb32 {
public:
    /// The logger is kept but not owned and must not be null.
    explicit IYCbCr4xxToArgb32(ILogger* logger);
    virtual ~IYCbCr4xxToArgb32();
    IYCbCr4xxToArgb32(const IYCbCr4xxToArgb32&) = delete;
    IYCbCr4xxToArgb32& operator=(const IYCbCr4xxToArgb32&) = delete;

    /// Bytes: 8, 16 or 32. Planes aligned like this convert fastest.
    virtual std::uint16_t GetDataAlignmentBytes() const = 0;

    /// Chroma halved in both directions. An odd last column or row stays unwritten.
    virtual void Convert420(std::uint32_t* destination, const std::uint8_t* luma,
                            const std::uint8_t* cb, const std::uint8_t* cr, unsigned short width,
                            unsigned short height, unsigned long destinationStride,
                            unsigned long lumaStride, unsigned long chromaStride,
                            const bool* skipMask) const = 0;

    /// Chroma halved horizontally. An odd last column stays unwritten.
    virtual void Convert422(std::uint32_t* destination, const std::uint8_t* luma,
                            const std::uint8_t* cb, const std::uint8_t* cr, unsigned short width,
                            unsigned short height, unsigned long destinationStride,
                            unsigned long lumaStride, unsigned long chromaStride,
                            const bool* skipMask) const = 0;

    /// Chroma in full resolution.
    virtual void Convert444(std::uint32_t* destination, const std::uint8_t* luma,
                            const std::uint8_t* cb, const std::uint8_t* cr, unsigned short width,
                            unsigned short height, unsigned long destinationStride,
                            unsigned long lumaStride, unsigned long chromaStride,
                            const bool* skipMask) const = 0;

    /// Whether several threads may convert with one object at the same time.
    virtual bool IsReentrant() const;

    /// Reduced-depth samples in the three subsamplings. Rectangle and mask are treated as above,
    /// and every pixel becomes colours.Word(luma level, chroma value) in all variants; these read
    /// the table, the accelerated ones calculate.
    virtual void ConvertQuantized420(const QuantizedRectangle& area,
                                     QuantizedColours colours) const;
    virtual void ConvertQuantized422(const QuantizedRectangle& area,
                                     QuantizedColours colours) const;
    virtual void ConvertQuantized444(const QuantizedRectangle& area,
                                     QuantizedColours colours) const;

protected:
    ILogger* m_pLogger;
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
