#pragma once

#include "libimagedecoder/InverseTransform/IInverseTransform.h"

#include <cstdint>

namespace Vostrel::libimagedecoder {
class ILogger;
}

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

/// Inverse of the order-8 integer cosine transform ICT(10,9,6,2,3,1): 64 dequantised coefficients
/// become 8x8 unsigned samples of one plane.
///
/// The transform is integer-only and unnormalised. Whoever dequantises folds in the normalisation,
/// the scaling and the coefficient order that the kernel publishes here.
///
/// Thread safety: a kernel is immutable; any number of threads may transform tiles on it at once,
/// each with a coefficient block of its own.
class IInverseIct : public IInverseTransform<8> {
public:
    /// The logger is kept but not owned and must not be null.
    explicit IInverseIct(ILogger* logger);
    virtual ~IInverseIct();
    IInverseIct(const IInverseIct&) = delete;
    IInverseIct& operator=(const IInverseIct&) = delete;

    /// Transforms one tile. coefficients: 64 values in the order of GetTileIndexPermutation,
    /// aligned to GetDataAlignmentBytes; the block is scratch and may be overwritten. destination:
    /// 8 rows of 8 samples, stride bytes apart, of any alignment.
    virtual void TransformTile(short* coefficients, unsigned char* destination,
                               unsigned long stride) = 0;

    virtual bool IsAccelerated() const = 0;

    /// 64 entries: the coefficient of vertical frequency v and horizontal frequency u belongs into
    /// element entry[8 * v + u] of the block.
    virtual const unsigned char* GetTileIndexPermutation() const = 0;

    /// 8 entries, one per frequency: the reciprocal norm of the basis vector. A coefficient wants
    /// the product of its vertical and its horizontal entry.
    virtual const double* GetNormalizationFactors() const;

    /// Bytes: 8, 16 or 32.
    virtual std::uint16_t GetDataAlignmentBytes() const = 0;

    /// The column pass drops this many bits, so coefficients carry them as fraction.
    virtual std::uint8_t GetScalingAsShift() const;

    /// What TransformTile makes of a tile in which no coefficient of a frequency above 3, vertical
    /// or horizontal, is set.
    virtual void TransformLowTile(short* coefficients, unsigned char* destination,
                                  unsigned long stride);

    /// What GetNormalizationFactors returns.
    static const double s_afNormalizationCoefficients[8];

protected:
    ILogger* m_pLogger;
};

/// What every kernel makes of a tile in which only the coefficient 0 is set: 64 times this sample.
inline std::uint8_t FlatTileSample(short coefficient) {
    const int sample = (coefficient >> 6) + 128;
    return static_cast<std::uint8_t>(sample < 0 ? 0 : sample > 255 ? 255 : sample);
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
