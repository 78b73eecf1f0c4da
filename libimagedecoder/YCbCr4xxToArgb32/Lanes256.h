#pragma once

#include <cstddef>
#include <cstdint>
#include <immintrin.h>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

/// The register operations of AcceleratedPixels.h on 32 bytes.
///
/// AVX2 interleaves within the halves of a register. For the stored pixels to come out in order
/// nonetheless, the loads hand every other group of four pixels to the upper half.
struct Lanes256 {
    using Register = __m256i;
    static constexpr std::size_t Bytes = 32;

    static Register LoadLuma(const std::uint8_t* samples) {
        return _mm256_permutevar8x32_epi32(
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples)),
            _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
    }
    static Register LoadHalfRate(const std::uint8_t* samples) {
        return _mm256_cvtepu8_epi16(
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples)),
                             _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15)));
    }
    static Register LoadFullRate(const std::uint8_t* samples) {
        return _mm256_cvtepu8_epi16(_mm_shuffle_epi32(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples)), _MM_SHUFFLE(3, 1, 2, 0)));
    }
    static Register LoadHalfRate(const std::uint16_t* values) {
        return LoadLuma(reinterpret_cast<const std::uint8_t*>(values));
    }
    static Register LoadFullRate(const std::uint16_t* values) {
        return _mm256_permute4x64_epi64(
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values)), _MM_SHUFFLE(3, 1, 2, 0));
    }
    static void Store(std::uint32_t* words, Register a) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(words), a);
    }

    static Register Spread16(short value) { return _mm256_set1_epi16(value); }
    static Register Add16(Register a, Register b) { return _mm256_add_epi16(a, b); }
    static Register Negate16(Register a) { return _mm256_sub_epi16(_mm256_setzero_si256(), a); }
    static Register CentreTimes8(Register a) {
        return _mm256_slli_epi16(_mm256_sub_epi16(a, Spread16(128)), 3);
    }
    static Register MultiplyHigh(Register a, short factor) {
        return _mm256_mulhi_epi16(a, Spread16(factor));
    }

    static Register MultiplyLow(Register a, short factor) {
        return _mm256_mullo_epi16(a, Spread16(factor));
    }
    static Register And(Register a, short mask) { return _mm256_and_si256(a, Spread16(mask)); }
    static Register AtLeast(Register a, short least) {
        return _mm256_max_epi16(a, Spread16(least));
    }
    template <int Bits>
    static Register ShiftLeft(Register a) {
        return _mm256_slli_epi16(a, Bits);
    }
    template <int Bits>
    static Register ShiftRight(Register a) {
        return _mm256_srai_epi16(a, Bits);
    }

    static Register PackBytes(Register a, Register b) { return _mm256_packus_epi16(a, b); }
    static Register AddBytes(Register a, Register b) { return _mm256_adds_epu8(a, b); }
    static Register SubBytes(Register a, Register b) { return _mm256_subs_epu8(a, b); }

    static Register InterleaveLow8(Register a, Register b) { return _mm256_unpacklo_epi8(a, b); }
    static Register InterleaveHigh8(Register a, Register b) { return _mm256_unpackhi_epi8(a, b); }
    static Register InterleaveLow16(Register a, Register b) { return _mm256_unpacklo_epi16(a, b); }
    static Register InterleaveHigh16(Register a, Register b) { return _mm256_unpackhi_epi16(a, b); }
};

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
