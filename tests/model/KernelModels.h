#pragma once

#include "tests/model/ModelColour.h"
#include "tests/model/ModelKernelRule.h"
#include "tests/model/ModelTables.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Vostrel::model {

/// The coefficients (row-major) whose inverse transform gives these samples (0..255, row-major) up
/// to rounding. It projects on the basis of the inverse in floating point.
inline TileTable ForwardTransform(const TileTable& samples) {
    constexpr double Basis[8][8] = {{1, 1, 1, 1, 1, 1, 1, 1},     {10, 9, 6, 2, -2, -6, -9, -10},
                                    {3, 1, -1, -3, -3, -1, 1, 3}, {9, -2, -10, -6, 6, 10, 2, -9},
                                    {1, -1, -1, 1, 1, -1, -1, 1}, {6, -10, 2, 9, -9, -2, 10, -6},
                                    {1, -3, 3, -1, -1, 3, -3, 1}, {2, -6, 9, -10, 10, -9, 6, -2}};
    constexpr double SquaredNorm[8] = {8, 442, 40, 442, 8, 442, 40, 442};
    constexpr double Scaling = 64; // the inverse drops six bits
    TileTable coefficients{};
    for (std::size_t v = 0; v < 8; ++v) {
        for (std::size_t u = 0; u < 8; ++u) {
            double sum = 0;
            for (std::size_t n = 0; n < 64; ++n)
                sum += Basis[v][n / 8] * Basis[u][n % 8] * static_cast<double>(samples[n] - 128);
            coefficients[8 * v + u] =
                std::llround(sum * Scaling / (SquaredNorm[v] * SquaredNorm[u]));
        }
    }
    return coefficients;
}

/// How many luma columns and rows share a chroma sample.
struct ChromaDivisors {
    std::size_t x;
    std::size_t y;
};

/// A rectangle of planes to be converted; strides in elements.
struct PlanesToConvert {
    const std::uint8_t* y;
    const std::uint8_t* cb;
    const std::uint8_t* cr;
    std::size_t width;
    std::size_t height;
    std::size_t lumaStride;
    std::size_t chromaStride;
    const bool* skipMask;
};

/// Converts pixel by pixel. Pixels that are skipped, or whose chroma sample the rectangle does not
/// fill, keep their value.
inline void ConvertToArgb(const PlanesToConvert& planes, ChromaDivisors divisors, KernelRule rule,
                          std::uint32_t* destination, std::size_t destinationStride) {
    const std::size_t columns = planes.width - planes.width % divisors.x;
    const std::size_t rows = planes.height - planes.height % divisors.y;
    for (std::size_t y = 0; y < rows; ++y) {
        for (std::size_t x = 0; x < columns; ++x) {
            if (planes.skipMask[(((y >> 4) * planes.width) >> 4) + (x >> 4)])
                continue;
            const std::size_t chroma = y / divisors.y * planes.chromaStride + x / divisors.x;
            destination[y * destinationStride + x] = ToArgb(
                planes.y[y * planes.lumaStride + x], planes.cb[chroma], planes.cr[chroma], rule);
        }
    }
}

} // namespace Vostrel::model
