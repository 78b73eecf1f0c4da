#pragma once

#include "tools/PngFile.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::rctool {

/// The largest frames: those of the framebuffers of the Java API.
constexpr size_t MaxSide = 16384;
constexpr size_t MaxPixels = 67'108'864;

/// Throws std::runtime_error, which names the frame, for a size beyond the limit.
void CheckLimit(const std::string& frame, const streamencoder::PictureSize& size);

/// Throws std::runtime_error for a frame of another size than the recording's.
void CheckSame(const std::string& frame, const streamencoder::PictureSize& size,
               const streamencoder::PictureSize& recorded);

/// Checks the sizes of all frames before the first is encoded. recorded: the size that they must
/// have; without it, and unless it may change, that of the first. Files that can be read only once,
/// such as pipes, are left out: they are checked when they are read. Throws as the checks above.
void CheckFrames(const std::vector<std::string>& frames,
                 std::optional<streamencoder::PictureSize> recorded, bool mayChange);

} // namespace Vostrel::rctool
