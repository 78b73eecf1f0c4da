#pragma once

#include <array>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// How coarsely a quality level quantises: a base step is multiplied by about
/// m_fScale * 2^m_uiShift.
struct IctQuality {
    double m_fScale;   ///< multiplies the base step before its reciprocal is rounded
    uint8_t m_uiShift; ///< bits dropped from the rounded reciprocal
};

/// The constants of ICT quantisation and coefficient order.
struct IctCodingTables {
    /// Entry k is the row-major index of the k-th coefficient of a tile in the stream.
    static const std::array<uint8_t, 64> s_aZigZagTile;

    /// Base steps of luma, row-major (ITU-T T.81, Table K.1).
    static const std::array<uint32_t, 64> s_aLumQuantBaseTile;

    /// Base steps of Cb and Cr, row-major (ITU-T T.81, Table K.2).
    static const std::array<uint32_t, 64> s_aChromaQuantBaseTile;

    /// Indexed by the quality level; 0 is the coarsest, 15 the finest.
    static const std::array<IctQuality, 16> s_aQualityTable;
};

/// The number by which an encoder multiplies a coefficient before it drops 13 bits: the reciprocal
/// of quant * scale as a 13-bit fraction, with its low `shift` bits dropped. The step that a
/// decoder multiplies a level by is 8192 divided by this number.
///
/// quant is a base step of 1..255; scale and shift are of one row of s_aQualityTable.
uint64_t QuantiserReciprocal(unsigned int quant, double scale, unsigned char shift);

/// The integer nearest to value, a half upwards; value is 0.5 or more and below 2^52. std::round
/// would do, but the shared object would need libm for it alone.
constexpr uint64_t RoundHalfUp(double value) {
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): not below 0.5
    return static_cast<uint64_t>(value + 0.5);
}

} // namespace Vostrel::libimagedecoder
