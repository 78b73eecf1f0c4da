#pragma once

#include <array>
#include <cstdint>

namespace Vostrel::streamencoder {

/// The level to send for each 8-bit sample: the one whose expansion in the viewer comes nearest,
/// the lower index where two are equally near.
using LevelMap = std::array<uint8_t, 256>;

/// bits: 2 to 6. Throws std::out_of_range for any other.
LevelMap NearestLumaLevels(unsigned bits);

/// Levels as the two's-complement patterns of the stream. bits: 3 to 5. Throws std::out_of_range
/// for any other.
LevelMap NearestChromaLevels(unsigned bits);

} // namespace Vostrel::streamencoder
