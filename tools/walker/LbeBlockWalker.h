#pragma once

#include "libimagedecoder/LbeQuality.h"
#include "tools/walker/BlockWalker.h"

namespace Vostrel::walker {

/// Walks LBE's blocks: a luma and a chroma plane of literals and runs.
class LbeBlockWalker : public BlockWalker {
public:
    LbeBlockWalker(const WalkFormat& format, const libimagedecoder::LbeQuality& quality);

    void Walk(BitCursor& bits, IStreamVisitor& visitor) override;

private:
    struct PlaneFormat {
        size_t m_uiSamples;
        unsigned m_uiLiteralBits;
        unsigned m_uiLongRunBits;
    };

    void WalkPlane(const PlaneFormat& plane, BitCursor& bits, IStreamVisitor& visitor);
    Symbol WalkSymbol(const PlaneFormat& plane, size_t sample, BitCursor& bits);
    size_t ReadRun(const PlaneFormat& plane, size_t samplesLeft, BitCursor& bits);

    PlaneFormat m_luma;
    PlaneFormat m_chroma;
};

} // namespace Vostrel::walker
