#include "bench/comparison/PlainLoops.h"

#include <immintrin.h>

namespace Vostrel::bench {

void StorePixels(uint32_t* pixels, size_t count, uint32_t word) {
    const __m256i words = _mm256_set1_epi32(static_cast<int>(word));
    for (size_t i = 0; i < count; i += 8) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels + i), words);
        // Keeps the compiler from making a call of memset of it, which has tricks of its own.
        asm volatile("" ::: "memory");
    }
}

} // namespace Vostrel::bench
