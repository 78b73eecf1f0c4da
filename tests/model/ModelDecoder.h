#pragma once

#include "tests/model/ModelRenderer.h"
#include "tests/model/ModelStream.h"
#include "tests/model/ModelWalk.h"

#include <string>

namespace Vostrel::model {

enum class ModelCodec { Ict, Lbe };

/// What a decoder is created with.
struct ModelSettings {
    ModelCodec codec = ModelCodec::Ict;
    unsigned protocolVersion = 0; ///< 0..2
    unsigned chroma = 0;          ///< 0 4:2:0, 1 4:2:2, 2 4:4:4
    unsigned threads = 0;         ///< with version 2 any but 0 makes a pool
    KernelRule rule = KernelRule::Portable;
};

/// How an update ended.
struct ModelOutcome {
    uint64_t result;      ///< the packed changed rectangle; all ones for a failure
    std::string error;    ///< empty without one
    size_t consumedBytes; ///< delivered by the stream and not handed back
};

/// A renderer and a decoder through a life of updates: a plain and slow statement of what the
/// library has to do, which shares no code with it.
class ModelDecoder {
public:
    explicit ModelDecoder(const ModelSettings& settings);

    /// Framebuffer and resolution. The framebuffer starts zeroed; so do the decoder's planes, which
    /// an unchanged size keeps.
    void SetFramebuffer(ModelSink sink, int width, int height);

    /// Decodes one update and draws it, unless it fails.
    ModelOutcome Update(unsigned quality, const ModelRectangle& area, ModelStream& stream);

    ModelRenderer& Renderer() { return m_Renderer; }

private:
    uint64_t Decode(unsigned quality, const ModelRectangle& area, ModelBits& bits);
    uint64_t DecodeIct(unsigned quality, const ModelRectangle& area, ModelBits& bits);
    uint64_t DecodeLbe(unsigned quality, const ModelRectangle& area, ModelBits& bits);
    void RejectLargerThanResolution(const ModelRectangle& area) const;
    ModelWalkRules WalkRules() const;

    ModelSettings m_Settings;
    ModelChroma m_Chroma;
    ModelRenderer m_Renderer;
    ModelPlanes m_Planes;
    int m_iWidth = 0;
    int m_iHeight = 0;
};

} // namespace Vostrel::model
