#pragma once

#include <array>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The 8-bit samples that the levels of a reduced-depth update stand for.
///
/// Luma of 2 to 4 bits reaches white; luma of 5 and 6 bits stops short of it. Chroma levels are
/// two's-complement numbers around the centre 128, listed by bit pattern: zero and the positive
/// levels first, then the negative ones from the most negative up. The second-most-negative level
/// is 1, not a step above 0.
struct QuantizedLevels {
    static constexpr std::array<uint8_t, 4> s_auiLuma2 = {0, 85, 170, 255};
    static constexpr std::array<uint8_t, 8> s_auiLuma3 = {0, 36, 73, 109, 146, 182, 219, 255};
    static constexpr std::array<uint8_t, 16> s_auiLuma4 = {0,   17,  34,  51,  68,  85,  102, 119,
                                                           136, 153, 170, 187, 204, 221, 238, 255};
    static constexpr std::array<uint8_t, 32> s_auiLuma5 = {
        0,   8,   16,  24,  32,  40,  48,  56,  64,  72,  80,  88,  96,  104, 112, 120,
        128, 136, 144, 152, 160, 168, 176, 184, 192, 200, 208, 216, 224, 232, 240, 248};
    static constexpr std::array<uint8_t, 64> s_auiLuma6 = {
        0,   4,   8,   12,  16,  20,  24,  28,  32,  36,  40,  44,  48,  52,  56,  60,
        64,  68,  72,  76,  80,  84,  88,  92,  96,  100, 104, 108, 112, 116, 120, 124,
        128, 132, 136, 140, 144, 148, 152, 156, 160, 164, 168, 172, 176, 180, 184, 188,
        192, 196, 200, 204, 208, 212, 216, 220, 224, 228, 232, 236, 240, 244, 248, 252};

    static constexpr std::array<uint8_t, 8> s_auiChroma3 = {128, 170, 213, 255, 0, 1, 43, 86};
    static constexpr std::array<uint8_t, 16> s_auiChroma4 = {
        128, 146, 164, 182, 201, 219, 237, 255, 0, 1, 19, 37, 55, 74, 92, 110};
    static constexpr std::array<uint8_t, 32> s_auiChroma5 = {
        128, 136, 145, 153, 162, 170, 179, 187, 196, 204, 213, 221, 230, 238, 247, 255,
        0,   1,   9,   18,  26,  35,  43,  52,  60,  69,  77,  86,  94,  103, 111, 120};
};

} // namespace Vostrel::libimagedecoder
