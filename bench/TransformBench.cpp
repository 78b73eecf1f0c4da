#include "bench/DecodingScene.h"
#include "bench/KernelBench.h"
#include "libimagedecoder/AlignedMemory.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"

#include <algorithm>
#include <benchmark/benchmark.h>

// One tile through the inverse transform, with refilled coefficients each time, since the transform
// may use them as scratch.

namespace Vostrel::bench {
namespace {

using namespace libimagedecoder;
using InverseTransform::InverseIct::IInverseIct;
using InverseTransform::InverseIct::InverseIctFactory;
using Variant = KernelVariant<std::shared_ptr<IInverseIct>>;

void TransformTile(benchmark::State& state, const Variant& variant, size_t coefficientsSet) {
    SilentLogger logger;
    const std::shared_ptr<IInverseIct> transform = variant.m_pMake(&logger);
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

void RegisterTile(const char* name, size_t coefficientsSet) {
    RegisterVariants(InverseIctFactory::GetVariants(), "TransformTile", name,
                     benchmark::kNanosecond, [=](benchmark::State& state, const Variant& variant) {
                         TransformTile(state, variant, coefficientsSet);
                     });
}

[[maybe_unused]] const bool s_bRegistered = [] {
    RegisterTile("DcOnly", 1);
    RegisterTile("Full", TileCoefficients);
    return true;
}();

} // namespace
} // namespace Vostrel::bench
