#include "libimagedecoder/IctCodingTables.h"

namespace Vostrel::libimagedecoder {

// clang-format off
constinit const std::array<uint8_t, 64> IctCodingTables::s_aZigZagTile{
     0,  1,  8, 16,  9,  2,  3, 10,
    17, 24, 32, 25, 18, 11,  4,  5,
    12, 19, 26, 33, 40, 48, 41, 34,
    27, 20, 13,  6,  7, 14, 21, 28,
    35, 42, 49, 56, 57, 50, 43, 36,
    29, 22, 15, 23, 30, 37, 44, 51,
    58, 59, 52, 45, 38, 31, 39, 46,
    53, 60, 61, 54, 47, 55, 62, 63};

constinit const std::array<uint32_t, 64> IctCodingTables::s_aLumQuantBaseTile{
    16, 11, 10, 16,  24,  40,  51,  61,
    12, 12, 14, 19,  26,  58,  60,  55,
    14, 13, 16, 24,  40,  57,  69,  56,
    14, 17, 22, 29,  51,  87,  80,  62,
    18, 22, 37, 56,  68, 109, 103,  77,
    24, 35, 55, 64,  81, 104, 113,  92,
    49, 64, 78, 87, 103, 121, 120, 101,
    72, 92, 95, 98, 112, 100, 103,  99};

constinit const std::array<uint32_t, 64> IctCodingTables::s_aChromaQuantBaseTile{
    17, 18, 24, 47, 99, 99, 99, 99,
    18, 21, 26, 66, 99, 99, 99, 99,
    24, 26, 56, 99, 99, 99, 99, 99,
    47, 66, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99};
// clang-format on

// Several rows share a scale and differ in the shift. That is not the same as scaling further: the
// reciprocal is rounded before its bits are dropped.
constinit const std::array<IctQuality, 16> IctCodingTables::s_aQualityTable{{
    {0.7, 3},
    {0.5, 3},
    {0.7, 2},
    {0.5, 2},
    {0.2, 3},
    {0.7, 1},
    {0.15, 3},
    {0.5, 1},
    {0.2, 2},
    {0.7, 0},
    {0.15, 2},
    {0.5, 0},
    {0.2, 1},
    {0.15, 1},
    {0.2, 0},
    {0.15, 0},
}};

uint64_t QuantiserReciprocal(unsigned int quant, double scale, unsigned char shift) {
    constexpr double FractionOne = 8192.0;
    constexpr uint64_t LargestFraction = 8191;

    uint64_t reciprocal = RoundHalfUp(FractionOne / (quant * scale));
    // A step of exactly 1 has no 13-bit fraction.
    if (reciprocal == LargestFraction + 1) {
        reciprocal = LargestFraction;
    }
    return reciprocal >> shift;
}

} // namespace Vostrel::libimagedecoder
