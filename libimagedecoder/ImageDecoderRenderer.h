#pragma once

#include "libimagedecoder/ArgbRegions.h"
#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

namespace Vostrel::libimagedecoder {

class ILogger;

/// The pixel sink of the decoders: takes the decoded planes of an update's rectangle and writes
/// them into the viewer's framebuffer, which is either one ARGB32 buffer or three separate planes.
///
/// In all drawing operations strides count samples, planes start at the rectangle's corner and hold
/// whole macroblocks (for plane framebuffers of the whole frame, those of the framebuffer's size),
/// and the skip mask has one entry per 16x16 macroblock in row order, the last
/// of a row included when the rectangle cuts it; a true entry leaves the macroblock's pixels alone.
/// Nothing is ever written outside the framebuffer's width x height.
///
/// Thread safety: setters are called between updates, and drawing happens on the thread that
/// decodes, except as CanDrawRowsApart says. The class-wide tables are built under a mutex and then
/// only read.
class ImageDecoderRenderer {
public:
    /// The logger is not owned and must outlive the renderer. Throws std::bad_alloc, or
    /// ImageDecoderException when no colour kernel can be created.
    explicit ImageDecoderRenderer(ILogger* logger);

    /// The same with a given colour kernel instead of the fastest one.
    explicit ImageDecoderRenderer(std::shared_ptr<YCbCr4xxToArgb32::IYCbCr4xxToArgb32> converter);

    virtual ~ImageDecoderRenderer() = default;
    ImageDecoderRenderer(const ImageDecoderRenderer&) = delete;
    ImageDecoderRenderer& operator=(const ImageDecoderRenderer&) = delete;

    /// Size of the framebuffer in pixels. rectangleRelative: the framebuffer holds only the
    /// update's rectangle, packed with the rectangle's width as stride, instead of the whole frame.
    virtual void SetFramebufferSize(unsigned short width, unsigned short height,
                                    bool rectangleRelative);

    /// Framebuffer memory, not owned; null means that there is none. An ARGB framebuffer holds
    /// width x height words of 4 bytes and takes precedence over planes. A Y plane holds
    /// width x height bytes; a chroma plane (width / divX) x (height / divY), divisions rounded
    /// down. In 4:2:0 it gets a row for every second row of luma, but none for the last row of an
    /// odd height.
    void SetFramebufferArgb(unsigned char* framebuffer);
    void SetFramebufferY(unsigned char* framebuffer) { m_pucFramebufferY = framebuffer; }
    void SetFramebufferCb(unsigned char* framebuffer) { m_pucFramebufferCb = framebuffer; }
    void SetFramebufferCr(unsigned char* framebuffer) { m_pucFramebufferCr = framebuffer; }

    /// Whether ARGB pixels are pulled back to the luma that was asked for after the conversion has
    /// clamped them. Off at first.
    void SetClientPostprocessingEnabled(bool enabled) { m_bClientPostprocessingEnabled = enabled; }

    /// Strength of the contrast stretch of luma, 0 (none) to 100; other levels are ignored.
    void SetContrastEnhance(int level);

    /// Alignment in bytes that suits the colour kernel: 8, 16 or 32.
    uint16_t GetDataAlignmentBytes() const { return m_pConverter->GetDataAlignmentBytes(); }

    /// Whether it is all the same if a rectangle is drawn at once or as several rectangles of whole
    /// macroblock rows, which different threads may then draw at the same time. That takes an ARGB
    /// framebuffer of the whole frame, and accelerated conversions.
    bool CanDrawRowsApart(const UpdateRectangle& rectangle) const;

    /// Full-depth drawing. An ARGB framebuffer gets the converted pixels, their luma stretched in
    /// place first; three plane framebuffers get the samples as they are. May throw std::bad_alloc.
    void DrawDataYCbCr420(unsigned short x, unsigned short y, unsigned short width,
                          unsigned short height, unsigned long lumaStride,
                          unsigned long chromaStride, unsigned char* luma, unsigned char* cb,
                          unsigned char* cr, const bool* skipMask);
    void DrawDataYCbCr422(unsigned short x, unsigned short y, unsigned short width,
                          unsigned short height, unsigned long lumaStride,
                          unsigned long chromaStride, unsigned char* luma, unsigned char* cb,
                          unsigned char* cr, const bool* skipMask);
    void DrawDataYCbCr444(unsigned short x, unsigned short y, unsigned short width,
                          unsigned short height, unsigned long lumaStride,
                          unsigned long chromaStride, unsigned char* luma, unsigned char* cb,
                          unsigned char* cr, const bool* skipMask);

    /// Reduced-depth drawing into the ARGB framebuffer: one luma level of uiYValueSizeBits bits per
    /// pixel, one value per chroma position with the Cb level in its upper and the Cr level in its
    /// lower uiCValueSizeBits bits. Luma levels are stretched in place first. Throws
    /// ImageDecoderException for a pair of depths that has no colour table.
    void DrawDataYCbCr420Quantized(unsigned char uiYValueSizeBits, unsigned char uiCValueSizeBits,
                                   unsigned short x, unsigned short y, unsigned short width,
                                   unsigned short height, unsigned long lumaStride,
                                   unsigned long chromaStride, unsigned char* luma,
                                   unsigned short* chroma, const bool* skipMask);
    void DrawDataYCbCr422Quantized(unsigned char uiYValueSizeBits, unsigned char uiCValueSizeBits,
                                   unsigned short x, unsigned short y, unsigned short width,
                                   unsigned short height, unsigned long lumaStride,
                                   unsigned long chromaStride, unsigned char* luma,
                                   unsigned short* chroma, const bool* skipMask);
    void DrawDataYCbCr444Quantized(unsigned char uiYValueSizeBits, unsigned char uiCValueSizeBits,
                                   unsigned short x, unsigned short y, unsigned short width,
                                   unsigned short height, unsigned long lumaStride,
                                   unsigned long chromaStride, unsigned char* luma,
                                   unsigned short* chroma, const bool* skipMask);

    /// Stretches a rectangle of luma samples of valueSizeBits bits in place. Depths other than 8,
    /// 6, 5, 4, 3 and 2 are left alone.
    void ApplyContrastEnhancement(unsigned short width, unsigned short height, unsigned long stride,
                                  unsigned char* luma, unsigned char valueSizeBits,
                                  const bool* skipMask);

    /// The ARGB words of every luma level and chroma value of the given depths, indexed by
    /// (luma level << 2 * chroma depth) + chroma value. Throws ImageDecoderException.
    static const unsigned int* GetQuantizedLookupTable(unsigned char uiYValueSizeBits,
                                                       unsigned char uiCValueSizeBits);

    /// Fills one such table from the 8-bit samples that the levels stand for.
    static void FillQuantizedTransLut(unsigned char yBits, const unsigned char* yExpansion,
                                      unsigned char cBits, const unsigned char* cExpansion,
                                      unsigned int* table);

    /// Builds all of them.
    static void HookUpQuantizedTransLuts();

    /// The contrast table of a depth, 2^valueSizeBits entries; null for a depth that has none.
    const unsigned char* GetContrastLut(unsigned char valueSizeBits) const;
    int GetContrastEnhance() const { return m_iContrastEnhance; }

private:
    /// The decoded planes of one update.
    struct Planes {
        UpdateRectangle m_Rectangle;
        size_t m_uiLumaStride;
        size_t m_uiChromaStride;
        unsigned char* m_pucY;
        unsigned char* m_pucCb;
        unsigned char* m_pucCr;
        const bool* m_pbSkipMask;
    };

    /// The decoded levels of one reduced-depth update.
    struct QuantizedPlanes {
        UpdateRectangle m_Rectangle;
        size_t m_uiLumaStride;
        size_t m_uiChromaStride;
        unsigned char m_uiLumaBits;
        unsigned char m_uiChromaBits;
        unsigned char* m_pucLuma;
        unsigned short* m_pusChroma;
        const bool* m_pbSkipMask;
    };

    using ConvertFunction = void (YCbCr4xxToArgb32::IYCbCr4xxToArgb32::*)(
        uint32_t*, const uint8_t*, const uint8_t*, const uint8_t*, unsigned short, unsigned short,
        unsigned long, unsigned long, unsigned long, const bool*) const;
    using ConvertQuantizedFunction = void (YCbCr4xxToArgb32::IYCbCr4xxToArgb32::*)(
        const YCbCr4xxToArgb32::QuantizedRectangle&, YCbCr4xxToArgb32::QuantizedColours) const;
    using FinalizeFunction = void (ImageDecoderRenderer::*)(const Planes&);

    void DrawDataYCbCr4xx(const Planes& planes, FinalizeFunction finalizeArgb,
                          FinalizeFunction finalizeYCbCr);

    void FinalizeArgb420(const Planes& planes);
    void FinalizeArgb422(const Planes& planes);
    void FinalizeArgb444(const Planes& planes);
    template <size_t ChromaDivX, size_t ChromaDivY>
    void FinalizeArgb4xx(const Planes& planes, ConvertFunction convert);

    void FinalizeYCbCr420(const Planes& planes);
    void FinalizeYCbCr422(const Planes& planes);
    void FinalizeYCbCr444(const Planes& planes);
    template <size_t ChromaDivX, size_t ChromaDivY>
    void FinalizeYCbCr4xx(const Planes& planes);

    template <size_t ChromaDivX, size_t ChromaDivY>
    void DrawDataYCbCr4xxQuantized(const QuantizedPlanes& planes, ConvertQuantizedFunction convert);

    void AdjustRgb(const ArgbTarget& target, const ArgbRegion& region, size_t lumaStride,
                   const unsigned char* luma) const;

    /// Where a rectangle lies in a framebuffer, in pixels.
    struct Placement {
        size_t m_uiOffset = 0; ///< from the framebuffer's first pixel to the rectangle's corner
        size_t m_uiStride = 0;
        size_t m_uiVisibleWidth = 0;  ///< from the corner to the framebuffer's right edge
        size_t m_uiVisibleHeight = 0; ///< and to its bottom edge
    };

    Placement PlaceInFramebuffer(const UpdateRectangle& rectangle) const;
    ArgbDrawing PrepareArgbDrawing(const UpdateRectangle& rectangle, size_t chromaDivX,
                                   size_t chromaDivY, const bool* skipMask) const;

    static void BuildQuantizedTablesOnce();

    std::shared_ptr<YCbCr4xxToArgb32::IYCbCr4xxToArgb32> m_pConverter;
    uint16_t m_usFramebufferWidth = 0;
    uint16_t m_usFramebufferHeight = 0;
    bool m_bRectangleRelative = false;
    uint32_t* m_puiFramebufferArgb = nullptr;
    unsigned char* m_pucFramebufferY = nullptr;
    unsigned char* m_pucFramebufferCb = nullptr;
    unsigned char* m_pucFramebufferCr = nullptr;

    int m_iContrastEnhance = -1;
    std::array<unsigned char, 256> m_aucContrastLut8{};
    std::array<unsigned char, 64> m_aucContrastLut6{};
    std::array<unsigned char, 32> m_aucContrastLut5{};
    std::array<unsigned char, 16> m_aucContrastLut4{};
    std::array<unsigned char, 8> m_aucContrastLut3{};
    std::array<unsigned char, 4> m_aucContrastLut2{};

    bool m_bClientPostprocessingEnabled = false;

    static std::mutex s_Mutex;
    static bool s_bQuantizedTransLutsCreated;
    // Named after the depths of luma, Cb and Cr.
    static std::array<unsigned int, 1u << 8> s_lookupTable233;
    static std::array<unsigned int, 1u << 10> s_lookupTable244;
    static std::array<unsigned int, 1u << 9> s_lookupTable333;
    static std::array<unsigned int, 1u << 11> s_lookupTable344;
    static std::array<unsigned int, 1u << 10> s_lookupTable433;
    static std::array<unsigned int, 1u << 12> s_lookupTable444;
    static std::array<unsigned int, 1u << 13> s_lookupTable544;
    static std::array<unsigned int, 1u << 15> s_lookupTable555;
    static std::array<unsigned int, 1u << 14> s_lookupTable644;
    static std::array<unsigned int, 1u << 16> s_lookupTable655;
};

} // namespace Vostrel::libimagedecoder
