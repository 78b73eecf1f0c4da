#pragma once

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"
#include "libimagedecoder/YCbCr4xxToArgb32/Rectangle.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

/// The conversions of an instruction set.
struct AcceleratedConversions {
    using Convert = void (*)(Rectangle);
    using ConvertQuantized = void (*)(const QuantizedRectangle&, const QuantizedColours&);

    Convert m_p420;
    Convert m_p422;
    Convert m_p444;
    ConvertQuantized m_pQuantized420;
    ConvertQuantized m_pQuantized422;
    ConvertQuantized m_pQuantized444;
};

/// Variant for an instruction set, whose own source file defines s_Conversions: no tables, fixed
/// point with 13 fraction bits, floored. Channels can differ from the portable variant's by one,
/// green by two.
///
/// Thread safety: conversions only read shared data; any number may run at once.
template <typename Set>
class YCbCr4xxToArgb32Accelerated final : public IYCbCr4xxToArgb32 {
public:
    /// Announces the variant in the log. Conversions need a processor with the instruction set.
    explicit YCbCr4xxToArgb32Accelerated(ILogger* logger) : IYCbCr4xxToArgb32(logger) {
        m_pLogger->Log("YCbCr420 to ARGB conversion is %s accelerated.", Set::Name);
    }

    std::uint16_t GetDataAlignmentBytes() const override { return Set::RegisterBytes; }
    bool IsReentrant() const override { return true; }

    void Convert420(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override {
        s_Conversions.m_p420({destination, luma, cb, cr, width, height, destinationStride,
                              lumaStride, chromaStride, skipMask});
    }
    void Convert422(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override {
        s_Conversions.m_p422({destination, luma, cb, cr, width, height, destinationStride,
                              lumaStride, chromaStride, skipMask});
    }
    void Convert444(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override {
        s_Conversions.m_p444({destination, luma, cb, cr, width, height, destinationStride,
                              lumaStride, chromaStride, skipMask});
    }

    void ConvertQuantized420(const QuantizedRectangle& area,
                             QuantizedColours colours) const override {
        s_Conversions.m_pQuantized420(area, colours);
    }
    void ConvertQuantized422(const QuantizedRectangle& area,
                             QuantizedColours colours) const override {
        s_Conversions.m_pQuantized422(area, colours);
    }
    void ConvertQuantized444(const QuantizedRectangle& area,
                             QuantizedColours colours) const override {
        s_Conversions.m_pQuantized444(area, colours);
    }

private:
    static const AcceleratedConversions s_Conversions;
};

using YCbCr4xxToArgb32Sse2 = YCbCr4xxToArgb32Accelerated<InstructionSet::Sse2>;
using YCbCr4xxToArgb32Avx2 = YCbCr4xxToArgb32Accelerated<InstructionSet::Avx2>;

template <>
const AcceleratedConversions YCbCr4xxToArgb32Sse2::s_Conversions;
template <>
const AcceleratedConversions YCbCr4xxToArgb32Avx2::s_Conversions;

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
