#pragma once

#include "tools/Picture.h"
#include "tools/UpdateFormat.h"
#include "tools/rctool/FrameRate.h"
#include "tools/rctool/Progress.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

namespace Vostrel::rctool {

/// Size and times of a video, which are known before its first frame.
struct VideoPlan {
    streamencoder::PictureSize m_size; ///< the largest width and height of the framebuffer
    FrameRate m_rate;

    /// Of every update the first frame that shows it, if the next one does not come in time for the
    /// same; at the end the number of all frames.
    std::vector<uint64_t> m_vuiFirstFrames{0};

    size_t GetUpdates() const { return m_vuiFirstFrames.size() - 1; }
    uint64_t GetFrames() const { return m_vuiFirstFrames.back(); }
};

/// Reads a recording from its first record to its end, and goes back if it has updates. rate:
/// without it the recording's own when its updates have a constant period, else 25 frames a second.
/// Throws std::runtime_error for a video that would be too long.
VideoPlan PlanVideo(recording::RecordingReader& reader, std::optional<FrameRate> rate);

/// Writes what the player shows at the times of the frames: an update is seen from the first frame
/// on that is not before it. chroma: 4:2:0 or 4:4:4. The player must be new, with an ARGB target.
/// progress: counts the updates. Returns how many updates fail that did not when they were
/// recorded. Throws std::runtime_error when not all could be written.
size_t ExportVideo(recording::RecordingReader& reader, recording::Player& player,
                   const VideoPlan& plan, streamencoder::ChromaSubsampling chroma, std::FILE* file,
                   Progress& progress);

} // namespace Vostrel::rctool
