#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/MaskRuns.h"

#include <algorithm>

namespace Vostrel::libimagedecoder {
namespace {

constexpr int MaxContrastEnhance = 100;

/// Levels up to the threshold become black, those from its mirror image on become white, and those
/// between are spread. The spread multiplies by the count of levels, not by the largest one, so
/// that strength 0 is an exact identity.
template <size_t Levels>
void FillContrastLut(std::array<unsigned char, Levels>& lut, int strength) {
    constexpr int Count = static_cast<int>(Levels);
    constexpr int Largest = Count - 1;
    const int threshold = strength * Count / 256;
    for (int level = 0; level < Count; ++level) {
        int stretched = 0;
        if (level >= Largest - threshold && level > threshold)
            stretched = Largest;
        else if (level > threshold)
            stretched = Count * (level - threshold) / (Largest - 2 * threshold);
        lut[static_cast<size_t>(level)] = static_cast<unsigned char>(stretched);
    }
}

} // namespace

void ImageDecoderRenderer::SetContrastEnhance(int level) {
    if (level == m_iContrastEnhance || level < 0 || level > MaxContrastEnhance)
        return;
    m_iContrastEnhance = level;
    FillContrastLut(m_aucContrastLut8, level);
    FillContrastLut(m_aucContrastLut6, level);
    FillContrastLut(m_aucContrastLut5, level);
    FillContrastLut(m_aucContrastLut4, level);
    FillContrastLut(m_aucContrastLut3, level);
    FillContrastLut(m_aucContrastLut2, level);
}

const unsigned char* ImageDecoderRenderer::GetContrastLut(unsigned char valueSizeBits) const {
    switch (valueSizeBits) {
    case 8:
        return m_aucContrastLut8.data();
    case 6:
        return m_aucContrastLut6.data();
    case 5:
        return m_aucContrastLut5.data();
    case 4:
        return m_aucContrastLut4.data();
    case 3:
        return m_aucContrastLut3.data();
    case 2:
        return m_aucContrastLut2.data();
    default:
        return nullptr;
    }
}

void ImageDecoderRenderer::ApplyContrastEnhancement(unsigned short width, unsigned short height,
                                                    unsigned long stride, unsigned char* luma,
                                                    unsigned char valueSizeBits,
                                                    const bool* skipMask) {
    const unsigned char* const lut = GetContrastLut(valueSizeBits);
    if (lut == nullptr || m_iContrastEnhance >> (8 - valueSizeBits) == 0)
        return;
    // Samples that are deeper than they are said to be must not lead out of the table.
    const unsigned int levelMask = (1u << valueSizeBits) - 1;
    const size_t columns = MacroblocksAcross(width);
    for (size_t top = 0; top < height; top += MacroblockEdge, skipMask += columns) {
        const size_t bottom = std::min<size_t>(top + MacroblockEdge, height);
        ForEachUnmaskedRun(skipMask, columns, [&](size_t first, size_t end) {
            const size_t right = std::min<size_t>(end * MacroblockEdge, width);
            for (size_t y = top; y < bottom; ++y)
                for (size_t x = first * MacroblockEdge; x < right; ++x)
                    luma[y * stride + x] = lut[luma[y * stride + x] & levelMask];
        });
    }
}

} // namespace Vostrel::libimagedecoder
