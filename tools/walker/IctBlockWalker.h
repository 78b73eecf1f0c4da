#pragma once

#include "tools/walker/BlockWalker.h"

namespace Vostrel::walker {

struct IctCode;

/// Walks ICT's macroblocks: tiles of a DC difference and of coefficients.
class IctBlockWalker : public BlockWalker {
public:
    explicit IctBlockWalker(const WalkFormat& format);

    void Walk(BitCursor& bits, IStreamVisitor& visitor) override;

private:
    void WalkTile(const IctCode& dc, const IctCode& ac, BitCursor& bits, IStreamVisitor& visitor);
    Symbol WalkDc(const IctCode& dc, BitCursor& bits);
    Symbol WalkAc(const IctCode& ac, size_t position, BitCursor& bits);

    size_t m_uiChromaTiles; ///< of each of Cb and Cr; Y has four
};

} // namespace Vostrel::walker
