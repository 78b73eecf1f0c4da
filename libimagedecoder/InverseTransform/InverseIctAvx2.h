#pragma once

#include "libimagedecoder/InverseTransform/IInverseIct.h"

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

/// AVX2 variant. Row and column results saturate to 16 bits; every row of the coefficient block
/// holds the horizontal frequencies in the order 0, 2, 4, 6, 1, 3, 5, 7.
class InverseIctAvx2 final : public IInverseIct {
public:
    /// Announces the variant in the log. The processor must support AVX2.
    explicit InverseIctAvx2(ILogger* logger);
    ~InverseIctAvx2() override;

    void TransformTile(short* coefficients, unsigned char* destination,
                       unsigned long stride) override;
    void TransformLowTile(short* coefficients, unsigned char* destination,
                          unsigned long stride) override;
    bool IsAccelerated() const override;
    const unsigned char* GetTileIndexPermutation() const override;
    std::uint16_t GetDataAlignmentBytes() const override;
};

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
