#include "libimagedecoder/ImageDecoderIct.h"

#include "libimagedecoder/IctTileCursor.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"

#include <algorithm>
#include <utility>

namespace Vostrel::libimagedecoder {

using InverseTransform::InverseIct::IInverseIct;
using InverseTransform::InverseIct::InverseIctFactory;

/// One update on its way through the walk.
class ImageDecoderIct::Update {
public:
    Update(ImageDecoderIct& decoder, const UpdateRectangle& rectangle, const Variant& variant)
        : m_Decoder(decoder), m_Rectangle(rectangle), m_Variant(variant),
          m_uiLumaStride(rectangle.LumaStride()),
          m_uiChromaStride(m_uiLumaStride / decoder.m_uiChromaDivX) {}

    RecordLength ReadLength() { return {m_Decoder.ReadStreamBits(8), 8}; }

    void DecodeInPlace(const Macroblock& macroblock) {
        // Version 0 predicts from one macroblock to the next; later ones restart, so that each can
        // be decoded on its own.
        if (m_Decoder.m_uiProtocolVersion != 0)
            m_InPlacePredictors = {};
        Decode(m_Decoder, macroblock, m_Variant.m_Tiles, m_InPlacePredictors,
               m_Decoder.DrivingWorker());
    }

    UpdateJobs::Function Schedule(MacroblockJob& record) {
        return (this->*m_Variant.m_pSchedule)(record);
    }

    void Draw(const bool* skipMask) {
        const auto& planes = m_Decoder.m_apuiPlanes;
        ImageDecoderRenderer& renderer = *m_Decoder.m_pRenderer;
        (renderer.*m_Variant.m_pDraw)(m_Rectangle.m_uiX, m_Rectangle.m_uiY, m_Rectangle.m_uiWidth,
                                      m_Rectangle.m_uiHeight, m_uiLumaStride, m_uiChromaStride,
                                      planes[ComponentY].get(), planes[ComponentCb].get(),
                                      planes[ComponentCr].get(), skipMask);
    }

    UpdateJobs::Function ScheduleDecodeTile420(MacroblockJob& record) {
        return ScheduleDecodeTile4xx<IctTiles420>(record);
    }
    UpdateJobs::Function ScheduleDecodeTile422(MacroblockJob& record) {
        return ScheduleDecodeTile4xx<IctTiles422>(record);
    }
    UpdateJobs::Function ScheduleDecodeTile444(MacroblockJob& record) {
        return ScheduleDecodeTile4xx<IctTiles444>(record);
    }

private:
    // Two references fit into a std::function without an allocation.
    template <const auto& Tiles>
    UpdateJobs::Function ScheduleDecodeTile4xx(MacroblockJob& record) {
        return [this, &record](unsigned int worker) { DecodeJob(record, Tiles, worker); };
    }

    void DecodeJob(MacroblockJob& record, IctTiles tiles, unsigned int worker);
    void Decode(BitStreamReader& reader, const Macroblock& macroblock, IctTiles tiles,
                DcPredictors& predictors, unsigned int worker);
    uint8_t* Destination(const Macroblock& macroblock, const IctTile& tile) const;
    size_t Stride(IctComponent component) const {
        return component == ComponentY ? m_uiLumaStride : m_uiChromaStride;
    }

    ImageDecoderIct& m_Decoder;
    const UpdateRectangle& m_Rectangle;
    const Variant& m_Variant;
    size_t m_uiLumaStride;
    size_t m_uiChromaStride;
    DcPredictors m_InPlacePredictors{};
};

void ImageDecoderIct::Update::DecodeJob(MacroblockJob& record, IctTiles tiles,
                                        unsigned int worker) {
    m_Decoder.DecodeSegment(record, [&](BitStreamReader& reader) {
        DcPredictors predictors{};
        Decode(reader, record.m_Macroblock, tiles, predictors, worker);
    });
}

void ImageDecoderIct::Update::Decode(BitStreamReader& reader, const Macroblock& macroblock,
                                     IctTiles tiles, DcPredictors& predictors,
                                     unsigned int worker) {
    int16_t* const coefficients = &m_Decoder.m_piCoefficients[worker * TileCoefficients];
    IInverseIct& transform = *m_Decoder.m_pInverseIct;
    IctTileCursor cursor(reader);
    for (const IctTile& tile : tiles) {
        const IctComponent component = tile.m_Component;
        const IctTileTables tables = m_Decoder.GetTileTables(component);
        int& predictor = predictors[component];
        uint8_t* const destination = Destination(macroblock, tile);
        const auto outcome = cursor.DecodeTile(tables, predictor, coefficients);
        if (outcome == IctTileCursor::Outcome::Flat) {
            transform.TransformFlatTile(coefficients[0], destination, Stride(component));
            continue;
        }
        if (outcome == IctTileCursor::Outcome::Declined &&
            !m_Decoder.HuffmannDecodeReorderDequantTile(&reader, coefficients, &predictor,
                                                        m_Decoder.GetDequantTable(component).data(),
                                                        tables.m_pDc, tables.m_pAc))
            ThrowStreamError();
        transform.TransformTile(coefficients, destination, Stride(component));
    }
    cursor.GiveBack();
}

uint8_t* ImageDecoderIct::Update::Destination(const Macroblock& macroblock,
                                              const IctTile& tile) const {
    const bool luma = tile.m_Component == ComponentY;
    const size_t left = macroblock.m_uiLeft / (luma ? 1 : m_Decoder.m_uiChromaDivX);
    const size_t top = macroblock.m_uiTop / (luma ? 1 : m_Decoder.m_uiChromaDivY);
    return m_Decoder.m_apuiPlanes[tile.m_Component].get() +
           (top + tile.m_uiRow) * Stride(tile.m_Component) + left + tile.m_uiColumn;
}

ImageDecoderIct::ImageDecoderIct(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                 ILogger* logger, unsigned long threads,
                                 unsigned int protocolVersion, unsigned int chromaSubsampling)
    : ImageDecoderIct(renderer, stream, logger, threads, protocolVersion, chromaSubsampling,
                      InverseIctFactory::CreateInverseIct(logger, true)) {}

ImageDecoderIct::ImageDecoderIct(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                 ILogger* logger, unsigned long threads,
                                 unsigned int protocolVersion, unsigned int chromaSubsampling,
                                 std::shared_ptr<IInverseIct> inverseIct)
    : MacroblockDecoder(renderer, stream, logger, threads, protocolVersion, chromaSubsampling),
      m_pInverseIct(std::move(inverseIct)) {
    if (!m_pInverseIct)
        throw ImageDecoderException("No inverse transform could be created");
    CreateJobs(threads, "ICT");
    m_piCoefficients = AllocateAligned<int16_t>(WorkerCount() * TileCoefficients,
                                                m_pInverseIct->GetDataAlignmentBytes());
    HookUpTileIndexZigZagAndReorderTable();
    HookUpHuffDecodeTables();
}

IctTileTables ImageDecoderIct::GetTileTables(IctComponent component) const {
    return {component == ComponentY ? &m_LumaFastTables : &m_ChromaFastTables,
            GetDcTable(component).data(), GetAcTable(component).data()};
}

void ImageDecoderIct::SetResolution(unsigned short width, unsigned short height) {
    if (IsResolution(width, height))
        return;
    // Plane framebuffers of 4:2:0 read up to half as many chroma samples as there are luma samples.
    const size_t lumaSamples = PlaneSamples(width, height);
    const size_t chromaSamples = lumaSamples / m_uiChromaDivX;
    const size_t alignment = m_pRenderer->GetDataAlignmentBytes();
    std::array<AlignedArray<uint8_t>, ComponentCount> planes{
        AllocateAligned<uint8_t>(lumaSamples, alignment),
        AllocateAligned<uint8_t>(chromaSamples, alignment),
        AllocateAligned<uint8_t>(chromaSamples, alignment)};
    ResizeSegmentStore(width, height);
    m_apuiPlanes = std::move(planes);
    CommitResolution(width, height);
}

uint64_t ImageDecoderIct::HandleUpdateImplementation(unsigned int quality,
                                                     unsigned short /*reserved*/, unsigned short x,
                                                     unsigned short y, unsigned short width,
                                                     unsigned short height) {
    SetQuality(quality);
    const UpdateRectangle rectangle{x, y, width, height};
    switch (m_uiChromaSubsampling) {
    case 0:
        return HandleUpdateImplementation420(rectangle);
    case 1:
        return HandleUpdateImplementation422(rectangle);
    default:
        return HandleUpdateImplementation444(rectangle);
    }
}

uint64_t ImageDecoderIct::HandleUpdateImplementation420(const UpdateRectangle& rectangle) {
    return HandleUpdateImplementation4xx(rectangle, {IctTiles420, &Update::ScheduleDecodeTile420,
                                                     &ImageDecoderRenderer::DrawDataYCbCr420});
}

uint64_t ImageDecoderIct::HandleUpdateImplementation422(const UpdateRectangle& rectangle) {
    return HandleUpdateImplementation4xx(rectangle, {IctTiles422, &Update::ScheduleDecodeTile422,
                                                     &ImageDecoderRenderer::DrawDataYCbCr422});
}

uint64_t ImageDecoderIct::HandleUpdateImplementation444(const UpdateRectangle& rectangle) {
    return HandleUpdateImplementation4xx(rectangle, {IctTiles444, &Update::ScheduleDecodeTile444,
                                                     &ImageDecoderRenderer::DrawDataYCbCr444});
}

uint64_t ImageDecoderIct::HandleUpdateImplementation4xx(const UpdateRectangle& rectangle,
                                                        const Variant& variant) {
    Update update(*this, rectangle, variant);
    return DecodeMacroblocks(rectangle, update);
}

} // namespace Vostrel::libimagedecoder
