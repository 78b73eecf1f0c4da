#pragma once

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/InverseTransform/IInverseIct.h"

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

/// Variant for an instruction set, whose own source file defines the two transforms. Row and column
/// results saturate to 16 bits; every row of the coefficient block holds the horizontal frequencies
/// in the order 0, 2, 4, 6, 1, 3, 5, 7, which puts the partners of every multiply-add into one
/// 32-bit lane.
template <typename Set>
class InverseIctAccelerated final : public IInverseIct {
public:
    /// Announces the variant in the log. Transforms need a processor with the instruction set.
    explicit InverseIctAccelerated(ILogger* logger) : IInverseIct(logger) {
        m_pLogger->Log("Inverse ICT is %s accelerated", Set::Name);
    }

    void TransformTile(short* coefficients, unsigned char* destination,
                       unsigned long stride) override;
    void TransformLowTile(short* coefficients, unsigned char* destination,
                          unsigned long stride) override;
    bool IsAccelerated() const override { return true; }
    const unsigned char* GetTileIndexPermutation() const override { return s_aucEvenFirst; }
    std::uint16_t GetDataAlignmentBytes() const override { return Set::RegisterBytes; }

private:
    static constexpr unsigned char s_aucEvenFirst[64] = {
        0,  4,  1,  5,  2,  6,  3,  7,  8,  12, 9,  13, 10, 14, 11, 15, 16, 20, 17, 21, 18, 22,
        19, 23, 24, 28, 25, 29, 26, 30, 27, 31, 32, 36, 33, 37, 34, 38, 35, 39, 40, 44, 41, 45,
        42, 46, 43, 47, 48, 52, 49, 53, 50, 54, 51, 55, 56, 60, 57, 61, 58, 62, 59, 63};
};

using InverseIctSse2 = InverseIctAccelerated<InstructionSet::Sse2>;
using InverseIctAvx2 = InverseIctAccelerated<InstructionSet::Avx2>;

template <>
void InverseIctSse2::TransformTile(short*, unsigned char*, unsigned long);
template <>
void InverseIctSse2::TransformLowTile(short*, unsigned char*, unsigned long);
template <>
void InverseIctAvx2::TransformTile(short*, unsigned char*, unsigned long);
template <>
void InverseIctAvx2::TransformLowTile(short*, unsigned char*, unsigned long);

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
