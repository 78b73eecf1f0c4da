#pragma once

#include "libimagedecoder/InverseTransform/IInverseIct.h"

#include <memory>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

/// Portable variant. Row results wrap to 16 bits and stay in the coefficient block.
class InverseIctNative final : public IInverseIct {
public:
    /// Builds the clamp table and announces the variant in the log. Throws on exhausted memory.
    explicit InverseIctNative(ILogger* logger);
    ~InverseIctNative() override;

    void TransformTile(short* coefficients, unsigned char* destination,
                       unsigned long stride) override;
    bool IsAccelerated() const override;
    const unsigned char* GetTileIndexPermutation() const override;
    std::uint16_t GetDataAlignmentBytes() const override;

private:
    unsigned char Clamp(int scaled) const;

    std::unique_ptr<unsigned char[]> m_pClampLutStorage;
    /// Element 2176 of the storage: entry k is k + 128 clamped to a byte, for k from -2176 to 2175.
    const unsigned char* m_pClampLut;
};

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
