#include "bench/DecodingScene.h"
#include "libimagedecoder/AlignedMemory.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"

#include <algorithm>
#include <benchmark/benchmark.h>

// One tile through the inverse transform, with refilled coefficients each time, since the transform
// may use them as scratch.

namespace Vostrel::bench {
namespace {

using namespace libimagedecoder;
using InverseTransform::InverseIct::InverseIctFactory;

void TransformTile(benchmark::State& state, bool accelerate, size_t coefficientsSet) {
    SilentLogger logger;
    const auto transform = InverseIctFactory::CreateInverseIct(&logger, accelerate);
    const auto coefficients = AllocateAligned<int16_t>(TileCoefficients, 32);
    std::array<int16_t, TileCoefficients> tile{};
    for (size_t i = 0; i < coefficientsSet; ++i)
        tile[i] = static_cast<int16_t>(4000 / (static_cast<int>(i) + 1));
    std::array<uint8_t, TileCoefficients> samples;
    for (auto _ : state) {
        std::copy(tile.begin(), tile.end(), coefficients.get());
        transform->TransformTile(coefficients.get(), samples.data(), TileEdge);
        benchmark::DoNotOptimize(samples);
    }
}

BENCHMARK_CAPTURE(TransformTile, AcceleratedDcOnly, true, 1);
BENCHMARK_CAPTURE(TransformTile, AcceleratedFull, true, TileCoefficients);
BENCHMARK_CAPTURE(TransformTile, PortableDcOnly, false, 1);
BENCHMARK_CAPTURE(TransformTile, PortableFull, false, TileCoefficients);

} // namespace
} // namespace Vostrel::bench
