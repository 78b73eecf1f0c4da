#include "tools/ForwardIct.h"

namespace Vostrel::streamencoder {

namespace {

// Row k is the basis vector of frequency k of the order-8 transform ICT(10, 9, 6, 2, 3, 1).
constexpr int Basis[8][8] = {
    {1, 1, 1, 1, 1, 1, 1, 1},       {10, 9, 6, 2, -2, -6, -9, -10}, {3, 1, -1, -3, -3, -1, 1, 3},
    {9, -2, -10, -6, 6, 10, 2, -9}, {1, -1, -1, 1, 1, -1, -1, 1},   {6, -10, 2, 9, -9, -2, 10, -6},
    {1, -3, 3, -1, -1, 3, -3, 1},   {2, -6, 9, -10, 10, -9, 6, -2},
};

constexpr double NormSquared[8] = {8, 442, 40, 442, 8, 442, 40, 442};

// The decoder's sums have 6 bits of fraction, which it drops; each of the 64 fractions is equally
// likely, and their mean is what gets lost.
constexpr double MeanLossOfFlooring = 63.0 / 128.0;
constexpr double SampleCentre = 128.0;

} // namespace

IctCoefficients ForwardIct(const uint8_t* samples, size_t stride) {
    double rows[8][8]; // [y][u]: each row of samples transformed
    for (size_t y = 0; y < 8; ++y) {
        for (size_t u = 0; u < 8; ++u) {
            double sum = 0;
            for (size_t x = 0; x < 8; ++x) {
                sum += Basis[u][x] * (samples[y * stride + x] - SampleCentre + MeanLossOfFlooring);
            }
            rows[y][u] = sum / NormSquared[u];
        }
    }

    IctCoefficients coefficients{};
    for (size_t v = 0; v < 8; ++v) {
        for (size_t u = 0; u < 8; ++u) {
            double sum = 0;
            for (size_t y = 0; y < 8; ++y) {
                sum += Basis[v][y] * rows[y][u];
            }
            coefficients[8 * v + u] = sum / NormSquared[v];
        }
    }
    return coefficients;
}

} // namespace Vostrel::streamencoder
