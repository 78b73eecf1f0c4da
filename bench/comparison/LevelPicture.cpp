#include "bench/comparison/LevelPicture.h"

#include "tools/ForwardIct.h"
#include "tools/IctTileWriter.h"
#include "tools/UpdateWriter.h"
#include "tools/YCbCrPlanes.h"

#include <cmath>

namespace Vostrel::bench {

using namespace streamencoder;
using libimagedecoder::IctCodingTables;
using libimagedecoder::IctQuality;
using libimagedecoder::MacroblockEdge;

namespace {

constexpr size_t TileEdge = 8;

const std::array<uint32_t, 64>& BaseSteps(bool luma) {
    return luma ? IctCodingTables::s_aLumQuantBaseTile : IctCodingTables::s_aChromaQuantBaseTile;
}

void QuantisePlane(const Plane& samples, const IctQuantiser& quantiser, LevelPlane& levels) {
    for (size_t i = 0; i < levels.m_vTiles.size(); ++i) {
        const size_t x = i % levels.m_uiColumns * TileEdge;
        const size_t y = i / levels.m_uiColumns * TileEdge;
        levels.m_vTiles[i] = quantiser.Quantise(ForwardIct(samples.At(x, y), samples.m_uiWidth));
    }
}

/// Writes the macroblocks of a level picture, whose predictors go on or start anew as the protocol
/// version has it.
class MacroblockWriter {
public:
    MacroblockWriter(const LevelPicture& picture, const UpdateFormat& format)
        : m_picture(picture),
          m_bKeepsPredictors(
              !libimagedecoder::RulesOf(format.m_uiProtocolVersion).m_bPredictorsRestart) {}

    void Write(size_t column, size_t row, BitWriter& bits) {
        if (!m_bKeepsPredictors)
            m_aiPredictors = {};
        for (size_t component = 0; component < m_picture.m_aPlanes.size(); ++component)
            WriteTiles(component, column, row, bits);
    }

private:
    void WriteTiles(size_t component, size_t column, size_t row, BitWriter& bits) {
        const LevelPlane& plane = m_picture.m_aPlanes[component];
        const size_t across = plane.m_uiColumns * MacroblockEdge / m_picture.m_uiWidth;
        const size_t down = plane.m_uiRows * MacroblockEdge / m_picture.m_uiHeight;
        const IctComponentCode code =
            component == 0 ? IctComponentCode::Luma() : IctComponentCode::Chroma();
        for (size_t y = row * down; y < (row + 1) * down; ++y) {
            for (size_t x = column * across; x < (column + 1) * across; ++x)
                WriteIctTile(plane.m_vTiles[y * plane.m_uiColumns + x], code,
                             m_aiPredictors[component], bits);
        }
    }

    const LevelPicture& m_picture;
    bool m_bKeepsPredictors;
    std::array<int, 3> m_aiPredictors{};
};

} // namespace

LevelPicture EmptyLevelPicture(size_t width, size_t height, ChromaSubsampling chroma) {
    const size_t columns = width / TileEdge;
    const size_t rows = height / TileEdge;
    const LevelPlane chromaPlane(columns / ChromaDivX(chroma), rows / ChromaDivY(chroma));
    return {width, height, chroma, {LevelPlane(columns, rows), chromaPlane, chromaPlane}};
}

LevelPicture QuantisePicture(const Picture& picture, ChromaSubsampling chroma, uint32_t quality) {
    const YCbCrPlanes planes = ConvertToYCbCr(
        picture,
        {0, 0, static_cast<uint16_t>(picture.m_uiWidth), static_cast<uint16_t>(picture.m_uiHeight)},
        chroma);
    LevelPicture levels = EmptyLevelPicture(planes.m_y.m_uiWidth, planes.m_y.m_uiHeight, chroma);
    const IctQuality& row = IctCodingTables::s_aQualityTable.at(quality);
    QuantisePlane(planes.m_y, IctQuantiser(BaseSteps(true), row), levels.m_aPlanes[0]);
    QuantisePlane(planes.m_cb, IctQuantiser(BaseSteps(false), row), levels.m_aPlanes[1]);
    QuantisePlane(planes.m_cr, IctQuantiser(BaseSteps(false), row), levels.m_aPlanes[2]);
    return levels;
}

// The transform of an ICT encoder is normalised like that of JPEG, so its steps are JPEG's, up to
// rounding.
std::array<unsigned, 64> QuantiserSteps(bool luma, uint32_t quality) {
    const IctQuality& row = IctCodingTables::s_aQualityTable.at(quality);
    std::array<unsigned, 64> steps{};
    for (size_t i = 0; i < steps.size(); ++i) {
        const double step = 8192.0 / static_cast<double>(libimagedecoder::QuantiserReciprocal(
                                         BaseSteps(luma)[i], row.m_fScale, row.m_uiShift));
        steps[i] = static_cast<unsigned>(std::max(1L, std::lround(step)));
    }
    return steps;
}

EncodedUpdate WriteIctUpdate(const LevelPicture& picture, uint32_t quality,
                             const UpdateFormat& format, uint16_t x, uint16_t y,
                             const std::vector<bool>& coded) {
    UpdateWriter writer(format);
    MacroblockWriter macroblocks(picture, format);
    BitWriter bits;
    size_t skipped = 0;
    const size_t columns = picture.m_uiWidth / MacroblockEdge;
    const size_t count = columns * (picture.m_uiHeight / MacroblockEdge);
    for (size_t i = 0; i < count; ++i) {
        if (!coded.empty() && !coded[i]) {
            ++skipped;
            continue;
        }
        bits.Clear();
        macroblocks.Write(i % columns, i / columns, bits);
        writer.WriteBlock(skipped, bits);
        skipped = 0;
    }
    return {
        quality,
        {x, y, static_cast<uint16_t>(picture.m_uiWidth), static_cast<uint16_t>(picture.m_uiHeight)},
        writer.Finish()};
}

} // namespace Vostrel::bench
