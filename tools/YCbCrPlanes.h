#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/Picture.h"
#include "tools/UpdateFormat.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::streamencoder {

/// Samples of one colour component, rows without gaps.
struct Plane {
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;
    std::vector<uint8_t> m_vuiSamples;

    Plane() = default;
    Plane(size_t width, size_t height)
        : m_uiWidth(width), m_uiHeight(height), m_vuiSamples(width * height) {}

    const uint8_t* At(size_t x, size_t y) const { return &m_vuiSamples[y * m_uiWidth + x]; }
    uint8_t* At(size_t x, size_t y) { return &m_vuiSamples[y * m_uiWidth + x]; }
};

/// The samples of a rectangle of whole 16x16 blocks, chroma at its own resolution.
struct YCbCrPlanes {
    Plane m_y;
    Plane m_cb;
    Plane m_cr;
};

/// Converts a rectangle of a picture, rounded up to whole 16x16 blocks, by the full-range equations
/// of ITU-R BT.601. A chroma sample is the mean over the pixels that share it. Beyond the picture's
/// right and bottom edges the nearest pixel repeats. The rectangle's corner lies in the picture.
YCbCrPlanes ConvertToYCbCr(const Picture& picture,
                           const libimagedecoder::UpdateRectangle& rectangle,
                           ChromaSubsampling chroma);

} // namespace Vostrel::streamencoder
