#include "tools/rctool/FrameRate.h"

#include <cmath>
#include <numeric>

namespace Vostrel::rctool {
namespace {

constexpr double MicrosecondsOfASecond = 1e6;

FrameRate Reduced(double frames, uint32_t seconds) {
    const auto whole = static_cast<uint32_t>(std::lround(frames));
    const uint32_t divisor = std::gcd(whole, seconds);
    return {whole / divisor, seconds / divisor};
}

bool IsWhole(double number) {
    return std::abs(number - std::round(number)) < 1e-6 * number;
}

} // namespace

FrameRate RateOf(double framesPerSecond) {
    constexpr uint32_t Television = 1001;
    if (IsWhole(framesPerSecond) && framesPerSecond >= 1)
        return Reduced(framesPerSecond, 1);
    const double inTelevision = framesPerSecond * Television / 1000;
    if (IsWhole(inTelevision) && inTelevision >= 1)
        return Reduced(1000 * inTelevision, Television);
    const uint32_t seconds = framesPerSecond < 1000 ? 1'000'000 : 1000;
    return Reduced(framesPerSecond * seconds, seconds);
}

std::optional<FrameRate> ConstantRate(const std::vector<uint64_t>& times) {
    constexpr double Rounding = 1;
    if (times.size() < 2 || times.back() <= times.front())
        return std::nullopt;
    const auto periods = static_cast<double>(times.size() - 1);
    const auto all = static_cast<double>(times.back() - times.front());
    const double period = all / periods;
    if (period < 2 * Rounding || period > 1000 * MicrosecondsOfASecond)
        return std::nullopt;
    for (size_t i = 0; i < times.size(); ++i) {
        const double expected = period * static_cast<double>(i);
        if (times[i] < times.front() ||
            std::abs(static_cast<double>(times[i] - times.front()) - expected) > Rounding)
            return std::nullopt;
    }
    const double whole = std::round(MicrosecondsOfASecond / period);
    const bool isWhole = std::abs(periods * MicrosecondsOfASecond / whole - all) <= Rounding;
    return RateOf(isWhole ? whole : MicrosecondsOfASecond / period);
}

uint64_t FrameOf(const FrameRate& rate, uint64_t microseconds) {
    if (microseconds <= 1)
        return 0;
    const auto time = static_cast<long double>(microseconds - 1);
    return static_cast<uint64_t>(
        std::ceil(time * rate.m_uiFrames /
                  (static_cast<long double>(MicrosecondsOfASecond) * rate.m_uiSeconds)));
}

} // namespace Vostrel::rctool
