#pragma once

#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// In an unnamed namespace for the reason that MaskRuns.h gives: the AVX2 variant compiles this
// too, for the ends of its runs.
namespace {

/// The register operations of AcceleratedPixels.h on 16 bytes, with SSE2 alone.
struct Lanes128 {
    using Register = __m128i;
    static constexpr std::size_t Bytes = 16;

    static Register LoadLuma(const std::uint8_t* samples) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
    }
    static Register LoadHalfRate(const std::uint8_t* samples) {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples)),
                                 _mm_setzero_si128());
    }
    static Register LoadFullRate(const std::uint8_t* samples) { return LoadHalfRate(samples); }
    static Register LoadHalfRate(const std::uint16_t* values) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(values));
    }
    static Register LoadFullRate(const std::uint16_t* values) { return LoadHalfRate(values); }
    static void Store(std::uint32_t* words, Register a) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(words), a);
    }

    static Register Spread16(short value) { return _mm_set1_epi16(value); }
    static Register Add16(Register a, Register b) { return _mm_add_epi16(a, b); }
    static Register Negate16(Register a) { return _mm_sub_epi16(_mm_setzero_si128(), a); }
    static Register CentreTimes8(Register a) {
        return _mm_slli_epi16(_mm_sub_epi16(a, Spread16(128)), 3);
    }
    static Register MultiplyHigh(Register a, short factor) {
        return _mm_mulhi_epi16(a, Spread16(factor));
    }

    static Register MultiplyLow(Register a, short factor) {
        return _mm_mullo_epi16(a, Spread16(factor));
    }
    static Register And(Register a, short mask) { return _mm_and_si128(a, Spread16(mask)); }
    static Register AtLeast(Register a, short least) { return _mm_max_epi16(a, Spread16(least)); }
    template <int Bits>
    static Register ShiftLeft(Register a) {
        return _mm_slli_epi16(a, Bits);
    }
    template <int Bits>
    static Register ShiftRight(Register a) {
        return _mm_srai_epi16(a, Bits);
    }

    static Register PackBytes(Register a, Register b) { return _mm_packus_epi16(a, b); }
    static Register AddBytes(Register a, Register b) { return _mm_adds_epu8(a, b); }
    static Register SubBytes(Register a, Register b) { return _mm_subs_epu8(a, b); }

    static Register InterleaveLow8(Register a, Register b) { return _mm_unpacklo_epi8(a, b); }
    static Register InterleaveHigh8(Register a, Register b) { return _mm_unpackhi_epi8(a, b); }
    static Register InterleaveLow16(Register a, Register b) { return _mm_unpacklo_epi16(a, b); }
    static Register InterleaveHigh16(Register a, Register b) { return _mm_unpackhi_epi16(a, b); }
};

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
