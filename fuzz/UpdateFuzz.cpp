// Lives of decoders: updates of any bytes into any rectangle, good ones between bad ones, and after
// each of them the picture, the result, the failure's text and the bytes consumed must be those of
// the model. Built twice, with FUZZED_CODEC as Ict and as Lbe.

#include "fuzz/FuzzedDecoder.h"
#include "fuzz/UpdateInput.h"
#include "tests/support/TestBits.h"

#include <map>
#include <tuple>

namespace Vostrel::fuzz {
namespace {

using model::ModelCodec;
using model::ModelOutcome;
using model::ModelRectangle;
using model::ModelSettings;
using model::ModelSink;

constexpr ModelCodec Codec = ModelCodec::FUZZED_CODEC;

DecoderChoice ChoiceOf(const FuzzedLife& life) {
    return {{Codec, life.Version(), life.Chroma(), life.Threads(), RuleOf(life.Kernel())},
            life.Kernel()};
}

struct UpdateCall {
    unsigned quality;
    ModelRectangle area;
    std::vector<uint8_t> bytes;
    size_t pieceCapacity;
};

unsigned GoodQuality(unsigned quality) {
    return Codec == ModelCodec::Lbe ? 2 + quality % 6 : quality;
}

/// One macroblock at the framebuffer's corner, cut into a job where there is a pool.
std::string GoodUpdateText(const ModelSettings& settings, unsigned quality) {
    using namespace tests;
    const bool lbe = Codec == ModelCodec::Lbe;
    const std::string block = lbe ? PlainBlock(quality, 1, 5) : FlatMacroblock(settings.chroma);
    if (settings.protocolVersion < 2)
        return NoSkip + block + EndOfUpdate(settings.protocolVersion);
    if (settings.threads == 0)
        return NoSkip + Bits(0, 8) + block + EndOfUpdate(2);
    return (lbe ? LbeRecord(NoSkip, block) : IctRecord(NoSkip, block)) + EndOfUpdate(2);
}

const std::vector<uint8_t>& GoodUpdateBytes(const ModelSettings& settings, unsigned quality) {
    static std::map<std::tuple<unsigned, unsigned, bool, unsigned>, std::vector<uint8_t>> cache;
    std::vector<uint8_t>& bytes =
        cache[{settings.protocolVersion, settings.chroma, settings.threads > 0,
               Codec == ModelCodec::Lbe ? quality : 0}];
    if (bytes.empty())
        bytes = tests::BytesOf(GoodUpdateText(settings, quality));
    return bytes;
}

ModelRectangle AreaOf(const FuzzedLife& life, const FuzzedUpdate& update) {
    if (update.Is(FuzzedUpdate::FarRectangle))
        return {update.m_uiX, update.m_uiY, update.m_uiWidth, update.m_uiHeight};
    // Now and then a little more than the framebuffer has room for.
    const int width = life.Width();
    const int height = life.Height();
    return {update.m_uiX % (width + 8), update.m_uiY % (height + 8),
            update.m_uiWidth % (width + 24), update.m_uiHeight % (height + 24)};
}

UpdateCall CallOf(const FuzzedLife& life, const FuzzedUpdate& update) {
    const size_t piece = update.m_uiPiece == 255 ? size_t{1} << 20 : update.m_uiPiece + size_t{1};
    if (update.Is(FuzzedUpdate::GoodUpdate)) {
        const unsigned quality = GoodQuality(update.m_uiQuality);
        return {quality,
                {0, 0, life.Width(), life.Height()},
                GoodUpdateBytes(ChoiceOf(life).settings, quality),
                piece};
    }
    const unsigned ignored = update.Is(FuzzedUpdate::LargeQuality) ? 0xFFFFFF00u : 0;
    return {update.m_uiQuality | ignored, AreaOf(life, update), update.m_vPayload, piece};
}

/// Both decoders through one life.
class Life {
public:
    explicit Life(const FuzzedLife& life)
        : m_Life(life), m_bDrawn(life.SinkKind() != FuzzedLife::Sink::None),
          m_Subject(FuzzedDecoder::For(ChoiceOf(life))), m_Model(ChoiceOf(life).settings) {
        const ModelSink sink =
            life.SinkKind() == FuzzedLife::Sink::Planes ? ModelSink::Planes : ModelSink::Argb;
        m_Subject.Reset(life.Width(), life.Height());
        Framebuffer().Place(sink, model::ChromaOf(life.Chroma()), life.Width(), life.Height(),
                            FlushOf((life.m_uiPlace & 1) != 0));
        Framebuffer().AttachTo(m_Subject.Renderer(), m_bDrawn);
        m_Model.SetFramebuffer(sink, life.Width(), life.Height());
    }

    void Run() {
        for (const FuzzedUpdate& update : m_Life.m_vUpdates) {
            SetOptions(update);
            const ModelOutcome outcome = Compare(CallOf(m_Life, update));
            if (update.Is(FuzzedUpdate::GoodUpdate))
                Check(outcome.error.empty() && outcome.result != ~uint64_t{0},
                      "a good update fails");
        }
    }

private:
    static GuardedFramebuffer& Framebuffer() {
        static GuardedFramebuffer framebuffer(FuzzedLife::MaxWidth, FuzzedLife::MaxHeight);
        return framebuffer;
    }

    void SetOptions(const FuzzedUpdate& update) {
        const int contrast = int{update.m_uiContrast} - 20;
        const bool postProcessing = update.Is(FuzzedUpdate::PostProcessing);
        m_Subject.Renderer().SetContrastEnhance(contrast);
        m_Model.Renderer().SetContrast(contrast);
        m_Subject.Renderer().SetClientPostprocessingEnabled(postProcessing);
        m_Model.Renderer().SetPostProcessing(postProcessing);
    }

    ModelOutcome Compare(const UpdateCall& call) {
        model::ModelStream stream(call.bytes, call.pieceCapacity);
        const ModelOutcome expected = m_Model.Update(call.quality, call.area, stream);
        const ModelOutcome actual =
            m_Subject.Update(call.quality, call.area, call.bytes, call.pieceCapacity);
        Check(actual.error == expected.error, "another failure than the model's");
        Check(actual.result == expected.result, "another result than the model's");
        Check(actual.consumedBytes == expected.consumedBytes,
              "another count of consumed bytes than the model's");
        Check(Framebuffer().GuardsIntact(), "bytes beside the framebuffer are overwritten");
        Check(m_bDrawn ? Framebuffer().Holds(m_Model.Renderer().Memory()) : Framebuffer().IsBlank(),
              "another picture than the model's");
        return expected;
    }

    const FuzzedLife& m_Life;
    bool m_bDrawn;
    FuzzedDecoder& m_Subject;
    model::ModelDecoder m_Model;
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    const FuzzedLife life = ReadLife(data, size);
    Life(life).Run();
    return 0;
}
