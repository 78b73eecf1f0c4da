#pragma once

#include <cstdint>
#include <emmintrin.h>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

// What the SSE2 and the AVX2 variant share, over a register type with a few operations (Lanes). In
// an unnamed namespace on purpose: each variant compiles its own copy with its own instruction set.
// With external linkage the linker would keep one copy, maybe the AVX2 one, for both.
//
// A 32-bit sum is at most 33 times a 16-bit value; only the packs back to 16 bits saturate.
namespace {

constexpr std::int32_t Pair(int low, int high) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(high) << 16) |
                                     (static_cast<std::uint32_t>(low) & 0xFFFF));
}

enum FrequencyPair { Pair02, Pair46, Pair13, Pair57, PairCount };

/// Basis vectors of a pair of frequencies at the sample positions 0 to 3. The positions 7 to 4 have
/// the same values, negated at odd frequencies.
constexpr std::int32_t Basis[PairCount][4] = {
    {Pair(1, 3), Pair(1, 1), Pair(1, -1), Pair(1, -3)},
    {Pair(1, 1), Pair(-1, -3), Pair(-1, 3), Pair(1, -1)},
    {Pair(10, 9), Pair(9, -2), Pair(6, -10), Pair(2, -6)},
    {Pair(6, 2), Pair(-10, -6), Pair(2, 9), Pair(9, -10)},
};

/// What a pair of frequencies adds to the samples 0 to 3 of each row.
template <FrequencyPair Frequencies, typename Lanes>
inline typename Lanes::Register RowProduct(typename Lanes::Register rows) {
    return Lanes::MultiplyAdd(Lanes::template SpreadLane<Frequencies>(rows),
                              Lanes::SpreadFour(Basis[Frequencies]));
}

/// Which frequencies of a tile may be set: those up to 3 alone, or all.
enum class Frequencies { Low, All };

/// What the pair that holds the low even or odd frequencies adds to the samples, and the pair above
/// it.
template <Frequencies Range, FrequencyPair Low, FrequencyPair High, typename Lanes>
inline typename Lanes::Register RowSum(typename Lanes::Register rows) {
    const auto low = RowProduct<Low, Lanes>(rows);
    if (Range == Frequencies::Low)
        return low;
    return Lanes::Add(low, RowProduct<High, Lanes>(rows));
}

/// Row pass of the rows in a register: their samples 0 to 7, saturated to 16 bits.
template <Frequencies Range, typename Lanes>
inline typename Lanes::Register InverseRows(typename Lanes::Register rows) {
    const auto even = RowSum<Range, Pair02, Pair46, Lanes>(rows);
    const auto odd = RowSum<Range, Pair13, Pair57, Lanes>(rows);
    return Lanes::Pack(Lanes::Add(even, odd), Lanes::ReverseLanes(Lanes::Sub(even, odd)));
}

/// Column pass of as many columns as a register has 32-bit lanes. rows: the row results of each
/// frequency pair, interleaved. y: the 32-bit samples of the rows 0 to 7.
template <Frequencies Range, typename Lanes>
inline void InverseColumns(const typename Lanes::Register (&rows)[PairCount],
                           typename Lanes::Register (&y)[8]) {
    for (int n = 0; n < 4; ++n) {
        const auto sum = [&rows, n](FrequencyPair low, FrequencyPair high) {
            const auto product = Lanes::MultiplyAdd(rows[low], Lanes::Spread(Basis[low][n]));
            if (Range == Frequencies::Low)
                return product;
            return Lanes::Add(product,
                              Lanes::MultiplyAdd(rows[high], Lanes::Spread(Basis[high][n])));
        };
        const auto even = sum(Pair02, Pair46);
        const auto odd = sum(Pair13, Pair57);
        y[n] = Lanes::Add(even, odd);
        y[7 - n] = Lanes::Sub(even, odd);
    }
}

/// Two rows of 16-bit column results a register become unsigned bytes: the scaling shift, the clamp
/// to signed bytes and the level shift by 128.
template <typename Lanes>
inline typename Lanes::Register PackSamples(typename Lanes::Register a,
                                            typename Lanes::Register b) {
    return Lanes::PackBytesLevelShifted(Lanes::template ShiftRight<6>(a),
                                        Lanes::template ShiftRight<6>(b));
}

inline void StoreTwoRows(unsigned char* destination, unsigned long stride, __m128i rows) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(destination), rows);
    _mm_storeh_pi(reinterpret_cast<__m64*>(destination + stride), _mm_castsi128_ps(rows));
}

/// True if no coefficient but the first is set.
template <typename Lanes, int Count>
inline bool IsFlatTile(const typename Lanes::Register (&coefficients)[Count]) {
    auto rest = Lanes::WithoutFirst(coefficients[0]);
    for (int n = 1; n < Count; ++n)
        rest = Lanes::Or(rest, coefficients[n]);
    return Lanes::IsZero(rest);
}

/// Such a tile is one value. After quantisation it is the most frequent tile by far.
inline void StoreFlatTile(unsigned char* destination, unsigned long stride, short first) {
    const __m128i wide = _mm_srai_epi16(_mm_set1_epi16(first), 6);
    const __m128i samples = _mm_xor_si128(_mm_packs_epi16(wide, wide), _mm_set1_epi8(-128));
    for (unsigned long row = 0; row < 8; row += 2)
        StoreTwoRows(destination + row * stride, stride, samples);
}

} // namespace

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
