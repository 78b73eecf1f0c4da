#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/QuantizedLevels.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"

namespace Vostrel::libimagedecoder {

using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::QuantizedColours;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Native;

std::mutex ImageDecoderRenderer::s_Mutex;
bool ImageDecoderRenderer::s_bQuantizedTransLutsCreated = false;
std::array<unsigned int, 1u << 8> ImageDecoderRenderer::s_lookupTable233;
std::array<unsigned int, 1u << 10> ImageDecoderRenderer::s_lookupTable244;
std::array<unsigned int, 1u << 9> ImageDecoderRenderer::s_lookupTable333;
std::array<unsigned int, 1u << 11> ImageDecoderRenderer::s_lookupTable344;
std::array<unsigned int, 1u << 10> ImageDecoderRenderer::s_lookupTable433;
std::array<unsigned int, 1u << 12> ImageDecoderRenderer::s_lookupTable444;
std::array<unsigned int, 1u << 13> ImageDecoderRenderer::s_lookupTable544;
std::array<unsigned int, 1u << 15> ImageDecoderRenderer::s_lookupTable555;
std::array<unsigned int, 1u << 14> ImageDecoderRenderer::s_lookupTable644;
std::array<unsigned int, 1u << 16> ImageDecoderRenderer::s_lookupTable655;

void ImageDecoderRenderer::FillQuantizedTransLut(unsigned char yBits,
                                                 const unsigned char* yExpansion,
                                                 unsigned char cBits,
                                                 const unsigned char* cExpansion,
                                                 unsigned int* table) {
    const size_t lumaLevels = size_t{1} << yBits;
    const size_t chromaValues = size_t{1} << 2 * cBits;
    const size_t chromaMask = (size_t{1} << cBits) - 1;
    for (size_t luma = 0; luma < lumaLevels; ++luma) {
        for (size_t chroma = 0; chroma < chromaValues; ++chroma)
            *table++ = YCbCr4xxToArgb32Native::ArgbWord(yExpansion[luma],
                                                        cExpansion[chroma >> cBits & chromaMask],
                                                        cExpansion[chroma & chromaMask]);
    }
}

void ImageDecoderRenderer::HookUpQuantizedTransLuts() {
    using Levels = QuantizedLevels;
    YCbCr4xxToArgb32Native::HookUpColorTransLuts();
    const auto fill = [](unsigned char yBits, const auto& yExpansion, unsigned char cBits,
                         const auto& cExpansion, auto& table) {
        FillQuantizedTransLut(yBits, yExpansion.data(), cBits, cExpansion.data(), table.data());
    };
    fill(2, Levels::s_auiLuma2, 3, Levels::s_auiChroma3, s_lookupTable233);
    fill(2, Levels::s_auiLuma2, 4, Levels::s_auiChroma4, s_lookupTable244);
    fill(3, Levels::s_auiLuma3, 3, Levels::s_auiChroma3, s_lookupTable333);
    fill(3, Levels::s_auiLuma3, 4, Levels::s_auiChroma4, s_lookupTable344);
    fill(4, Levels::s_auiLuma4, 3, Levels::s_auiChroma3, s_lookupTable433);
    fill(4, Levels::s_auiLuma4, 4, Levels::s_auiChroma4, s_lookupTable444);
    fill(5, Levels::s_auiLuma5, 4, Levels::s_auiChroma4, s_lookupTable544);
    fill(6, Levels::s_auiLuma6, 4, Levels::s_auiChroma4, s_lookupTable644);
    fill(5, Levels::s_auiLuma5, 5, Levels::s_auiChroma5, s_lookupTable555);
    fill(6, Levels::s_auiLuma6, 5, Levels::s_auiChroma5, s_lookupTable655);
}

void ImageDecoderRenderer::BuildQuantizedTablesOnce() {
    const std::lock_guard lock(s_Mutex);
    if (s_bQuantizedTransLutsCreated)
        return;
    HookUpQuantizedTransLuts();
    s_bQuantizedTransLutsCreated = true;
}

const unsigned int* ImageDecoderRenderer::GetQuantizedLookupTable(unsigned char uiYValueSizeBits,
                                                                  unsigned char uiCValueSizeBits) {
    /// The tables of one luma depth for chroma depths 3, 4 and 5; null where there is none.
    struct Row {
        const unsigned int* m_apTables[3];
    };
    static constexpr unsigned char LowestLumaDepth = 2;
    static constexpr unsigned char LowestChromaDepth = 3;
    static constexpr Row Rows[] = {
        {{s_lookupTable233.data(), s_lookupTable244.data(), nullptr}},
        {{s_lookupTable333.data(), s_lookupTable344.data(), nullptr}},
        {{s_lookupTable433.data(), s_lookupTable444.data(), nullptr}},
        {{nullptr, s_lookupTable544.data(), s_lookupTable555.data()}},
        {{nullptr, s_lookupTable644.data(), s_lookupTable655.data()}},
    };
    const size_t row = size_t{uiYValueSizeBits} - LowestLumaDepth;
    if (row >= std::size(Rows))
        throw ImageDecoderException("Invalid uiYValueSizeBits given to DrawDataYCbCrQuantized");
    const size_t column = size_t{uiCValueSizeBits} - LowestChromaDepth;
    if (column >= std::size(Rows[row].m_apTables) || Rows[row].m_apTables[column] == nullptr)
        throw ImageDecoderException("Invalid uiCValueSizeBits given to DrawDataYCbCrQuantized");
    return Rows[row].m_apTables[column];
}

template <size_t ChromaDivX, size_t ChromaDivY>
void ImageDecoderRenderer::DrawDataYCbCr4xxQuantized(const QuantizedPlanes& planes,
                                                     ConvertQuantizedFunction convert) {
    const UpdateRectangle& rectangle = planes.m_Rectangle;
    ApplyContrastEnhancement(rectangle.m_uiWidth, rectangle.m_uiHeight, planes.m_uiLumaStride,
                             planes.m_pucLuma, planes.m_uiLumaBits, planes.m_pbSkipMask);
    const QuantizedColours colours{
        planes.m_uiLumaBits, planes.m_uiChromaBits,
        GetQuantizedLookupTable(planes.m_uiLumaBits, planes.m_uiChromaBits)};
    if (m_puiFramebufferArgb == nullptr)
        return;
    const auto draw = [&](const ArgbRegion& region, const ArgbTarget& target) {
        (m_pConverter.get()->*convert)(
            {target.m_puiPixels,
             planes.m_pucLuma + region.m_uiRow * planes.m_uiLumaStride + region.m_uiColumn,
             planes.m_pusChroma + region.m_uiRow / ChromaDivY * planes.m_uiChromaStride +
                 region.m_uiColumn / ChromaDivX,
             region.m_uiWidth, region.m_uiHeight, target.m_uiStride, planes.m_uiLumaStride,
             planes.m_uiChromaStride, region.m_pbSkipMask},
            colours);
    };
    const ArgbDrawing drawing =
        PrepareArgbDrawing(rectangle, ChromaDivX, ChromaDivY, planes.m_pbSkipMask);
    ArgbRegions(drawing, draw).DrawAll();
}

void ImageDecoderRenderer::DrawDataYCbCr420Quantized(
    unsigned char uiYValueSizeBits, unsigned char uiCValueSizeBits, unsigned short x,
    unsigned short y, unsigned short width, unsigned short height, unsigned long lumaStride,
    unsigned long chromaStride, unsigned char* luma, unsigned short* chroma, const bool* skipMask) {
    DrawDataYCbCr4xxQuantized<2, 2>({{x, y, width, height},
                                     lumaStride,
                                     chromaStride,
                                     uiYValueSizeBits,
                                     uiCValueSizeBits,
                                     luma,
                                     chroma,
                                     skipMask},
                                    &IYCbCr4xxToArgb32::ConvertQuantized420);
}

void ImageDecoderRenderer::DrawDataYCbCr422Quantized(
    unsigned char uiYValueSizeBits, unsigned char uiCValueSizeBits, unsigned short x,
    unsigned short y, unsigned short width, unsigned short height, unsigned long lumaStride,
    unsigned long chromaStride, unsigned char* luma, unsigned short* chroma, const bool* skipMask) {
    DrawDataYCbCr4xxQuantized<2, 1>({{x, y, width, height},
                                     lumaStride,
                                     chromaStride,
                                     uiYValueSizeBits,
                                     uiCValueSizeBits,
                                     luma,
                                     chroma,
                                     skipMask},
                                    &IYCbCr4xxToArgb32::ConvertQuantized422);
}

void ImageDecoderRenderer::DrawDataYCbCr444Quantized(
    unsigned char uiYValueSizeBits, unsigned char uiCValueSizeBits, unsigned short x,
    unsigned short y, unsigned short width, unsigned short height, unsigned long lumaStride,
    unsigned long chromaStride, unsigned char* luma, unsigned short* chroma, const bool* skipMask) {
    DrawDataYCbCr4xxQuantized<1, 1>({{x, y, width, height},
                                     lumaStride,
                                     chromaStride,
                                     uiYValueSizeBits,
                                     uiCValueSizeBits,
                                     luma,
                                     chroma,
                                     skipMask},
                                    &IYCbCr4xxToArgb32::ConvertQuantized444);
}

} // namespace Vostrel::libimagedecoder
