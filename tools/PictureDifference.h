#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/Picture.h"

#include <cstddef>
#include <optional>

namespace Vostrel::streamencoder {

/// How two pictures of one size differ.
struct PictureDifference {
    size_t m_uiPixels = 0;                          ///< that differ
    libimagedecoder::UpdateRectangle m_rectangle{}; ///< that holds them; empty without any
    double m_fSquares = 0;                          ///< sum over all samples
    size_t m_uiSamples = 0;                         ///< three a pixel
};

/// The pictures must have the same size, at most 65535 pixels a side.
PictureDifference Compare(const Picture& a, const Picture& b);

/// Peak signal-to-noise ratio of 8-bit samples in decibels; nothing when they are equal.
std::optional<double> PsnrOf(double squares, size_t samples);

/// A picture of the absolute differences, and how many times brighter than they are it shows them:
/// the largest is white.
struct ShownDifference {
    Picture m_picture;
    double m_fGain = 1;
};

ShownDifference ShowDifference(const Picture& a, const Picture& b);

} // namespace Vostrel::streamencoder
