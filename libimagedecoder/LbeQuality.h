#pragma once

#include <array>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Depths of the samples of an LBE update, in bits.
struct LbeQuality {
    uint8_t m_uiLumaBits;
    uint8_t m_uiChromaBits; ///< of Cb and of Cr each
};

/// The lowest quality value; s_aLbeQualities starts with it.
inline constexpr uint32_t LowestLbeQuality = 2;

/// Depths for the quality values 2 to 11.
inline constexpr std::array<LbeQuality, 10> s_aLbeQualities = {
    {{2, 3}, {2, 4}, {3, 3}, {3, 4}, {4, 3}, {4, 4}, {5, 4}, {5, 5}, {6, 4}, {6, 5}}};

/// The highest quality value of a protocol version whose qualities have these bits.
constexpr uint32_t HighestLbeQuality(uint32_t qualityMask) {
    constexpr uint32_t Highest = LowestLbeQuality + uint32_t{s_aLbeQualities.size()} - 1;
    return qualityMask < Highest ? qualityMask : Highest;
}

} // namespace Vostrel::libimagedecoder
