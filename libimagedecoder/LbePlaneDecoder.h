#pragma once

#include "libimagedecoder/BitStreamReader.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// How one plane of an LBE block is coded.
struct LbePlaneFormat {
    size_t m_uiSamples;       ///< 64, 128 or 256, in row order
    size_t m_uiRowWidth;      ///< 8 or 16; the sample above is that many samples back
    uint32_t m_uiLiteralBits; ///< width of a sample
    uint32_t m_uiLongRunBits; ///< width of the longest run count
};

/// Samples of one plane of a block, while it is decoded. A row of zeros precedes them: what a run
/// copies from before the first sample is zero.
class LbePlaneBuffer {
public:
    static constexpr size_t MaxSamples = 256;
    static constexpr size_t MaxRowWidth = 16;

    uint16_t* Samples() { return m_auiStorage.data() + MaxRowWidth; }

private:
    std::array<uint16_t, MaxRowWidth + MaxSamples> m_auiStorage{};
};

/// Decodes one plane: literals, and runs that copy from the left or from above. The left neighbour
/// of a row's first sample is the last one of the row before. A run that passes the plane's end
/// stops there. Throws what the reader throws.
void DecodeLbePlane(BitStreamReader& reader, const LbePlaneFormat& format, LbePlaneBuffer& buffer);

} // namespace Vostrel::libimagedecoder
