#include "libimagedecoder/ImageDecoderIct.h"

#include "libimagedecoder/IctTileCursor.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Vostrel::libimagedecoder {

using InverseTransform::InverseIct::FlatTileSample;
using InverseTransform::InverseIct::IInverseIct;
using InverseTransform::InverseIct::InverseIctFactory;

namespace {

template <size_t Width, size_t Height>
void FillSamples(uint8_t* samples, size_t stride, uint8_t value) {
    for (size_t row = 0; row < Height; ++row)
        std::memset(samples + row * stride, value, Width);
}

} // namespace

/// The tiles of one bit reader: those of an update, or of a job's macroblock.
struct ImageDecoderIct::TileSource {
    /// A constructor, since g++ 12 clears all of an aggregate first, scratch memory included
    /// (bench/compare, row 12: 10 ns a macroblock).
    TileSource(BitStreamReader& reader, size_t readableBehind, int16_t* coefficients)
        : m_Reader(reader), m_Cursor(reader, readableBehind), m_piCoefficients(coefficients) {}

    BitStreamReader& m_Reader;
    IctTileCursor m_Cursor;
    int16_t* m_piCoefficients; ///< scratch of the worker
    DcPredictors m_Predictors{};
};

/// One update on its way through the walk.
class ImageDecoderIct::Update {
public:
    Update(ImageDecoderIct& decoder, const UpdateRectangle& rectangle, const Variant& variant)
        : m_Decoder(decoder), m_Variant(variant), m_aTables{decoder.GetTileTables(ComponentY),
                                                            decoder.GetTileTables(ComponentCb),
                                                            decoder.GetTileTables(ComponentCr)},
          m_uiLumaStride(rectangle.LumaStride()),
          m_uiChromaStride(m_uiLumaStride / decoder.m_uiChromaDivX),
          m_InPlace(decoder, 0, decoder.CoefficientsOf(decoder.DrivingWorker())) {}

    uint32_t ReadBits(unsigned int n) { return m_InPlace.m_Cursor.ReadBits(n); }
    template <class Read>
    static RecordLength ReadLength(Read read) {
        return {read(8), 8};
    }
    void GiveBack() { m_InPlace.m_Cursor.GiveBack(); }

    void DecodeInPlace(const Macroblock& macroblock) {
        // Version 0 predicts from one macroblock to the next; later ones restart, so that each can
        // be decoded on its own.
        if (m_Decoder.m_uiProtocolVersion != 0)
            m_InPlace.m_Predictors = {};
        (this->*m_Variant.m_pDecode)(m_InPlace, macroblock);
    }

    UpdateJobs::Function Schedule(MacroblockBatch& batch) {
        return (this->*m_Variant.m_pSchedule)(batch);
    }

    void Draw(const DrawnRows& rows, const bool* skipMask) {
        const UpdateRectangle& rectangle = rows.m_Rectangle;
        const size_t chromaTop = rows.m_uiTop / m_Decoder.m_uiChromaDivY;
        ImageDecoderRenderer& renderer = *m_Decoder.m_pRenderer;
        (renderer.*m_Variant.m_pDraw)(
            rectangle.m_uiX, rectangle.m_uiY, rectangle.m_uiWidth, rectangle.m_uiHeight,
            m_uiLumaStride, m_uiChromaStride, SamplesAt(ComponentY, 0, rows.m_uiTop),
            SamplesAt(ComponentCb, 0, chromaTop), SamplesAt(ComponentCr, 0, chromaTop), skipMask);
    }

    template <class Chroma>
    void DecodeMacroblock(TileSource& source, const Macroblock& macroblock);

    UpdateJobs::Function ScheduleDecodeTile420(MacroblockBatch& batch) {
        return ScheduleDecodeTile4xx<IctChroma420>(batch);
    }
    UpdateJobs::Function ScheduleDecodeTile422(MacroblockBatch& batch) {
        return ScheduleDecodeTile4xx<IctChroma422>(batch);
    }
    UpdateJobs::Function ScheduleDecodeTile444(MacroblockBatch& batch) {
        return ScheduleDecodeTile4xx<IctChroma444>(batch);
    }

private:
    // Two references fit into a std::function without an allocation.
    template <class Chroma>
    UpdateJobs::Function ScheduleDecodeTile4xx(MacroblockBatch& batch) {
        return [this, &batch](unsigned int worker) {
            m_Decoder.DecodeSegments(batch, [&](BitStreamReader& reader,
                                                const Macroblock& macroblock) {
                TileSource source(reader, SegmentReadableBytes, m_Decoder.CoefficientsOf(worker));
                DecodeMacroblock<Chroma>(source, macroblock);
            });
        };
    }

    /// Calls visit.operator()<Width, Height>(component, left, top) for the areas of a macroblock,
    /// in the order in which they are coded, with their places in samples.
    template <class Chroma, class Visit>
    static void ForEachArea(const Macroblock& macroblock, Visit visit);

    template <size_t Width, size_t Height>
    void DecodeArea(TileSource& source, IctComponent component, size_t left, size_t top);
    template <size_t Width, size_t Height>
    void FillArea(IctComponent component, size_t left, size_t top, int16_t dc);
    uint8_t* SamplesAt(IctComponent component, size_t left, size_t top) const {
        return m_Decoder.m_apuiPlanes[component].get() + top * StrideOf(component) + left;
    }
    size_t StrideOf(IctComponent component) const {
        return component == ComponentY ? m_uiLumaStride : m_uiChromaStride;
    }

    void DecodeTile(TileSource& source, IctComponent component, uint8_t* samples, size_t stride);
    void FinishTile(TileSource& source, IctComponent component, IctTileCursor::Outcome outcome,
                    uint8_t* samples, size_t stride);

    ImageDecoderIct& m_Decoder;
    const Variant& m_Variant;
    std::array<IctTileTables, ComponentCount> m_aTables;
    size_t m_uiLumaStride;
    size_t m_uiChromaStride;
    TileSource m_InPlace;
};

/// In most screens, most areas are plain: then all tiles behind the first repeat it, and whole
/// macroblocks repeat each other (bench IctConsole*, IctDesktop*, level 0).
template <class Chroma>
void ImageDecoderIct::Update::DecodeMacroblock(TileSource& source, const Macroblock& macroblock) {
    if (source.m_Cursor.SkipRepeats(m_Decoder.m_RepeatedMacroblock)) {
        ForEachArea<Chroma>(macroblock, [&]<size_t Width, size_t Height>(IctComponent component,
                                                                         size_t left, size_t top) {
            const int16_t dc =
                m_aTables[component].m_pFast->DequantiseDc(source.m_Predictors[component]);
            FillArea<Width, Height>(component, left, top, dc);
        });
        return;
    }
    ForEachArea<Chroma>(macroblock, [&]<size_t Width, size_t Height>(IctComponent component,
                                                                     size_t left, size_t top) {
        DecodeArea<Width, Height>(source, component, left, top);
    });
}

template <class Chroma, class Visit>
void ImageDecoderIct::Update::ForEachArea(const Macroblock& macroblock, Visit visit) {
    visit.template operator()<MacroblockEdge, MacroblockEdge>(ComponentY, macroblock.m_uiLeft,
                                                              macroblock.m_uiTop);
    for (const IctComponent component : {ComponentCb, ComponentCr})
        visit.template operator()<Chroma::Width, Chroma::Height>(
            component, macroblock.m_uiLeft / Chroma::DivX, macroblock.m_uiTop / Chroma::DivY);
}

template <size_t Width, size_t Height>
void ImageDecoderIct::Update::FillArea(IctComponent component, size_t left, size_t top,
                                       int16_t dc) {
    FillSamples<Width, Height>(SamplesAt(component, left, top), StrideOf(component),
                               FlatTileSample(dc));
}

/// Decodes the tiles of a macroblock in one plane, in row order.
template <size_t Width, size_t Height>
void ImageDecoderIct::Update::DecodeArea(TileSource& source, IctComponent component, size_t left,
                                         size_t top) {
    constexpr size_t Tiles = Width * Height / TileCoefficients;
    const size_t stride = StrideOf(component);
    uint8_t* const area = SamplesAt(component, left, top);

    const auto first = source.m_Cursor.DecodeTile(
        m_aTables[component], source.m_Predictors[component], source.m_piCoefficients);
    if (Tiles > 1 && first == IctTileCursor::Outcome::Flat &&
        source.m_Cursor.SkipRepeats(m_Decoder.m_aRepeatedRests[component])) {
        FillArea<Width, Height>(component, left, top, source.m_piCoefficients[0]);
        return;
    }
    FinishTile(source, component, first, area, stride);
    for (size_t tile = 1; tile < Tiles; ++tile) {
        constexpr size_t TilesAcross = Width / TileEdge;
        DecodeTile(source, component,
                   area + tile / TilesAcross * TileEdge * stride + tile % TilesAcross * TileEdge,
                   stride);
    }
}

void ImageDecoderIct::Update::DecodeTile(TileSource& source, IctComponent component,
                                         uint8_t* samples, size_t stride) {
    const auto outcome = source.m_Cursor.DecodeTile(
        m_aTables[component], source.m_Predictors[component], source.m_piCoefficients);
    FinishTile(source, component, outcome, samples, stride);
}

/// Turns what the cursor made of a tile into samples.
void ImageDecoderIct::Update::FinishTile(TileSource& source, IctComponent component,
                                         IctTileCursor::Outcome outcome, uint8_t* samples,
                                         size_t stride) {
    int16_t* const coefficients = source.m_piCoefficients;
    switch (outcome) {
    case IctTileCursor::Outcome::Flat:
        FillSamples<TileEdge, TileEdge>(samples, stride, FlatTileSample(coefficients[0]));
        return;
    case IctTileCursor::Outcome::Low:
        m_Decoder.m_pInverseIct->TransformLowTile(coefficients, samples, stride);
        return;
    case IctTileCursor::Outcome::Declined:
        if (!m_Decoder.HuffmannDecodeReorderDequantTile(
                &source.m_Reader, coefficients, &source.m_Predictors[component],
                m_Decoder.GetDequantTable(component).data(), m_aTables[component].m_pDc,
                m_aTables[component].m_pAc))
            ThrowStreamError();
        break;
    case IctTileCursor::Outcome::Full:
        break;
    }
    m_Decoder.m_pInverseIct->TransformTile(coefficients, samples, stride);
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
    // Aligned to its own size, a worker's block shares no cache line with another's: shared lines
    // took a quarter of the time of two workers (bench/compare, row 12).
    constexpr size_t BlockBytes = TileCoefficients * sizeof(int16_t);
    m_piCoefficients = AllocateAligned<int16_t>(
        WorkerCount() * TileCoefficients,
        std::max<size_t>(BlockBytes, m_pInverseIct->GetDataAlignmentBytes()));
    HookUpTileIndexZigZagAndReorderTable();
    HookUpHuffDecodeTables();
    HookUpRepeatedTiles();
}

void ImageDecoderIct::HookUpRepeatedTiles() {
    const size_t chromaTiles = size_t{1} << m_uiChromaSubsampling;
    m_RepeatedMacroblock =
        RepeatedTiles().Then(m_LumaFastTables, LumaTiles).Then(m_ChromaFastTables, 2 * chromaTiles);
    m_aRepeatedRests[ComponentY] = RepeatedTiles().Then(m_LumaFastTables, LumaTiles - 1);
    m_aRepeatedRests[ComponentCb] = m_aRepeatedRests[ComponentCr] =
        RepeatedTiles().Then(m_ChromaFastTables, chromaTiles - 1);
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
    return HandleUpdateImplementation4xx(rectangle, {&Update::DecodeMacroblock<IctChroma420>,
                                                     &Update::ScheduleDecodeTile420,
                                                     &ImageDecoderRenderer::DrawDataYCbCr420});
}

uint64_t ImageDecoderIct::HandleUpdateImplementation422(const UpdateRectangle& rectangle) {
    return HandleUpdateImplementation4xx(rectangle, {&Update::DecodeMacroblock<IctChroma422>,
                                                     &Update::ScheduleDecodeTile422,
                                                     &ImageDecoderRenderer::DrawDataYCbCr422});
}

uint64_t ImageDecoderIct::HandleUpdateImplementation444(const UpdateRectangle& rectangle) {
    return HandleUpdateImplementation4xx(rectangle, {&Update::DecodeMacroblock<IctChroma444>,
                                                     &Update::ScheduleDecodeTile444,
                                                     &ImageDecoderRenderer::DrawDataYCbCr444});
}

uint64_t ImageDecoderIct::HandleUpdateImplementation4xx(const UpdateRectangle& rectangle,
                                                        const Variant& variant) {
    Update update(*this, rectangle, variant);
    return DecodeMacroblocks(rectangle, update);
}

} // namespace Vostrel::libimagedecoder
