#include "tools/IctEncoder.h"

#include <stdexcept>

namespace Vostrel::streamencoder {

using libimagedecoder::IctCodingTables;
using libimagedecoder::IctQuality;
using libimagedecoder::MacroblockEdge;

namespace {

constexpr size_t TileEdge = 8;

const IctQuality& QualityRow(uint32_t quality) {
    if (quality >= IctCodingTables::s_aQualityTable.size())
        throw std::invalid_argument("An ICT quality is a number from 0 to 15");
    return IctCodingTables::s_aQualityTable[quality];
}

} // namespace

IctEncoder::IctEncoder(const UpdateFormat& format, ChromaSubsampling chroma, uint32_t quality)
    : UpdateEncoder(Codec::Ict, format, chroma, quality),
      m_y{IctQuantiser(IctCodingTables::s_aLumQuantBaseTile, QualityRow(quality)),
          IctComponentCode::Luma()},
      m_cb{IctQuantiser(IctCodingTables::s_aChromaQuantBaseTile, QualityRow(quality)),
           IctComponentCode::Chroma()},
      m_cr(m_cb) {}

void IctEncoder::ResetPredictors() {
    for (Component* component : {&m_y, &m_cb, &m_cr}) {
        component->m_iDcPredictor = 0;
    }
}

void IctEncoder::EncodeTiles(const Plane& plane, size_t left, size_t top, size_t width,
                             size_t height, Component& component, BitWriter& bits) {
    for (size_t y = top; y < top + height; y += TileEdge) {
        for (size_t x = left; x < left + width; x += TileEdge) {
            const IctCoefficients coefficients = ForwardIct(plane.At(x, y), plane.m_uiWidth);
            WriteIctTile(component.m_quantiser.Quantise(coefficients), component.m_code,
                         component.m_iDcPredictor, bits);
        }
    }
}

void IctEncoder::EncodeBlock(const YCbCrPlanes& planes, size_t column, size_t row,
                             BitWriter& bits) {
    if (libimagedecoder::RulesOf(GetFormat().m_uiProtocolVersion).m_bPredictorsRestart)
        ResetPredictors();

    EncodeTiles(planes.m_y, column * MacroblockEdge, row * MacroblockEdge, MacroblockEdge,
                MacroblockEdge, m_y, bits);
    const size_t width = MacroblockEdge / ChromaDivX(GetChromaSubsampling());
    const size_t height = MacroblockEdge / ChromaDivY(GetChromaSubsampling());
    EncodeTiles(planes.m_cb, column * width, row * height, width, height, m_cb, bits);
    EncodeTiles(planes.m_cr, column * width, row * height, width, height, m_cr, bits);
}

} // namespace Vostrel::streamencoder
