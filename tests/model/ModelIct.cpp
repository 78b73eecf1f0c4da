#include "tests/model/ModelIct.h"

#include "tests/model/ModelTile.h"
#include "tests/model/ModelTransform.h"

namespace Vostrel::model {

namespace {

constexpr int TileEdge = 8;

} // namespace

ModelIctCodec::ModelIctCodec(unsigned protocolVersion, ModelChroma chroma, KernelRule rule,
                             int qualityLevel, ModelPlanes& planes, int lumaStride)
    : m_uiProtocolVersion(protocolVersion), m_Rule(rule), m_iLumaStride(lumaStride),
      m_LumaDequantisation(LumaDequantisation(qualityLevel)),
      m_ChromaDequantisation(ChromaDequantisation(qualityLevel)),
      m_Components{
          {{&planes.y, {1, 1}, &DcLuminance(), &AcLuminance(), &m_LumaDequantisation, 0},
           {&planes.cb, chroma, &DcChrominance(), &AcChrominance(), &m_ChromaDequantisation, 0},
           {&planes.cr, chroma, &DcChrominance(), &AcChrominance(), &m_ChromaDequantisation, 0}}} {}

std::optional<ModelLength> ModelIctCodec::ReadLength(ModelBits& bits) {
    if (m_uiProtocolVersion < 2)
        return std::nullopt;
    return ModelLength{bits.Read(8), 8};
}

void ModelIctCodec::DecodeBlock(ModelBits& bits, int left, int top) {
    for (Component& component : m_Components) {
        if (m_uiProtocolVersion > 0)
            component.dcPredictor = 0;
        DecodeComponent(bits, component, left, top);
    }
}

void ModelIctCodec::DecodeComponent(ModelBits& bits, Component& component, int left, int top) {
    const int stride = m_iLumaStride / component.scale.divX;
    const int firstColumn = left / component.scale.divX;
    const int firstRow = top / component.scale.divY;
    const int columns = BlockEdge / component.scale.divX;
    const int rows = BlockEdge / component.scale.divY;
    for (int row = 0; row < rows; row += TileEdge) {
        for (int column = 0; column < columns; column += TileEdge) {
            const TileTable coefficients =
                DecodeTile(bits, {component.dc, component.ac, component.dequantisation},
                           component.dcPredictor);
            const TileTable samples = InverseTransform(coefficients, m_Rule);
            for (int i = 0; i < TileEdge * TileEdge; ++i) {
                const int y = firstRow + row + i / TileEdge;
                const int x = firstColumn + column + i % TileEdge;
                component.plane->Set(static_cast<size_t>(y) * static_cast<size_t>(stride) +
                                         static_cast<size_t>(x),
                                     samples[static_cast<size_t>(i)]);
            }
        }
    }
}

} // namespace Vostrel::model
