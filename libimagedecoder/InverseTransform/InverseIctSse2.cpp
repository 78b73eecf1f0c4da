#include "libimagedecoder/InverseTransform/AcceleratedIct.h"
#include "libimagedecoder/InverseTransform/InverseIctAccelerated.h"

#include <emmintrin.h>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

/// One row of coefficients, or four 32-bit sums.
struct Lanes128 {
    using Register = __m128i;

    static Register SpreadFour(const std::int32_t* four) {
        return _mm_setr_epi32(four[0], four[1], four[2], four[3]);
    }
    static Register Spread(std::int32_t value) { return _mm_set1_epi32(value); }
    template <int Lane>
    static Register SpreadLane(Register a) {
        return _mm_shuffle_epi32(a, Lane * 0x55);
    }
    static Register ReverseLanes(Register a) { return _mm_shuffle_epi32(a, 0x1B); }
    static Register MultiplyAdd(Register a, Register b) { return _mm_madd_epi16(a, b); }
    static Register Add(Register a, Register b) { return _mm_add_epi32(a, b); }
    static Register Sub(Register a, Register b) { return _mm_sub_epi32(a, b); }
    static Register Or(Register a, Register b) { return _mm_or_si128(a, b); }
    static Register Pack(Register a, Register b) { return _mm_packs_epi32(a, b); }
    template <int Bits>
    static Register ShiftRight(Register a) {
        return _mm_srai_epi16(a, Bits);
    }
    static Register PackBytesLevelShifted(Register a, Register b) {
        return _mm_xor_si128(_mm_packs_epi16(a, b), _mm_set1_epi8(-128));
    }
    static Register WithoutFirst(Register a) { return _mm_insert_epi16(a, 0, 0); }
    static bool IsZero(Register a) {
        return _mm_movemask_epi8(_mm_cmpeq_epi8(a, _mm_setzero_si128())) == 0xFFFF;
    }
};

__m128i LoadRow(const short* coefficients, int row) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(coefficients) + row);
}

enum class Columns { Left, Right };

template <Columns Half>
__m128i Interleave(__m128i a, __m128i b) {
    return Half == Columns::Left ? _mm_unpacklo_epi16(a, b) : _mm_unpackhi_epi16(a, b);
}

template <Frequencies Range, Columns Half>
void InverseFourColumns(const __m128i (&rows)[8], __m128i (&y)[8]) {
    __m128i pairs[PairCount];
    pairs[Pair02] = Interleave<Half>(rows[0], rows[2]);
    pairs[Pair13] = Interleave<Half>(rows[1], rows[3]);
    if (Range == Frequencies::All) {
        pairs[Pair46] = Interleave<Half>(rows[4], rows[6]);
        pairs[Pair57] = Interleave<Half>(rows[5], rows[7]);
    }
    InverseColumns<Range, Lanes128>(pairs, y);
}

/// Of low frequencies, only the first four rows are looked at.
template <Frequencies Range>
void InverseTile(const __m128i (&coefficients)[8], unsigned char* destination,
                 unsigned long stride) {
    __m128i rows[8];
    for (int row = 0; row < (Range == Frequencies::Low ? 4 : 8); ++row)
        rows[row] = InverseRows<Range, Lanes128>(coefficients[row]);

    __m128i left[8];
    __m128i right[8];
    InverseFourColumns<Range, Columns::Left>(rows, left);
    InverseFourColumns<Range, Columns::Right>(rows, right);
    for (int row = 0; row < 8; row += 2)
        StoreTwoRows(destination + static_cast<unsigned long>(row) * stride, stride,
                     PackSamples<Lanes128>(Lanes128::Pack(left[row], right[row]),
                                           Lanes128::Pack(left[row + 1], right[row + 1])));
}

} // namespace

template <>
void InverseIctSse2::TransformTile(short* coefficients, unsigned char* destination,
                                   unsigned long stride) {
    const __m128i rows[8] = {LoadRow(coefficients, 0), LoadRow(coefficients, 1),
                             LoadRow(coefficients, 2), LoadRow(coefficients, 3),
                             LoadRow(coefficients, 4), LoadRow(coefficients, 5),
                             LoadRow(coefficients, 6), LoadRow(coefficients, 7)};
    if (IsFlatTile<Lanes128>(rows)) {
        StoreFlatTile(destination, stride, coefficients[0]);
        return;
    }
    InverseTile<Frequencies::All>(rows, destination, stride);
}

template <>
void InverseIctSse2::TransformLowTile(short* coefficients, unsigned char* destination,
                                      unsigned long stride) {
    InverseTile<Frequencies::Low>({LoadRow(coefficients, 0), LoadRow(coefficients, 1),
                                   LoadRow(coefficients, 2), LoadRow(coefficients, 3)},
                                  destination, stride);
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
