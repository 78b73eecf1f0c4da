#include "tests/model/ModelDecoder.h"

#include "tests/model/ModelIct.h"
#include "tests/model/ModelLbe.h"

namespace Vostrel::model {

namespace {

constexpr uint64_t Failed = ~uint64_t{0};

} // namespace

ModelDecoder::ModelDecoder(const ModelSettings& settings)
    : m_Settings(settings), m_Chroma(ChromaOf(settings.chroma)),
      m_Renderer(m_Chroma, settings.rule) {}

void ModelDecoder::SetFramebuffer(ModelSink sink, int width, int height) {
    m_Renderer.SetFramebuffer(sink, width, height);
    if (width == m_iWidth && height == m_iHeight)
        return;
    m_iWidth = width;
    m_iHeight = height;
    m_Planes.Clear(width, height);
}

ModelOutcome ModelDecoder::Update(unsigned quality, const ModelRectangle& area,
                                  ModelStream& stream) {
    ModelBits bits(stream);
    try {
        const uint64_t result = Decode(quality, area, bits);
        stream.GiveBack(static_cast<size_t>(bits.HeldBits() / 8));
        return {result, "", stream.Consumed()};
    } catch (const ModelError& error) {
        return {Failed, error.what(), stream.Consumed()};
    }
}

uint64_t ModelDecoder::Decode(unsigned quality, const ModelRectangle& area, ModelBits& bits) {
    return m_Settings.codec == ModelCodec::Ict ? DecodeIct(quality, area, bits)
                                               : DecodeLbe(quality, area, bits);
}

uint64_t ModelDecoder::DecodeIct(unsigned quality, const ModelRectangle& area, ModelBits& bits) {
    RejectLargerThanResolution(area);
    ModelIctCodec codec(m_Settings.protocolVersion, m_Chroma, m_Settings.rule,
                        static_cast<int>(quality % 16), m_Planes, RoundUpToBlock(area.width));
    const ModelWalkResult walked = WalkBlocks(bits, area, WalkRules(), codec);
    m_Renderer.DrawFullDepth(area, walked.mask, m_Planes);
    return walked.changedRectangle;
}

uint64_t ModelDecoder::DecodeLbe(unsigned quality, const ModelRectangle& area, ModelBits& bits) {
    const std::optional<ModelLbeDepths> depths = LbeDepths(quality, m_Settings.protocolVersion);
    if (!depths)
        return Failed;
    RejectLargerThanResolution(area);
    ModelLbeCodec codec(m_Settings.protocolVersion, m_Chroma, *depths, m_Planes,
                        RoundUpToBlock(area.width));
    const ModelWalkResult walked = WalkBlocks(bits, area, WalkRules(), codec);
    m_Renderer.DrawReducedDepth(area, walked.mask, m_Planes, depths->lumaBits, depths->chromaBits);
    return walked.changedRectangle;
}

void ModelDecoder::RejectLargerThanResolution(const ModelRectangle& area) const {
    if (area.width > RoundUpToBlock(m_iWidth) || area.height > RoundUpToBlock(m_iHeight))
        throw ModelError("StreamError");
}

ModelWalkRules ModelDecoder::WalkRules() const {
    return {m_Settings.protocolVersion == 0 ? 14 : 16,
            m_Settings.protocolVersion == 2 && m_Settings.threads > 0};
}

} // namespace Vostrel::model
