#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

/// AVX2 variant: no tables, fixed point with 13 fraction bits, floored. Channels can differ from
/// the portable variant's by one, green by two.
///
/// Thread safety: conversions only read shared data; any number may run at once.
class YCbCr4xxToArgb32Avx2 final : public IYCbCr4xxToArgb32 {
public:
    /// Announces the variant in the log. The processor must support AVX2.
    explicit YCbCr4xxToArgb32Avx2(ILogger* logger);
    ~YCbCr4xxToArgb32Avx2() override;

    std::uint16_t GetDataAlignmentBytes() const override;
    bool IsReentrant() const override;
    void Convert420(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override;
    void Convert422(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override;
    void Convert444(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override;
    void ConvertQuantized420(const QuantizedRectangle& area,
                             QuantizedColours colours) const override;
    void ConvertQuantized422(const QuantizedRectangle& area,
                             QuantizedColours colours) const override;
    void ConvertQuantized444(const QuantizedRectangle& area,
                             QuantizedColours colours) const override;
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
