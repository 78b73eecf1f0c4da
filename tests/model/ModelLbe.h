#pragma once

#include "tests/model/ModelWalk.h"

namespace Vostrel::model {

/// The depths of an LBE update's levels.
struct ModelLbeDepths {
    int lumaBits;
    int chromaBits; ///< of the Cb and of the Cr level
};

/// The depths of a quality value, nothing for one outside the table.
std::optional<ModelLbeDepths> LbeDepths(unsigned quality, unsigned protocolVersion);

/// How one plane of an LBE block is coded.
struct ModelRunCoding {
    int samples;
    int rowWidth;
    int literalBits;
    int longRunBits;
};

/// Decodes the literals and runs of one plane.
std::vector<int64_t> DecodeRuns(ModelBits& bits, const ModelRunCoding& coding);

/// LBE's blocks: a plane of luma levels and a plane of packed chroma values.
class ModelLbeCodec : public IModelBlockCodec {
public:
    /// Decodes into planes whose rows are lumaStride (a multiple of 16) luma samples long.
    ModelLbeCodec(unsigned protocolVersion, ModelChroma chroma, ModelLbeDepths depths,
                  ModelPlanes& planes, int lumaStride)
        : m_uiProtocolVersion(protocolVersion), m_Chroma(chroma), m_Depths(depths),
          m_Planes(planes), m_iLumaStride(lumaStride) {}

    std::optional<ModelLength> ReadLength(ModelBits& bits) override;
    void DecodeBlock(ModelBits& bits, int left, int top) override;

private:
    unsigned m_uiProtocolVersion;
    ModelChroma m_Chroma;
    ModelLbeDepths m_Depths;
    ModelPlanes& m_Planes;
    int m_iLumaStride;
};

} // namespace Vostrel::model
