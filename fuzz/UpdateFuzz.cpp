// Lives of decoders: updates of any bytes into any rectangle, good ones between bad ones, and after
// each of them the picture, the result, the failure's text and the bytes consumed must be those of
// the model. Built four times: with FUZZED_CODEC as Ict and as Lbe, and with FUZZED_ROWS for small
// framebuffers and for rows of hundreds of macroblocks, of which an execution takes far longer.

#include "fuzz/FuzzedDecoder.h"
#include "fuzz/UpdateInput.h"
#include "tests/support/TestBits.h"

#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace Vostrel::fuzz {
namespace {

using model::ModelCodec;
using model::ModelOutcome;
using model::ModelRectangle;
using model::ModelSettings;
using model::ModelSink;

constexpr ModelCodec Codec = ModelCodec::FUZZED_CODEC;
constexpr bool LongRows = FUZZED_ROWS;

int WidthOf(const FuzzedLife& life) {
    return LongRows ? life.RowsWidth() : life.Width();
}
int HeightOf(const FuzzedLife& life) {
    return LongRows ? life.RowsHeight() : life.Height();
}

DecoderChoice ChoiceOf(const FuzzedLife& life) {
    return {{Codec, life.Version(), life.Chroma(), life.Threads(), RuleOf(life.Kernel())},
            life.Kernel()};
}

struct UpdateCall {
    unsigned quality;
    ModelRectangle area;
    std::span<const uint8_t> bytes;
    size_t pieceCapacity;
};

unsigned GoodQuality(unsigned quality) {
    return Codec == ModelCodec::Lbe ? 2 + quality % 6 : quality;
}

/// A macroblock that looks different from its neighbours.
std::string GoodMacroblock(const ModelSettings& settings, unsigned quality, unsigned number) {
    using namespace tests;
    if (Codec == ModelCodec::Lbe)
        return PlainBlock(quality, 1 + number % 3, 5 + number % 50);
    // The first luma tile moves the predictor of all.
    const std::string difference = "100 " + Bits(number, 3) + " 1010 ";
    return difference + Repeated(FlatLumaTile, 3) +
           Repeated(FlatChromaTile, ChromaTiles(settings.chroma));
}

/// So many macroblocks from the framebuffer's corner on, cut into jobs where there is a pool.
std::string GoodUpdateText(const ModelSettings& settings, unsigned quality, size_t macroblocks) {
    using namespace tests;
    std::string text;
    for (unsigned number = 0; number < macroblocks; ++number) {
        const std::string block = GoodMacroblock(settings, quality, number);
        if (settings.protocolVersion < 2)
            text += NoSkip + block;
        else if (settings.threads == 0)
            text.append(NoSkip).append(Bits(0, 8)).append(block);
        else
            text += Codec == ModelCodec::Lbe ? LbeRecord(NoSkip, block) : IctRecord(NoSkip, block);
    }
    return text + EndOfUpdate(settings.protocolVersion);
}

std::span<const uint8_t> GoodUpdateBytes(const ModelSettings& settings, unsigned quality,
                                         size_t macroblocks) {
    static std::map<std::tuple<unsigned, unsigned, bool, unsigned, size_t>, std::vector<uint8_t>>
        cache;
    std::vector<uint8_t>& bytes =
        cache[{settings.protocolVersion, settings.chroma, settings.threads > 0,
               Codec == ModelCodec::Lbe ? quality : 0, macroblocks}];
    if (bytes.empty())
        bytes = tests::BytesOf(GoodUpdateText(settings, quality, macroblocks));
    return bytes;
}

ModelRectangle AreaOf(const FuzzedLife& life, const FuzzedUpdate& update) {
    if (update.Is(FuzzedUpdate::FarRectangle))
        return {update.m_uiX, update.m_uiY, update.m_uiWidth, update.m_uiHeight};
    // Now and then a little more than the framebuffer has room for.
    const int width = WidthOf(life);
    const int height = HeightOf(life);
    return {update.m_uiX % (width + 8), update.m_uiY % (height + 8),
            update.m_uiWidth % (width + 24), update.m_uiHeight % (height + 24)};
}

size_t MacroblocksOf(const ModelRectangle& area) {
    return static_cast<size_t>(model::RoundUpToBlock(area.width) / model::BlockEdge) *
           static_cast<size_t>(model::RoundUpToBlock(area.height) / model::BlockEdge);
}

/// The payload once for every macroblock of the rectangle, as far as a piece of the stream goes.
std::span<const uint8_t> Repeat(std::span<const uint8_t> payload, const ModelRectangle& area) {
    static std::vector<uint8_t> bytes;
    bytes.clear();
    // A rectangle of 65535 x 65535 would be refused anyway.
    constexpr size_t MaxRepeats = LongRows ? 1000 : 40;
    for (size_t i = std::min(MacroblocksOf(area), MaxRepeats);
         i > 0 && bytes.size() + payload.size() <= GuardedStreambuffer::MaxPiece; --i)
        bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

UpdateCall CallOf(const FuzzedLife& life, const FuzzedUpdate& update) {
    const size_t piece =
        update.m_uiPiece == 255 ? GuardedStreambuffer::MaxPiece : update.m_uiPiece + size_t{1};
    if (update.Is(FuzzedUpdate::GoodUpdate)) {
        const unsigned quality = GoodQuality(update.m_uiQuality);
        const ModelRectangle whole{0, 0, WidthOf(life), HeightOf(life)};
        const size_t macroblocks = LongRows ? MacroblocksOf(whole) : 1;
        return {quality, whole, GoodUpdateBytes(ChoiceOf(life).settings, quality, macroblocks),
                piece};
    }
    const unsigned ignored = update.Is(FuzzedUpdate::LargeQuality) ? 0xFFFFFF00u : 0;
    const ModelRectangle area = AreaOf(life, update);
    const bool repeated = update.Is(FuzzedUpdate::Repeated);
    return {update.m_uiQuality | ignored, area,
            repeated ? Repeat(update.m_Payload, area) : update.m_Payload, piece};
}

/// Both decoders through one life.
class Life {
public:
    explicit Life(const FuzzedLife& life)
        : m_Life(life), m_bDrawn(life.SinkKind() != FuzzedLife::Sink::None),
          m_Subject(FuzzedDecoder::For(ChoiceOf(life))) {
        const ModelSink sink =
            life.SinkKind() == FuzzedLife::Sink::Planes ? ModelSink::Planes : ModelSink::Argb;
        m_Subject.Reset(sink, WidthOf(life), HeightOf(life));
        Framebuffer().Place(sink, model::ChromaOf(life.Chroma()), WidthOf(life), HeightOf(life),
                            FlushOf((life.m_uiPlace & 1) != 0));
        Framebuffer().AttachTo(m_Subject.Renderer(), m_bDrawn);
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
        static GuardedFramebuffer framebuffer(
            LongRows ? FuzzedLife::MaxRowsWidth : FuzzedLife::MaxWidth,
            LongRows ? FuzzedLife::MaxRowsHeight : FuzzedLife::MaxHeight);
        return framebuffer;
    }

    void SetOptions(const FuzzedUpdate& update) {
        const int contrast = int{update.m_uiContrast} - 20;
        const bool postProcessing = update.Is(FuzzedUpdate::PostProcessing);
        m_Subject.Renderer().SetContrastEnhance(contrast);
        m_Subject.Model().Renderer().SetContrast(contrast);
        m_Subject.Renderer().SetClientPostprocessingEnabled(postProcessing);
        m_Subject.Model().Renderer().SetPostProcessing(postProcessing);
    }

    ModelOutcome Compare(const UpdateCall& call) {
        model::ModelStream stream({call.bytes.begin(), call.bytes.end()}, call.pieceCapacity);
        ModelOutcome expected = m_Subject.Model().Update(call.quality, call.area, stream);
        const ModelOutcome actual =
            m_Subject.Update(call.quality, call.area, call.bytes, call.pieceCapacity);
        Check(actual.error == expected.error, "another failure than the model's");
        Check(actual.result == expected.result, "another result than the model's");
        Check(actual.consumedBytes == expected.consumedBytes,
              "another count of consumed bytes than the model's");
        Check(Framebuffer().GuardsIntact(), "bytes beside the framebuffer are overwritten");
        Check(m_bDrawn ? Framebuffer().Holds(m_Subject.Model().Renderer().Memory())
                       : Framebuffer().IsBlank(),
              "another picture than the model's");
        return expected;
    }

    const FuzzedLife& m_Life;
    bool m_bDrawn;
    FuzzedDecoder& m_Subject;
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    const FuzzedLife life = ReadLife(data, size);
    Life(life).Run();
    return 0;
}
