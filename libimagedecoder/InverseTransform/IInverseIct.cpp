#include "libimagedecoder/InverseTransform/IInverseIct.h"

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

// 1 / sqrt(8) would be 0.35355339059327. Encoders in the field divide by what this constant gives,
// and the dequantisation tables are rounded from it, so its last digits stay.
constexpr double FlatNorm = 0.35355333390593;
constexpr double OddNorm = 0.047565149415;  // 1 / sqrt(442)
constexpr double EvenNorm = 0.158113883008; // 1 / sqrt(40)

} // namespace

const double IInverseIct::s_afNormalizationCoefficients[8] = {FlatNorm, OddNorm, EvenNorm, OddNorm,
                                                              FlatNorm, OddNorm, EvenNorm, OddNorm};

IInverseIct::IInverseIct(ILogger* logger) : m_pLogger(logger) {}

IInverseIct::~IInverseIct() = default;

void IInverseIct::TransformLowTile(short* coefficients, unsigned char* destination,
                                   unsigned long stride) {
    TransformTile(coefficients, destination, stride);
}

const double* IInverseIct::GetNormalizationFactors() const {
    return s_afNormalizationCoefficients;
}

std::uint8_t IInverseIct::GetScalingAsShift() const {
    return 6;
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
