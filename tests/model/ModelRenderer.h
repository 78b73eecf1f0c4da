#pragma once

#include "tests/model/ModelKernelRule.h"
#include "tests/model/ModelUpdate.h"

#include <cstdint>
#include <functional>

namespace Vostrel::model {

/// What the viewer gives to be drawn into: one ARGB32 buffer, or a Y, a Cb and a Cr plane.
enum class ModelSink { Argb, Planes };

/// The framebuffer memory and all that happens to decoded planes on their way into it.
class ModelRenderer {
public:
    ModelRenderer(ModelChroma chroma, KernelRule rule) : m_Chroma(chroma), m_Rule(rule) {}

    /// Takes zeroed memory of this size in pixels.
    void SetFramebuffer(ModelSink sink, int width, int height);

    /// A level outside 0..100 changes nothing.
    void SetContrast(int level);
    void SetPostProcessing(bool enabled) { m_bPostProcessing = enabled; }

    /// Draws the blocks that the mask does not skip. Rows of the planes are as long as the
    /// rectangle in whole blocks. Contrast enhancement changes the luma plane.
    void DrawFullDepth(const ModelRectangle& area, const ModelMask& mask, ModelPlanes& planes);
    void DrawReducedDepth(const ModelRectangle& area, const ModelMask& mask, ModelPlanes& planes,
                          int lumaBits, int chromaBits);

    /// The framebuffer's bytes in memory order, planes one behind the other.
    std::vector<uint8_t> Memory() const;

private:
    using PixelOf = std::function<uint32_t(size_t lumaIndex, size_t chromaIndex)>;

    void Stretch(const ModelRectangle& area, const ModelMask& mask, ModelPlane& luma, int bits);
    void Convert(const ModelRectangle& area, const ModelMask& mask, const PixelOf& pixelOf);
    void CopyPlanes(const ModelRectangle& area, const ModelMask& mask, const ModelPlanes& planes);
    uint32_t* PixelAt(const ModelRectangle& area, int column, int row);

    ModelChroma m_Chroma;
    KernelRule m_Rule;
    ModelSink m_Sink = ModelSink::Argb;
    int m_iWidth = 0;
    int m_iHeight = 0;
    int m_iContrast = 0;
    bool m_bPostProcessing = false;
    std::vector<uint32_t> m_vuiArgb;
    std::vector<uint8_t> m_vuiY;
    std::vector<uint8_t> m_vuiCb;
    std::vector<uint8_t> m_vuiCr;
};

} // namespace Vostrel::model
