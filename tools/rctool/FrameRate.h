#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace Vostrel::rctool {

/// Frames in a number of seconds, as a fraction without common factors, both below 2^31.
struct FrameRate {
    uint32_t m_uiFrames = 25;
    uint32_t m_uiSeconds = 1;

    bool operator==(const FrameRate&) const = default;
};

/// The fraction nearest to a number of frames a second, 0.001 to 1,000,000: whole numbers, and
/// those of television (30000/1001), are exact, others to six digits.
FrameRate RateOf(double framesPerSecond);

/// The rate of updates that follow each other at a constant period, but for the rounding of their
/// times to microseconds. Nothing for fewer than two, and for other times.
std::optional<FrameRate> ConstantRate(const std::vector<uint64_t>& times);

/// The number of the first frame that shows an update so many microseconds after frame 0. A time
/// that was rounded down to whole microseconds counts as not rounded.
uint64_t FrameOf(const FrameRate& rate, uint64_t microseconds);

} // namespace Vostrel::rctool
