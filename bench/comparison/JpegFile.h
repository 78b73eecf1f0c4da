#pragma once

#include "bench/comparison/LevelPicture.h"

#include <cstdint>
#include <vector>

namespace Vostrel::bench {

/// Writes levels as a JPEG file with the standard code tables, without any loss.
std::vector<uint8_t> WriteJpeg(const LevelPicture& picture, uint32_t quality);

/// Reads the levels back.
LevelPicture ReadJpeg(const std::vector<uint8_t>& file);

} // namespace Vostrel::bench
