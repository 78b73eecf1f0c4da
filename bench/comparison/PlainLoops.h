#pragma once

#include <cstddef>
#include <cstdint>

namespace Vostrel::bench {

/// Stores 32 bytes at a time to a framebuffer, and nothing else: what writing it costs at least.
/// count: pixels, a multiple of 8. Wants AVX2.
void StorePixels(uint32_t* pixels, size_t count, uint32_t word);

/// Levels of a picture of reduced depth, as the renderer takes them.
struct LevelsToDraw {
    const uint8_t* m_puiLuma;    ///< one level per pixel
    const uint16_t* m_puiChroma; ///< one pair of levels per chroma sample
    size_t m_uiWidth;
    size_t m_uiHeight;
    size_t m_uiChromaDivX;
    size_t m_uiChromaDivY;
    unsigned m_uiChromaBits; ///< of one level
};

/// Draws them by reading the colour of each pixel from a table, indexed by the luma level followed
/// by the chroma pair.
void DrawByTable(const LevelsToDraw& levels, const unsigned* table, uint32_t* pixels);

} // namespace Vostrel::bench
