#include "tools/IctQuantiser.h"

#include "libimagedecoder/ImageDecoderIct.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Vostrel::streamencoder {

using libimagedecoder::ImageDecoderIct;
using libimagedecoder::InverseTransform::InverseIct::IInverseIct;

namespace {

// The decoder keeps coefficients with 6 bits of fraction and its multipliers with 10 more.
constexpr int CoefficientFractionBits = 6;
constexpr int MultiplierFractionBits = 10;

} // namespace

IctQuantiser::IctQuantiser(const std::array<uint32_t, 64>& baseTile,
                           const libimagedecoder::IctQuality& quality) {
    const double* const norms = IInverseIct::s_afNormalizationCoefficients;
    for (size_t i = 0; i < 64; ++i)
        m_aiMultiplier[i] = ImageDecoderIct::CalcDequantDenormDescaleTableValue(
            baseTile[i], quality.m_fScale, quality.m_uiShift,
            CoefficientFractionBits + MultiplierFractionBits, norms[i / 8] * norms[i % 8]);
}

int64_t IctQuantiser::Reconstruct(size_t index, int level) const {
    return (level * m_aiMultiplier[index]) >> MultiplierFractionBits;
}

// The decoder floors the product, so the best level is not simply the rounded quotient. At the
// finest qualities a step is less than the unit in which the decoder keeps coefficients: then
// several levels reconstruct the same, and the one nearest zero is the cheapest.
int IctQuantiser::NearestLevel(size_t index, double target) const {
    const double unitsPerLevel =
        static_cast<double>(m_aiMultiplier[index]) / (1 << MultiplierFractionBits);
    const double quotient = std::clamp<double>(target / unitsPerLevel, -MaxLevel, MaxLevel);
    // A coefficient lies within half a unit of the nearest one kept, and the levels that floor to
    // that one span a whole unit: no candidate is 2 units away.
    const auto reach = static_cast<int>(std::ceil(2.0 / unitsPerLevel));
    const auto lowest = std::max(static_cast<int>(std::floor(quotient)) - reach, -MaxLevel);
    const auto highest = std::min(static_cast<int>(std::ceil(quotient)) + reach, MaxLevel);

    int best = lowest;
    double bestError = INFINITY;
    for (int level = lowest; level <= highest; ++level) {
        const double error = std::fabs(static_cast<double>(Reconstruct(index, level)) - target);
        if (error < bestError || (error == bestError && std::abs(level) < std::abs(best))) {
            best = level;
            bestError = error;
        }
    }
    return best;
}

IctLevels IctQuantiser::Quantise(const IctCoefficients& coefficients) const {
    IctLevels levels{};
    for (size_t i = 0; i < 64; ++i) {
        levels[i] = NearestLevel(i, std::ldexp(coefficients[i], CoefficientFractionBits));
    }
    return levels;
}

} // namespace Vostrel::streamencoder
