#include "libimagedecoder/ImageDecoderLbe.h"

#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/LbePlaneCursor.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"

#include <cstring>
#include <emmintrin.h>
#include <utility>

namespace Vostrel::libimagedecoder {
namespace {

/// A row of chroma, or half of one.
constexpr size_t SamplesAtOnce = 8;

__m128i LoadBytes(const uint8_t* bytes) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
}

/// Joins the bytes of eight samples.
void StoreSamples(const uint8_t* low, __m128i high, uint16_t* samples) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(samples), _mm_unpacklo_epi8(LoadBytes(low), high));
}

constexpr size_t CacheLineBytes = 64;

/// Asks for memory that is about to be written: the rows of a block's samples, of which
/// blocksInLine lie side by side in a cache line. Each of these blocks asks for its share of the
/// rows, since a processor has few requests under way at once.
void PrefetchShare(const void* samples, size_t rowBytes, size_t rows, size_t blocksInLine,
                   size_t column) {
    const size_t share = rows / blocksInLine;
    const auto* row =
        static_cast<const uint8_t*>(samples) + column % blocksInLine * share * rowBytes;
    for (size_t i = 0; i < share; ++i, row += rowBytes)
        __builtin_prefetch(row, 1);
}

/// For what the fast path declines.
void DecodePlainly(BitStreamReader& reader, const LbePlaneFormat& format, LbePlaneBytes& plane) {
    LbePlaneBuffer buffer;
    DecodeLbePlane(reader, format, buffer);
    plane.Assign(buffer.Samples(), format.m_uiSamples);
}

} // namespace

/// One update.
class ImageDecoderLbe::Update {
public:
    class Source;

    Update(ImageDecoderLbe& decoder, const UpdateRectangle& rectangle, const LbeQuality& quality)
        : m_Decoder(decoder),
          m_Quality(quality), m_LumaFormat{decoder.m_lumaSamplesPerBlock, MacroblockEdge,
                                           quality.m_uiLumaBits, decoder.m_lumaRunCountBits},
          m_ChromaFormat{decoder.m_chromaSamplesPerBlock, MacroblockEdge / decoder.m_uiChromaDivX,
                         2u * quality.m_uiChromaBits, decoder.m_chromaRunCountBits},
          m_uiLumaStride(rectangle.LumaStride()),
          m_uiChromaStride(m_uiLumaStride / decoder.m_uiChromaDivX) {}

    void Draw(const DrawnRows& rows, const bool* skipMask) {
        const UpdateRectangle& rectangle = rows.m_Rectangle;
        const Macroblock first{0, rows.m_uiTop};
        ImageDecoderRenderer& renderer = *m_Decoder.m_pRenderer;
        (renderer.*m_Decoder.GetDrawFunction())(
            m_Quality.m_uiLumaBits, m_Quality.m_uiChromaBits, rectangle.m_uiX, rectangle.m_uiY,
            rectangle.m_uiWidth, rectangle.m_uiHeight, m_uiLumaStride, m_uiChromaStride,
            LumaOf(first), ChromaOf(first), skipMask);
    }

private:
    void PrefetchNext(const Macroblock& block) const;
    uint8_t* LumaOf(const Macroblock& block) const;
    uint16_t* ChromaOf(const Macroblock& block) const;
    void StoreLuma(const Macroblock& block, const LbePlaneBytes& plane);
    void StoreChroma(const Macroblock& block, const LbePlaneBytes& plane);

    ImageDecoderLbe& m_Decoder;
    const LbeQuality& m_Quality;
    LbePlaneFormat m_LumaFormat;
    LbePlaneFormat m_ChromaFormat;
    size_t m_uiLumaStride;
    size_t m_uiChromaStride;
};

/// Decodes the blocks of one bit reader into the decoder's planes.
class ImageDecoderLbe::Update::Source {
public:
    Source(Update& update, BitStreamReader& reader, size_t readableAfter, unsigned int /*worker*/)
        : m_Update(update), m_Reader(reader),
          m_Cursor(reader, update.m_Decoder.m_pPlaneKernel, readableAfter) {}

    StreamWindow& GetWindow() { return m_Cursor.GetWindow(); }

    void Decode(const Macroblock& block) {
        m_Update.PrefetchNext(block);
        LbePlaneBytes plane;
        DecodePlane(m_Update.m_LumaFormat, plane);
        m_Update.StoreLuma(block, plane);
        DecodePlane(m_Update.m_ChromaFormat, plane);
        m_Update.StoreChroma(block, plane);
    }

private:
    void DecodePlane(const LbePlaneFormat& format, LbePlaneBytes& plane) {
        if (!m_Cursor.DecodePlane(format, plane))
            DecodePlainly(m_Reader, format, plane);
    }

    Update& m_Update;
    BitStreamReader& m_Reader;
    LbePlaneCursor m_Cursor;
};

/// The planes of a whole screen have left the caches by the next update, and sixteen rows at once
/// are more than a processor recognises as streams. Takes 20 to 30 % off the decoding of a desktop
/// (LbeDesktop420Quality10).
void ImageDecoderLbe::Update::PrefetchNext(const Macroblock& block) const {
    constexpr size_t LumaBlocks = CacheLineBytes / MacroblockEdge;
    const Macroblock next{block.m_uiLeft + CacheLineBytes, block.m_uiTop};
    if (next.m_uiLeft >= m_uiLumaStride)
        return;
    const size_t column = block.m_uiLeft / MacroblockEdge;
    PrefetchShare(LumaOf(next), m_uiLumaStride, MacroblockEdge, LumaBlocks, column);
    PrefetchShare(ChromaOf(next), m_uiChromaStride * sizeof(uint16_t),
                  MacroblockEdge / m_Decoder.m_uiChromaDivY,
                  LumaBlocks / sizeof(uint16_t) * m_Decoder.m_uiChromaDivX, column);
}

uint8_t* ImageDecoderLbe::Update::LumaOf(const Macroblock& block) const {
    return m_Decoder.m_lumaPlane.get() + block.m_uiTop * m_uiLumaStride + block.m_uiLeft;
}

uint16_t* ImageDecoderLbe::Update::ChromaOf(const Macroblock& block) const {
    return m_Decoder.m_chromaPlane.get() +
           block.m_uiTop / m_Decoder.m_uiChromaDivY * m_uiChromaStride +
           block.m_uiLeft / m_Decoder.m_uiChromaDivX;
}

void ImageDecoderLbe::Update::StoreLuma(const Macroblock& block, const LbePlaneBytes& plane) {
    uint8_t* row = LumaOf(block);
    const uint8_t* samples = plane.Low();
    for (size_t line = 0; line < MacroblockEdge; ++line) {
        std::memcpy(row, samples, MacroblockEdge);
        samples += MacroblockEdge;
        row += m_uiLumaStride;
    }
}

void ImageDecoderLbe::Update::StoreChroma(const Macroblock& block, const LbePlaneBytes& plane) {
    const size_t columns = m_ChromaFormat.m_uiRowWidth;
    const bool hasHigh = LbePlaneBytes::HasHigh(m_ChromaFormat);
    uint16_t* row = ChromaOf(block);
    for (size_t sample = 0; sample < m_ChromaFormat.m_uiSamples; sample += columns) {
        for (size_t column = 0; column < columns; column += SamplesAtOnce) {
            const size_t first = sample + column;
            const __m128i high = hasHigh ? LoadBytes(plane.High() + first) : _mm_setzero_si128();
            StoreSamples(plane.Low() + first, high, row + column);
        }
        row += m_uiChromaStride;
    }
}

ImageDecoderLbe::ImageDecoderLbe(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                 ILogger* logger, unsigned long threadCount,
                                 unsigned int protocolVersion, unsigned int chromaSubsampling)
    : ImageDecoderLbe(renderer, stream, logger, threadCount, protocolVersion, chromaSubsampling,
                      LbePlaneKernelFactory::CreateLbePlaneKernel(logger, true)) {}

ImageDecoderLbe::ImageDecoderLbe(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                 ILogger* logger, unsigned long threadCount,
                                 unsigned int protocolVersion, unsigned int chromaSubsampling,
                                 LbePlaneKernel planeKernel)
    : MacroblockDecoder(renderer, stream, logger, protocolVersion, chromaSubsampling,
                        &UpdateRules::m_LbeLength),
      m_pPlaneKernel(planeKernel), m_chromaRunCountBits(GetRules().m_uiLbeChromaCountBits),
      m_qualityMask(GetRules().m_uiLbeQualityMask),
      m_chromaSamplesPerBlock(m_lumaSamplesPerBlock / m_uiChromaDivX / m_uiChromaDivY),
      m_Jobs(CreateJobs(threadCount, "LBE")) {}

void ImageDecoderLbe::SetResolution(unsigned short width, unsigned short height) {
    if (IsResolution(width, height))
        return;
    const size_t lumaSamples = PlaneSamples(width, height);
    const size_t chromaSamples = lumaSamples / m_uiChromaDivX / m_uiChromaDivY;
    const size_t alignment = m_pRenderer->GetDataAlignmentBytes();
    AlignedArray<uint8_t> lumaPlane = AllocateAligned<uint8_t>(lumaSamples, alignment);
    AlignedArray<uint16_t> chromaPlane = AllocateAligned<uint16_t>(chromaSamples, alignment);
    ResizeSegmentStore(width, height);
    m_lumaPlane = std::move(lumaPlane);
    m_chromaPlane = std::move(chromaPlane);
    CommitResolution(width, height);
}

uint64_t ImageDecoderLbe::HandleUpdateImplementation(unsigned int quality,
                                                     unsigned short /*reserved*/, unsigned short x,
                                                     unsigned short y, unsigned short width,
                                                     unsigned short height) {
    const uint32_t index = (quality & m_qualityMask) - LowestLbeQuality;
    if (index >= s_aLbeQualities.size())
        return ~uint64_t{0};
    const UpdateRectangle rectangle{x, y, width, height};
    Update update(*this, rectangle, s_aLbeQualities[index]);
    return DecodeMacroblocks(rectangle, update, m_Jobs, ScheduleDecodeTile(update));
}

UpdateJobs::DecodeRecord ImageDecoderLbe::ScheduleDecodeTile(Update& update) const {
    return RecordDecoderOf(update);
}

ImageDecoderLbe::DrawFunction ImageDecoderLbe::GetDrawFunction() const {
    switch (m_uiChromaSubsampling) {
    case 2:
        return &ImageDecoderRenderer::DrawDataYCbCr444Quantized;
    case 1:
        return &ImageDecoderRenderer::DrawDataYCbCr422Quantized;
    default:
        return &ImageDecoderRenderer::DrawDataYCbCr420Quantized;
    }
}

} // namespace Vostrel::libimagedecoder
