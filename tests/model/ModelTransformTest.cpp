#include "tests/model/ModelTransform.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

TileTable Flat(int64_t sample) {
    TileTable tile{};
    tile.fill(sample);
    return tile;
}

TEST(ModelTransform, DcAloneGivesAFlatTile) {
    for (const auto& [dc, sample] :
         {std::pair(-1, 127), {0, 128}, {63, 128}, {64, 129}, {-32768, 0}, {32767, 255}}) {
        TileTable coefficients{};
        coefficients[0] = dc;
        for (const KernelRule rule : {KernelRule::Portable, KernelRule::Accelerated})
            EXPECT_EQ(InverseTransform(coefficients, rule), Flat(sample)) << "DC " << dc;
    }
}

TEST(ModelTransform, HorizontalFrequencyRunsAlongTheRow) {
    TileTable coefficients{};
    coefficients[1] = 64;
    const TileTable samples = InverseTransform(coefficients, KernelRule::Portable);
    const std::array<int64_t, 8> row{138, 137, 134, 130, 126, 122, 119, 118};
    for (size_t i = 0; i < 64; ++i)
        EXPECT_EQ(samples[i], row[i % 8]);
}

TEST(ModelTransform, RowSumsWrapOrSaturate) {
    TileTable coefficients{};
    coefficients[0] = 32767;
    coefficients[4] = 32767;
    // Their sum 65534 becomes -2 in 16 bits, or 32767; -2 / 64 rounds down to -1.
    EXPECT_EQ(InverseTransform(coefficients, KernelRule::Portable)[0], 127);
    EXPECT_EQ(InverseTransform(coefficients, KernelRule::Accelerated)[0], 255);
    // Their difference is 0 under both.
    EXPECT_EQ(InverseTransform(coefficients, KernelRule::Portable)[1], 128);
    EXPECT_EQ(InverseTransform(coefficients, KernelRule::Accelerated)[1], 128);
}

} // namespace

} // namespace Vostrel::model
