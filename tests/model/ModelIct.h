#pragma once

#include "tests/model/ModelKernelRule.h"
#include "tests/model/ModelTables.h"
#include "tests/model/ModelWalk.h"

namespace Vostrel::model {

/// ICT's macroblocks: 8x8 tiles of transform coefficients in up to three components.
class ModelIctCodec : public IModelBlockCodec {
public:
    /// Decodes into planes whose rows are lumaStride (a multiple of 16) luma samples long.
    ModelIctCodec(unsigned protocolVersion, ModelChroma chroma, KernelRule rule, int qualityLevel,
                  ModelPlanes& planes, int lumaStride);

    std::optional<ModelLength> ReadLength(ModelBits& bits) override;
    void DecodeBlock(ModelBits& bits, int left, int top) override;

private:
    /// The tiles of one component of a macroblock.
    struct Component {
        ModelPlane* plane;
        ModelChroma scale;
        const HuffmanTable* dc;
        const HuffmanTable* ac;
        const TileTable* dequantisation;
        int64_t dcPredictor;
    };

    void DecodeComponent(ModelBits& bits, Component& component, int left, int top);

    unsigned m_uiProtocolVersion;
    KernelRule m_Rule;
    int m_iLumaStride;
    TileTable m_LumaDequantisation;
    TileTable m_ChromaDequantisation;
    std::array<Component, 3> m_Components;
};

} // namespace Vostrel::model
