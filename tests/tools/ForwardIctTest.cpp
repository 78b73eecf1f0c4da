#include "tools/ForwardIct.h"
#include "tests/model/ModelTransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace Vostrel::streamencoder {
namespace {

using Samples = std::array<uint8_t, 64>;

/// The decoder's inverse of coefficients kept with 6 bits of fraction.
model::TileTable Inverse(const IctCoefficients& coefficients) {
    model::TileTable kept{};
    for (size_t i = 0; i < 64; ++i) {
        kept[i] = std::lround(coefficients[i] * 64);
    }
    return model::InverseTransform(kept, model::KernelRule::Portable);
}

TEST(ForwardIct, AFlatTileHasNothingButItsMean) {
    Samples samples;
    samples.fill(200);
    const IctCoefficients coefficients = ForwardIct(samples.data(), 8);
    EXPECT_NEAR(coefficients[0], 200 - 128 + 63.0 / 128, 1e-9);
    for (size_t i = 1; i < 64; ++i) {
        EXPECT_NEAR(coefficients[i], 0, 1e-9) << i;
    }
}

TEST(ForwardIct, ABasisFunctionHasOneCoefficient) {
    // Vertical frequency 1, horizontal frequency 0: rows of 10, 9, 6, 2, -2, ...
    constexpr int column[8] = {10, 9, 6, 2, -2, -6, -9, -10};
    Samples samples;
    for (size_t i = 0; i < 64; ++i) {
        samples[i] = static_cast<uint8_t>(128 + 3 * column[i / 8]);
    }
    const IctCoefficients coefficients = ForwardIct(samples.data(), 8);
    for (size_t i = 1; i < 64; ++i) {
        EXPECT_NEAR(coefficients[i], i == 8 ? 3 : 0, 1e-9) << i;
    }
}

TEST(ForwardIct, ReadsRowsAtTheirStride) {
    std::array<uint8_t, 8 * 20> plane{};
    Samples samples;
    for (size_t i = 0; i < 64; ++i) {
        samples[i] = static_cast<uint8_t>(i * 37);
        plane[i / 8 * 20 + i % 8] = samples[i];
    }
    EXPECT_EQ(ForwardIct(plane.data(), 20), ForwardIct(samples.data(), 8));
}

TEST(ForwardIct, TheDecodersInverseGivesTheSamplesBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    double squares = 0;
    double sum = 0;
    constexpr int Tiles = 500;
    for (int tile = 0; tile < Tiles; ++tile) {
        Samples samples;
        for (uint8_t& sample : samples) {
            sample = static_cast<uint8_t>(random() % 240 + 8); // clamping would hide errors
        }
        const model::TileTable decoded = Inverse(ForwardIct(samples.data(), 8));
        for (size_t i = 0; i < 64; ++i) {
            const auto error = static_cast<double>(decoded[i] - samples[i]);
            squares += error * error;
            sum += error;
        }
    }
    // Rounding of coefficients alone: each adds 1/12 unit of variance times the squares of its
    // basis function, which sums up to (8 * (1 + 1 + 5 + 5 + 55.25 * 4) / 8)^2 / 64^2 / 12,
    // about 1.1, plus 1/12 for the rounding of the sample.
    EXPECT_LT(squares / (64 * Tiles), 1.5);
    EXPECT_NEAR(sum / (64 * Tiles), 0, 0.02);
}

} // namespace
} // namespace Vostrel::streamencoder
