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

std::shared_ptr<IInverseIct> Checked(std::shared_ptr<IInverseIct> inverseIct) {
    if (!inverseIct)
        throw ImageDecoderException("No inverse transform could be created");
    return inverseIct;
}

template <class Chroma>
constexpr auto DrawData = &ImageDecoderRenderer::DrawDataYCbCr444;
template <>
constexpr auto DrawData<IctChroma422> = &ImageDecoderRenderer::DrawDataYCbCr422;
template <>
constexpr auto DrawData<IctChroma420> = &ImageDecoderRenderer::DrawDataYCbCr420;

} // namespace

/// One update. Chroma is one of the geometries of IctTiles.h.
template <class Chroma>
class ImageDecoderIct::Update {
public:
    class Source;

    Update(ImageDecoderIct& decoder, const UpdateRectangle& rectangle)
        : m_Decoder(decoder), m_aTables{decoder.GetTileTables(ComponentY),
                                        decoder.GetTileTables(ComponentCb),
                                        decoder.GetTileTables(ComponentCr)},
          m_uiLumaStride(rectangle.LumaStride()), m_uiChromaStride(m_uiLumaStride / Chroma::DivX) {}

    void Draw(const DrawnRows& rows, const bool* skipMask) {
        const UpdateRectangle& rectangle = rows.m_Rectangle;
        const size_t chromaTop = rows.m_uiTop / Chroma::DivY;
        (m_Decoder.m_pRenderer->*DrawData<Chroma>)(rectangle.m_uiX, rectangle.m_uiY,
                                                   rectangle.m_uiWidth, rectangle.m_uiHeight,
                                                   m_uiLumaStride, m_uiChromaStride,
                                                   SamplesAt(ComponentY, 0, rows.m_uiTop),
                                                   SamplesAt(ComponentCb, 0, chromaTop),
                                                   SamplesAt(ComponentCr, 0, chromaTop), skipMask);
    }

private:
    uint8_t* SamplesAt(IctComponent component, size_t left, size_t top) const {
        return m_Decoder.m_apuiPlanes[component].get() + top * StrideOf(component) + left;
    }
    size_t StrideOf(IctComponent component) const {
        return component == ComponentY ? m_uiLumaStride : m_uiChromaStride;
    }

    ImageDecoderIct& m_Decoder;
    std::array<IctTileTables, ComponentCount> m_aTables;
    size_t m_uiLumaStride;
    size_t m_uiChromaStride;
};

/// Decodes the macroblocks of one bit reader into the decoder's planes.
template <class Chroma>
class ImageDecoderIct::Update<Chroma>::Source {
public:
    Source(Update& update, BitStreamReader& reader, size_t readableAfter, unsigned int worker)
        : m_Update(update), m_Decoder(update.m_Decoder), m_Reader(reader),
          m_Cursor(reader, readableAfter),
          m_piCoefficients(&m_Decoder.m_piCoefficients[worker * TileCoefficients]) {}

    StreamWindow& GetWindow() { return m_Cursor.GetWindow(); }

    void Decode(const Macroblock& macroblock);

private:
    /// Calls visit.operator()<Width, Height>(component, left, top) for the areas of a macroblock,
    /// in the order in which they are coded, with their places in samples.
    template <class Visit>
    static void ForEachArea(const Macroblock& macroblock, Visit visit);

    template <size_t Width, size_t Height>
    void DecodeArea(IctComponent component, size_t left, size_t top);
    template <size_t Width, size_t Height>
    void FillArea(IctComponent component, size_t left, size_t top, int16_t dc);

    IctTileCursor::Outcome DecodeTile(IctComponent component) {
        return m_Cursor.DecodeTile(m_Update.m_aTables[component], m_Predictors[component],
                                   m_piCoefficients);
    }
    void DecodeTilePlainly(IctComponent component);
    void StoreTile(IctComponent component, IctTileCursor::Outcome outcome, uint8_t* samples,
                   size_t stride);

    Update& m_Update;
    ImageDecoderIct& m_Decoder;
    BitStreamReader& m_Reader;
    IctTileCursor m_Cursor;
    int16_t* m_piCoefficients; ///< scratch of the worker
    std::array<int, ComponentCount> m_Predictors{};
};

/// In most screens, most areas are flat: then all tiles after the first repeat it, and whole
/// macroblocks repeat each other (bench IctConsole*, IctDesktop*, level 0).
template <class Chroma>
void ImageDecoderIct::Update<Chroma>::Source::Decode(const Macroblock& macroblock) {
    if (m_Decoder.GetRules().m_bPredictorsRestart)
        m_Predictors = {};
    if (m_Cursor.SkipRepeats(m_Decoder.m_RepeatedMacroblock)) {
        ForEachArea(macroblock, [&]<size_t Width, size_t Height>(IctComponent component,
                                                                 size_t left, size_t top) {
            const int16_t dc =
                m_Update.m_aTables[component].m_pFast->DequantiseDc(m_Predictors[component]);
            FillArea<Width, Height>(component, left, top, dc);
        });
        return;
    }
    ForEachArea(macroblock,
                [&]<size_t Width, size_t Height>(IctComponent component, size_t left, size_t top) {
                    DecodeArea<Width, Height>(component, left, top);
                });
}

template <class Chroma>
template <class Visit>
void ImageDecoderIct::Update<Chroma>::Source::ForEachArea(const Macroblock& macroblock,
                                                          Visit visit) {
    visit.template operator()<MacroblockEdge, MacroblockEdge>(ComponentY, macroblock.m_uiLeft,
                                                              macroblock.m_uiTop);
    for (const IctComponent component : {ComponentCb, ComponentCr})
        visit.template operator()<Chroma::Width, Chroma::Height>(
            component, macroblock.m_uiLeft / Chroma::DivX, macroblock.m_uiTop / Chroma::DivY);
}

template <class Chroma>
template <size_t Width, size_t Height>
void ImageDecoderIct::Update<Chroma>::Source::FillArea(IctComponent component, size_t left,
                                                       size_t top, int16_t dc) {
    FillSamples<Width, Height>(m_Update.SamplesAt(component, left, top),
                               m_Update.StrideOf(component), FlatTileSample(dc));
}

/// Decodes the tiles of a macroblock in one plane, in row order.
template <class Chroma>
template <size_t Width, size_t Height>
void ImageDecoderIct::Update<Chroma>::Source::DecodeArea(IctComponent component, size_t left,
                                                         size_t top) {
    constexpr size_t Tiles = Width * Height / TileCoefficients;
    constexpr size_t TilesAcross = Width / TileEdge;
    const size_t stride = m_Update.StrideOf(component);
    uint8_t* const area = m_Update.SamplesAt(component, left, top);

    const auto first = DecodeTile(component);
    if (Tiles > 1 && first == IctTileCursor::Outcome::Flat &&
        m_Cursor.SkipRepeats(m_Decoder.m_aRepeatedRests[component])) {
        FillArea<Width, Height>(component, left, top, m_piCoefficients[0]);
        return;
    }
    StoreTile(component, first, area, stride);
    for (size_t tile = 1; tile < Tiles; ++tile) {
        const size_t row = tile / TilesAcross * TileEdge;
        const size_t column = tile % TilesAcross * TileEdge;
        StoreTile(component, DecodeTile(component), area + row * stride + column, stride);
    }
}

/// Turns what the cursor made of a tile into samples.
template <class Chroma>
void ImageDecoderIct::Update<Chroma>::Source::StoreTile(IctComponent component,
                                                        IctTileCursor::Outcome outcome,
                                                        uint8_t* samples, size_t stride) {
    switch (outcome) {
    case IctTileCursor::Outcome::Flat:
        FillSamples<TileEdge, TileEdge>(samples, stride, FlatTileSample(m_piCoefficients[0]));
        return;
    case IctTileCursor::Outcome::Low:
        m_Decoder.m_pInverseIct->TransformLowTile(m_piCoefficients, samples, stride);
        return;
    case IctTileCursor::Outcome::Declined:
        DecodeTilePlainly(component);
        break;
    case IctTileCursor::Outcome::Full:
        break;
    }
    m_Decoder.m_pInverseIct->TransformTile(m_piCoefficients, samples, stride);
}

template <class Chroma>
void ImageDecoderIct::Update<Chroma>::Source::DecodeTilePlainly(IctComponent component) {
    const IctTileTables& tables = m_Update.m_aTables[component];
    if (!m_Decoder.HuffmannDecodeReorderDequantTile(
            &m_Reader, m_piCoefficients, &m_Predictors[component],
            m_Decoder.GetDequantTable(component).data(), tables.m_pDc, tables.m_pAc))
        ThrowStreamError();
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
    : MacroblockDecoder(renderer, stream, logger, protocolVersion, chromaSubsampling,
                        &UpdateRules::m_IctLength),
      m_pInverseIct(Checked(std::move(inverseIct))), m_Jobs(CreateJobs(threads, "ICT")) {
    // Aligned to its own size, a worker's block shares no cache line with another's: shared lines
    // took a quarter of the time of two workers (bench/compare, row 12).
    constexpr size_t BlockBytes = TileCoefficients * sizeof(int16_t);
    m_piCoefficients = AllocateAligned<int16_t>(
        (m_Jobs.InPlaceWorker() + size_t{1}) * TileCoefficients,
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
    Update<IctChroma420> update(*this, rectangle);
    return DecodeMacroblocks(rectangle, update, m_Jobs, ScheduleDecodeTile420(update));
}

uint64_t ImageDecoderIct::HandleUpdateImplementation422(const UpdateRectangle& rectangle) {
    Update<IctChroma422> update(*this, rectangle);
    return DecodeMacroblocks(rectangle, update, m_Jobs, ScheduleDecodeTile422(update));
}

uint64_t ImageDecoderIct::HandleUpdateImplementation444(const UpdateRectangle& rectangle) {
    Update<IctChroma444> update(*this, rectangle);
    return DecodeMacroblocks(rectangle, update, m_Jobs, ScheduleDecodeTile444(update));
}

UpdateJobs::DecodeRecord
ImageDecoderIct::ScheduleDecodeTile420(Update<IctChroma420>& update) const {
    return RecordDecoderOf(update);
}

UpdateJobs::DecodeRecord
ImageDecoderIct::ScheduleDecodeTile422(Update<IctChroma422>& update) const {
    return RecordDecoderOf(update);
}

UpdateJobs::DecodeRecord
ImageDecoderIct::ScheduleDecodeTile444(Update<IctChroma444>& update) const {
    return RecordDecoderOf(update);
}

} // namespace Vostrel::libimagedecoder
