#include "tests/model/ModelTransform.h"

#include "tests/model/ModelIntegers.h"

#include <algorithm>

namespace Vostrel::model {

namespace {

// Row k is the basis vector of frequency k.
constexpr int Basis[8][8] = {{1, 1, 1, 1, 1, 1, 1, 1},     {10, 9, 6, 2, -2, -6, -9, -10},
                             {3, 1, -1, -3, -3, -1, 1, 3}, {9, -2, -10, -6, 6, 10, 2, -9},
                             {1, -1, -1, 1, 1, -1, -1, 1}, {6, -10, 2, 9, -9, -2, 10, -6},
                             {1, -3, 3, -1, -1, 3, -3, 1}, {2, -6, 9, -10, 10, -9, 6, -2}};

/// What the row pass keeps of a sum in 16 bits.
int64_t StoreBetweenPasses(int64_t value, KernelRule rule) {
    if (rule == KernelRule::Portable)
        return Wrap16(value);
    return std::clamp<int64_t>(value, -32768, 32767);
}

} // namespace

TileTable InverseTransform(const TileTable& coefficients, KernelRule rule) {
    // Most coefficients are zero; a zero adds nothing to any sum.
    TileTable rows{};
    for (size_t v = 0; v < 8; ++v)
        for (size_t u = 0; u < 8; ++u)
            if (const int64_t coefficient = coefficients[8 * v + u])
                for (size_t x = 0; x < 8; ++x)
                    rows[8 * v + x] += Basis[u][x] * coefficient;
    for (int64_t& sum : rows)
        sum = StoreBetweenPasses(sum, rule);

    TileTable samples{};
    for (size_t v = 0; v < 8; ++v)
        for (size_t x = 0; x < 8; ++x)
            if (const int64_t sample = rows[8 * v + x])
                for (size_t y = 0; y < 8; ++y)
                    samples[8 * y + x] += Basis[v][y] * sample;
    for (int64_t& sum : samples)
        sum = std::clamp<int64_t>(FloorShift(sum, 6) + 128, 0, 255);
    return samples;
}

} // namespace Vostrel::model
