#include "tools/walker/LbeBlockWalker.h"

#include "libimagedecoder/LbeSyntax.h"
#include "libimagedecoder/Macroblock.h"
#include "libimagedecoder/UpdateSyntax.h"

#include <algorithm>

namespace Vostrel::walker {
namespace {

using namespace libimagedecoder;

constexpr size_t LumaSamples = MacroblockEdge * MacroblockEdge;

} // namespace

LbeBlockWalker::LbeBlockWalker(const WalkFormat& format, const libimagedecoder::LbeQuality& quality)
    : m_luma{LumaSamples, quality.m_uiLumaBits, LbeLumaCountBits},
      m_chroma{LumaSamples / ChromaDivX(format.m_chroma) / ChromaDivY(format.m_chroma),
               2U * quality.m_uiChromaBits,
               RulesOf(format.m_uiProtocolVersion).m_uiLbeChromaCountBits} {}

void LbeBlockWalker::Walk(BitCursor& bits, IStreamVisitor& visitor) {
    BeginTile(0, libimagedecoder::ComponentY, bits);
    WalkPlane(m_luma, bits, visitor);
    EndTile(bits, visitor);
    BeginTile(1, libimagedecoder::ComponentCb, bits);
    WalkPlane(m_chroma, bits, visitor);
    EndTile(bits, visitor);
}

void LbeBlockWalker::WalkPlane(const PlaneFormat& plane, BitCursor& bits, IStreamVisitor& visitor) {
    for (size_t sample = 0; sample < plane.m_uiSamples;) {
        const Symbol symbol = WalkSymbol(plane, sample, bits);
        Tell(visitor, symbol);
        sample += symbol.m_kind == SymbolKind::Literal ? 1 : symbol.m_uiRun;
    }
}

Symbol LbeBlockWalker::WalkSymbol(const PlaneFormat& plane, size_t sample, BitCursor& bits) {
    Symbol symbol;
    symbol.m_uiPosition = sample;
    const size_t first = bits.GetPosition();
    if (bits.Read(1, "the first bit of a literal or run") == 0) {
        symbol.m_kind = SymbolKind::Literal;
        symbol.m_uiCodeBits = 1;
        symbol.m_uiSize = plane.m_uiLiteralBits;
        symbol.m_iValue = static_cast<int>(bits.Read(plane.m_uiLiteralBits, "a literal"));
    } else {
        const bool fromLeft = bits.Read(1, "the source of a run") != 0;
        symbol.m_kind = fromLeft ? SymbolKind::RunFromLeft : SymbolKind::RunFromAbove;
        const size_t samplesLeft = plane.m_uiSamples - sample;
        const size_t run = ReadRun(plane, samplesLeft, bits);
        symbol.m_uiRun = static_cast<unsigned>(std::min(run, samplesLeft));
        symbol.m_uiCodeBits = bits.GetPosition() - first;
    }
    symbol.m_bits = {first, bits.GetPosition() - first};
    return symbol;
}

size_t LbeBlockWalker::ReadRun(const PlaneFormat& plane, size_t samplesLeft, BitCursor& bits) {
    if (bits.Read(1, "the form of a run") == 0)
        return bits.Read(1, "the length of a short run") + 1;
    const uint32_t code = bits.Read(LbeRunCodeBits, "the length of a long run");
    if (code == LbeRunToPlaneEnd)
        return samplesLeft;
    if (code == LbeCountFollows)
        return bits.Read(plane.m_uiLongRunBits, "the count of a long run") + LbeShortestLongRun;
    return code + LbeShortestLongRun;
}

} // namespace Vostrel::walker
