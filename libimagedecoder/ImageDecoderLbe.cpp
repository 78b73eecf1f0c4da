#include "libimagedecoder/ImageDecoderLbe.h"

#include "libimagedecoder/ImageDecoderRenderer.h"

#include <algorithm>
#include <utility>

namespace Vostrel::libimagedecoder {
namespace {

constexpr uint32_t LongLengthBits = 10;
constexpr uint32_t ShortLengthBits = 7;

} // namespace

/// One update on its way through the walk.
class ImageDecoderLbe::Update {
public:
    Update(ImageDecoderLbe& decoder, const UpdateRectangle& rectangle, const LbeQuality& quality)
        : m_Decoder(decoder), m_Rectangle(rectangle), m_Quality(quality),
          m_uiLumaStride(rectangle.LumaStride()),
          m_uiChromaStride(m_uiLumaStride / decoder.m_uiChromaDivX) {}

    RecordLength ReadLength() {
        const uint32_t bits = m_Decoder.ReadStreamBit() != 0 ? LongLengthBits : ShortLengthBits;
        return {m_Decoder.ReadStreamBits(bits), 1 + bits};
    }

    void DecodeInPlace(const Macroblock& block) { Decode(m_Decoder, block); }

    UpdateJobs::Function Schedule(MacroblockJob& record) { return ScheduleDecodeTile(record); }

    void Draw(const bool* skipMask) {
        ImageDecoderRenderer& renderer = *m_Decoder.m_pRenderer;
        (renderer.*m_Decoder.GetDrawFunction())(
            m_Quality.m_uiLumaBits, m_Quality.m_uiChromaBits, m_Rectangle.m_uiX, m_Rectangle.m_uiY,
            m_Rectangle.m_uiWidth, m_Rectangle.m_uiHeight, m_uiLumaStride, m_uiChromaStride,
            m_Decoder.m_lumaPlane.get(), m_Decoder.m_chromaPlane.get(), skipMask);
    }

private:
    // Two references fit into a std::function without an allocation.
    UpdateJobs::Function ScheduleDecodeTile(MacroblockJob& record) {
        return [this, &record](unsigned int /*worker*/) {
            m_Decoder.DecodeSegment(
                record, [&](BitStreamReader& reader) { Decode(reader, record.m_Macroblock); });
        };
    }

    void Decode(BitStreamReader& reader, const Macroblock& block);
    void StoreLuma(const Macroblock& block, const uint16_t* samples);
    void StoreChroma(const Macroblock& block, const uint16_t* samples);

    ImageDecoderLbe& m_Decoder;
    const UpdateRectangle& m_Rectangle;
    const LbeQuality& m_Quality;
    size_t m_uiLumaStride;
    size_t m_uiChromaStride;
};

void ImageDecoderLbe::Update::Decode(BitStreamReader& reader, const Macroblock& block) {
    LbePlaneBuffer buffer;
    DecodeLbePlane(reader,
                   {m_Decoder.m_lumaSamplesPerBlock, MacroblockEdge, m_Quality.m_uiLumaBits,
                    m_Decoder.m_lumaRunCountBits},
                   buffer);
    StoreLuma(block, buffer.Samples());
    DecodeLbePlane(reader,
                   {m_Decoder.m_chromaSamplesPerBlock, MacroblockEdge / m_Decoder.m_uiChromaDivX,
                    2u * m_Quality.m_uiChromaBits, m_Decoder.m_chromaRunCountBits},
                   buffer);
    StoreChroma(block, buffer.Samples());
}

void ImageDecoderLbe::Update::StoreLuma(const Macroblock& block, const uint16_t* samples) {
    uint8_t* row = &m_Decoder.m_lumaPlane[block.m_uiTop * m_uiLumaStride + block.m_uiLeft];
    for (size_t line = 0; line < MacroblockEdge; ++line) {
        std::transform(samples, samples + MacroblockEdge, row,
                       [](uint16_t sample) { return static_cast<uint8_t>(sample); });
        samples += MacroblockEdge;
        row += m_uiLumaStride;
    }
}

void ImageDecoderLbe::Update::StoreChroma(const Macroblock& block, const uint16_t* samples) {
    const size_t columns = MacroblockEdge / m_Decoder.m_uiChromaDivX;
    const size_t lines = MacroblockEdge / m_Decoder.m_uiChromaDivY;
    uint16_t* row =
        &m_Decoder.m_chromaPlane[block.m_uiTop / m_Decoder.m_uiChromaDivY * m_uiChromaStride +
                                 block.m_uiLeft / m_Decoder.m_uiChromaDivX];
    for (size_t line = 0; line < lines; ++line) {
        std::copy_n(samples, columns, row);
        samples += columns;
        row += m_uiChromaStride;
    }
}

ImageDecoderLbe::ImageDecoderLbe(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                 ILogger* logger, unsigned long threadCount,
                                 unsigned int protocolVersion, unsigned int chromaSubsampling)
    : MacroblockDecoder(renderer, stream, logger, threadCount, protocolVersion, chromaSubsampling),
      m_chromaRunCountBits(protocolVersion != 0 ? 8 : 6),
      m_qualityMask(protocolVersion != 0 ? 15 : 7),
      m_chromaSamplesPerBlock(m_lumaSamplesPerBlock / m_uiChromaDivX / m_uiChromaDivY) {
    CreateJobs(threadCount, "LBE");
}

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
    return DecodeMacroblocks(rectangle, update);
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
