#pragma once

#include "libimagedecoder/IctCodingTables.h"
#include "tools/ForwardIct.h"

#include <array>
#include <cstdint>

namespace Vostrel::streamencoder {

/// Levels of one tile, row-major, as the stream codes them.
using IctLevels = std::array<int, 64>;

/// Turns the coefficients of one component into levels, each the one from which the decoder
/// reconstructs the nearest coefficient.
class IctQuantiser {
public:
    /// The greatest level in either direction: AC codes end at 10 bits, and two DC levels of this
    /// size still differ by no more than 11 bits can tell.
    static constexpr int MaxLevel = 1023;

    /// baseTile: the component's base steps, row-major.
    IctQuantiser(const std::array<uint32_t, 64>& baseTile,
                 const libimagedecoder::IctQuality& quality);

    IctLevels Quantise(const IctCoefficients& coefficients) const;

    /// What the decoder makes of a level at a row-major index, in units of 1/64 coefficient.
    int64_t Reconstruct(size_t index, int level) const;

private:
    int NearestLevel(size_t index, double target) const;

    std::array<int64_t, 64> m_aiMultiplier{}; ///< of 1/64 coefficient for a level, times 2^10
};

} // namespace Vostrel::streamencoder
