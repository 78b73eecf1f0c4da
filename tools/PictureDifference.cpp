#include "tools/PictureDifference.h"

#include "tools/ChangedRectangle.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Vostrel::streamencoder {

using libimagedecoder::UpdateRectangle;

namespace {

constexpr double White = 255;

RgbPixel AbsoluteDifference(const RgbPixel& a, const RgbPixel& b) {
    RgbPixel difference{};
    for (size_t i = 0; i < difference.size(); ++i)
        difference[i] = static_cast<uint8_t>(std::abs(a[i] - b[i]));
    return difference;
}

} // namespace

PictureDifference Compare(const Picture& a, const Picture& b) {
    PictureDifference found;
    found.m_uiSamples = 3 * a.m_vPixels.size();
    const UpdateRectangle all{0, 0, static_cast<uint16_t>(a.m_uiWidth),
                              static_cast<uint16_t>(a.m_uiHeight)};
    found.m_rectangle = ChangedRectangle(a, b, all).value_or(UpdateRectangle{});
    for (size_t i = 0; i < a.m_vPixels.size(); ++i) {
        if (a.m_vPixels[i] == b.m_vPixels[i])
            continue;
        ++found.m_uiPixels;
        for (const uint8_t sample : AbsoluteDifference(a.m_vPixels[i], b.m_vPixels[i]))
            found.m_fSquares += double{1} * sample * sample;
    }
    return found;
}

std::optional<double> PsnrOf(double squares, size_t samples) {
    if (squares == 0)
        return std::nullopt;
    return 10 * std::log10(White * White * static_cast<double>(samples) / squares);
}

ShownDifference ShowDifference(const Picture& a, const Picture& b) {
    ShownDifference shown{Picture(a.m_uiWidth, a.m_uiHeight), 1};
    uint8_t most = 0;
    for (size_t i = 0; i < a.m_vPixels.size(); ++i) {
        RgbPixel& pixel = shown.m_picture.m_vPixels[i];
        pixel = AbsoluteDifference(a.m_vPixels[i], b.m_vPixels[i]);
        most = std::max({most, pixel[0], pixel[1], pixel[2]});
    }
    if (most == 0)
        return shown;
    shown.m_fGain = White / most;
    for (RgbPixel& pixel : shown.m_picture.m_vPixels) {
        for (uint8_t& sample : pixel)
            sample = static_cast<uint8_t>(std::lround(shown.m_fGain * sample));
    }
    return shown;
}

} // namespace Vostrel::streamencoder
