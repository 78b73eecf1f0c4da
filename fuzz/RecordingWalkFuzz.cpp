// Lives of decoders, as the update harnesses have them: a walk through an update's bits ends with
// the decoder's verdict, at the decoder's last byte, and names only bits that are there. Built
// twice, with FUZZED_CODEC as Ict and as Lbe.

#include "fuzz/FuzzedDecoder.h"
#include "fuzz/UpdateInput.h"
#include "tools/walker/StreamStatistics.h"
#include "tools/walker/StreamWalker.h"

#include <algorithm>
#include <optional>

namespace Vostrel::fuzz {
namespace {

using namespace walker;
using model::ModelCodec;
using model::ModelOutcome;
using model::ModelSink;

constexpr ModelCodec Codec = ModelCodec::FUZZED_CODEC;

/// Follows a walk: every span begins where the one before ended, or behind filling bits.
class Follower : public IStreamVisitor {
public:
    explicit Follower(size_t payloadBits) : m_uiPayloadBits(payloadBits) {}

    void OnSkip(const SkipCode& skip) override { Follow(skip.m_bits); }
    void OnSymbol(const Symbol& symbol) override {
        Follow(symbol.m_bits);
        Check(symbol.m_uiCodeBits <= symbol.m_bits.m_uiCount, "a code longer than its symbol");
        m_uiSymbolBits += symbol.m_bits.m_uiCount;
    }
    void OnTile(const Tile& tile) override {
        Check(tile.m_bits.End() == m_uiLast && tile.m_bits.m_uiCount == m_uiSymbolBits,
              "a tile has other bits than its symbols");
        m_uiSymbolBits = 0;
    }
    void OnMacroblock(const Macroblock& block) override {
        Check(block.m_data.End() == m_uiLast, "a macroblock's data do not end with its tiles");
        Check(block.m_bCut || block.m_record.End() == m_uiLast, "a macroblock ends elsewhere");
        m_uiLast = block.m_record.End();
    }
    void OnError(const StreamFault& fault) override {
        Check(!m_fault, "two faults in one update");
        Check(fault.m_uiBit <= m_uiPayloadBits + BitsBehind, "a fault behind the data");
        Check(!fault.m_expected.empty() && !fault.m_found.empty(), "a fault without a word");
        m_fault = fault;
    }

    const std::optional<StreamFault>& GetFault() const { return m_fault; }

private:
    /// Zeros that a decoder may read behind the data: padding, and behind a record four bytes and
    /// as many as its skip code and length were fetched with.
    static constexpr size_t BitsBehind = size_t{8} * (2 + 4 + 5);

    void Follow(const BitSpan& bits) {
        Check(!m_fault, "something follows a fault");
        Check(bits.m_uiFirst >= m_uiLast, "a walk goes back");
        m_uiLast = bits.End();
        Check(m_uiLast <= m_uiPayloadBits + BitsBehind, "a walk leaves the data");
    }

    size_t m_uiPayloadBits;
    size_t m_uiLast = 0;
    size_t m_uiSymbolBits = 0;
    std::optional<StreamFault> m_fault;
};

class Life {
public:
    explicit Life(const FuzzedLife& life)
        : m_Life(life),
          m_Subject(FuzzedDecoder::For(
              {{Codec, life.Version(), life.Chroma(), life.Threads(), RuleOf(life.Kernel())},
               life.Kernel()})),
          m_walker(
              {Codec == ModelCodec::Ict ? streamencoder::Codec::Ict : streamencoder::Codec::Lbe,
               life.Version(), static_cast<streamencoder::ChromaSubsampling>(life.Chroma()),
               life.HasPool()}) {
        m_Subject.Reset(ModelSink::Argb, life.Width(), life.Height());
        Framebuffer().Place(ModelSink::Argb, model::ChromaOf(life.Chroma()), life.Width(),
                            life.Height(), FlushOf(false));
        Framebuffer().AttachTo(m_Subject.Renderer(), true);
        m_walker.SetResolution(static_cast<uint16_t>(life.Width()),
                               static_cast<uint16_t>(life.Height()));
    }

    void Run() {
        for (const FuzzedUpdate& update : m_Life.m_vUpdates)
            Compare(update.m_uiQuality | (update.Is(FuzzedUpdate::LargeQuality) ? 0xFFFFFF00U : 0),
                    AreaOf(update), update.m_Payload);
    }

private:
    static GuardedFramebuffer& Framebuffer() {
        static GuardedFramebuffer framebuffer(FuzzedLife::MaxWidth, FuzzedLife::MaxHeight);
        return framebuffer;
    }

    libimagedecoder::UpdateRectangle AreaOf(const FuzzedUpdate& update) const {
        if (update.Is(FuzzedUpdate::FarRectangle))
            return {update.m_uiX, update.m_uiY, update.m_uiWidth, update.m_uiHeight};
        // Now and then a little more than the framebuffer has room for.
        const int width = m_Life.Width();
        const int height = m_Life.Height();
        return {static_cast<uint16_t>(update.m_uiX % (width + 8)),
                static_cast<uint16_t>(update.m_uiY % (height + 8)),
                static_cast<uint16_t>(update.m_uiWidth % (width + 24)),
                static_cast<uint16_t>(update.m_uiHeight % (height + 24))};
    }

    void Compare(uint32_t quality, const libimagedecoder::UpdateRectangle& area,
                 std::span<const uint8_t> payload) {
        const streamencoder::EncodedUpdate update{quality, area, {payload.begin(), payload.end()}};
        const ModelOutcome decoded =
            m_Subject.Update(quality, {area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight},
                             update.m_vuiPayload, GuardedStreambuffer::MaxPiece);

        Follower follower(8 * payload.size());
        const auto end = m_walker.Walk(update, follower);
        const auto& fault = follower.GetFault();
        Check(end.has_value() != fault.has_value(), "a walk without a verdict");
        Check(end.has_value() == (decoded.result != ~uint64_t{0}),
              "another verdict than the decoder's");
        if (fault) {
            // LBE refuses a quality without a word.
            Check(fault->m_failure == (decoded.error.empty() ? UnknownQuality : decoded.error),
                  "another failure than the decoder's");
            return;
        }
        const size_t bytes = (end->m_uiBits + 7) / 8;
        Check(std::min(bytes, payload.size()) == decoded.consumedBytes,
              "another last byte than the decoder's");
        StreamStatistics statistics;
        m_walker.Walk(update, statistics);
    }

    static constexpr const char* UnknownQuality = "The quality is unknown";

    const FuzzedLife& m_Life;
    FuzzedDecoder& m_Subject;
    StreamWalker m_walker;
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    const FuzzedLife life = ReadLife(data, size);
    Life(life).Run();
    return 0;
}
