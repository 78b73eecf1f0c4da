#include "bench/DecodingScene.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tools/BitWriter.h"
#include "tools/IctTileWriter.h"

#include <benchmark/benchmark.h>
#include <random>

// Tiles through the coefficient decoder alone. The stream holds thousands of different tiles: the
// branch predictor would learn a short one by heart.

namespace Vostrel::bench {
namespace {

using namespace libimagedecoder;
using namespace streamencoder;

constexpr size_t TileCount = 20000;

/// Random tiles with as many coefficients set as asked for, at falling sizes, like those of a
/// picture.
std::vector<uint8_t> EncodeTiles(int coefficientsSet) {
    std::mt19937 random(1);
    BitWriter bits;
    const IctComponentCode code = IctComponentCode::Luma();
    for (size_t tile = 0; tile < TileCount; ++tile) {
        IctLevels levels{};
        for (int i = 0; i < coefficientsSet; ++i) {
            const int range = 1 + 40 / (i + 1);
            levels[static_cast<size_t>(i)] =
                static_cast<int>(random() % static_cast<unsigned>(2 * range + 1)) - range;
        }
        int predictor = 0;
        WriteIctTile(levels, code, predictor, bits);
    }
    return bits.GetBytes();
}

void DecodeTile(benchmark::State& state) {
    std::vector<uint8_t> stream = EncodeTiles(static_cast<int>(state.range(0)));
    SilentLogger logger;
    UpdateStream unused;
    ImageDecoderRenderer renderer(&logger);
    ImageDecoderIct decoder(&renderer, &unused, &logger, 0, 1, 0);
    alignas(32) std::array<int16_t, TileCoefficients> coefficients;
    for (auto _ : state) {
        StreambufferArray buffer(&logger, stream.data(), stream.size());
        BitStreamReader reader(&buffer, 0, 0, 0, 0);
        for (size_t tile = 0; tile < TileCount; ++tile) {
            int predictor = 0;
            decoder.HuffmannDecodeReorderDequantTile(&reader, coefficients.data(), &predictor,
                                                     decoder.GetDequantTable(ComponentY).data(),
                                                     decoder.GetDcTable(ComponentY).data(),
                                                     decoder.GetAcTable(ComponentY).data());
            benchmark::DoNotOptimize(coefficients);
        }
    }
    state.counters["Mtile/s"] = benchmark::Counter(static_cast<double>(TileCount) * 1e-6,
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(DecodeTile)->Arg(1)->Arg(4)->Arg(12)->Arg(64)->ArgName("coefficients");

} // namespace
} // namespace Vostrel::bench
