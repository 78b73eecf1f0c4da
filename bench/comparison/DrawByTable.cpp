#include "bench/comparison/PlainLoops.h"

namespace Vostrel::bench {

void DrawByTable(const LevelsToDraw& levels, const unsigned* table, uint32_t* pixels) {
    const size_t chromaStride = levels.m_uiWidth / levels.m_uiChromaDivX;
    const unsigned pairBits = 2 * levels.m_uiChromaBits;
    for (size_t y = 0; y < levels.m_uiHeight; ++y) {
        const uint8_t* const luma = levels.m_puiLuma + y * levels.m_uiWidth;
        const uint16_t* const chroma =
            levels.m_puiChroma + y / levels.m_uiChromaDivY * chromaStride;
        uint32_t* const row = pixels + y * levels.m_uiWidth;
        // Widths are known to be even, so a pair of levels serves its pixels without a division.
        for (size_t x = 0, j = 0; x < levels.m_uiWidth; ++j) {
            for (size_t i = 0; i < levels.m_uiChromaDivX; ++i, ++x)
                row[x] = table[static_cast<unsigned>(luma[x]) << pairBits | chroma[j]];
        }
    }
}

} // namespace Vostrel::bench
