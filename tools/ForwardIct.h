#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::streamencoder {

/// Coefficients of one 8x8 tile, row-major: entry 8 * v + u has the vertical frequency v and the
/// horizontal frequency u.
using IctCoefficients = std::array<double, 64>;

/// Transforms a tile of 8x8 samples so that the decoder's inverse, a plain sum of integer basis
/// functions times coefficients, gives the samples back: the projections on the basis are divided
/// by its squared norms. The samples' centre of 128 is taken off, and the half unit is added that
/// the decoder loses on average when it floors its sums.
///
/// Row y of the tile starts at samples + y * stride.
IctCoefficients ForwardIct(const uint8_t* samples, size_t stride);

} // namespace Vostrel::streamencoder
