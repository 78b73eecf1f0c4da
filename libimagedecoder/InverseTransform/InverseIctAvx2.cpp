#include "libimagedecoder/InverseTransform/AcceleratedIct.h"
#include "libimagedecoder/InverseTransform/InverseIctAccelerated.h"

#include <immintrin.h>

// This file is compiled for AVX2. It must not instantiate inline functions with external linkage
// (the standard library's among them), which the linker might choose for the whole library.

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

/// Two rows of coefficients, one in each half, or eight 32-bit sums.
struct Lanes256 {
    using Register = __m256i;

    static Register SpreadFour(const std::int32_t* four) {
        return _mm256_setr_epi32(four[0], four[1], four[2], four[3], four[0], four[1], four[2],
                                 four[3]);
    }
    static Register Spread(std::int32_t value) { return _mm256_set1_epi32(value); }
    template <int Lane>
    static Register SpreadLane(Register a) {
        return _mm256_shuffle_epi32(a, Lane * 0x55);
    }
    static Register ReverseLanes(Register a) { return _mm256_shuffle_epi32(a, 0x1B); }
    static Register MultiplyAdd(Register a, Register b) { return _mm256_madd_epi16(a, b); }
    static Register Add(Register a, Register b) { return _mm256_add_epi32(a, b); }
    static Register Sub(Register a, Register b) { return _mm256_sub_epi32(a, b); }
    static Register Or(Register a, Register b) { return _mm256_or_si256(a, b); }
    static Register Pack(Register a, Register b) { return _mm256_packs_epi32(a, b); }
    template <int Bits>
    static Register ShiftRight(Register a) {
        return _mm256_srai_epi16(a, Bits);
    }
    static Register PackBytesLevelShifted(Register a, Register b) {
        return _mm256_xor_si256(_mm256_packs_epi16(a, b), _mm256_set1_epi8(-128));
    }
    static Register WithoutFirst(Register a) {
        return _mm256_andnot_si256(_mm256_zextsi128_si256(_mm_cvtsi32_si128(0xFFFF)), a);
    }
    static bool IsZero(Register a) { return _mm256_testz_si256(a, a) != 0; }
};

/// n: 0 to 3. In a loop that fills an array, g++ 12 copies by 16 bytes through the stack instead,
/// which costs 60 cycles of failed store forwarding.
__m256i LoadTwoRows(const short* coefficients, int n) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(coefficients) + n);
}

/// rows: the row results 0 and 1, 2 and 3, 4 and 5, 6 and 7. Interleaving two registers gives an
/// even pair in one half and an odd pair in the other; the halves of the left and the right four
/// columns then meet.
template <Frequencies Range>
void InverseAllColumns(const __m256i (&rows)[4], __m256i (&y)[8]) {
    __m256i pairs[PairCount];
    const __m256i upperLeft = _mm256_unpacklo_epi16(rows[0], rows[1]);
    const __m256i upperRight = _mm256_unpackhi_epi16(rows[0], rows[1]);
    pairs[Pair02] = _mm256_permute2x128_si256(upperLeft, upperRight, 0x20);
    pairs[Pair13] = _mm256_permute2x128_si256(upperLeft, upperRight, 0x31);
    if (Range == Frequencies::All) {
        const __m256i lowerLeft = _mm256_unpacklo_epi16(rows[2], rows[3]);
        const __m256i lowerRight = _mm256_unpackhi_epi16(rows[2], rows[3]);
        pairs[Pair46] = _mm256_permute2x128_si256(lowerLeft, lowerRight, 0x20);
        pairs[Pair57] = _mm256_permute2x128_si256(lowerLeft, lowerRight, 0x31);
    }
    InverseColumns<Range, Lanes256>(pairs, y);
}

/// Four rows of 32-bit sums become samples.
void StoreFourRows(unsigned char* destination, unsigned long stride, const __m256i* y) {
    const __m256i halves =
        PackSamples<Lanes256>(Lanes256::Pack(y[0], y[1]), Lanes256::Pack(y[2], y[3]));
    // The lower half holds the left four samples of each row, the upper half the right four.
    const __m256i rows =
        _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    StoreTwoRows(destination, stride, _mm256_castsi256_si128(rows));
    StoreTwoRows(destination + 2 * stride, stride, _mm256_extracti128_si256(rows, 1));
}

/// Of low frequencies, only the first two registers are looked at.
template <Frequencies Range>
void InverseTile(const __m256i (&coefficients)[4], unsigned char* destination,
                 unsigned long stride) {
    __m256i rows[4];
    for (int n = 0; n < (Range == Frequencies::Low ? 2 : 4); ++n)
        rows[n] = InverseRows<Range, Lanes256>(coefficients[n]);
    __m256i y[8];
    InverseAllColumns<Range>(rows, y);
    StoreFourRows(destination, stride, y);
    StoreFourRows(destination + 4 * stride, stride, y + 4);
}

} // namespace

template <>
void InverseIctAvx2::TransformTile(short* coefficients, unsigned char* destination,
                                   unsigned long stride) {
    const __m256i rows[4] = {LoadTwoRows(coefficients, 0), LoadTwoRows(coefficients, 1),
                             LoadTwoRows(coefficients, 2), LoadTwoRows(coefficients, 3)};
    if (IsFlatTile<Lanes256>(rows)) {
        StoreFlatTile(destination, stride, coefficients[0]);
        return;
    }
    InverseTile<Frequencies::All>(rows, destination, stride);
}

template <>
void InverseIctAvx2::TransformLowTile(short* coefficients, unsigned char* destination,
                                      unsigned long stride) {
    InverseTile<Frequencies::Low>({LoadTwoRows(coefficients, 0), LoadTwoRows(coefficients, 1)},
                                  destination, stride);
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
