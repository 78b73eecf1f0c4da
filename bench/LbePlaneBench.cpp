#include "bench/DecodingScene.h"
#include "bench/KernelBench.h"
#include "libimagedecoder/LbePlaneDecoder.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tools/BitWriter.h"

#include <benchmark/benchmark.h>
#include <random>

// Planes of LBE blocks through the plane decoder alone, and through the kernels.

namespace Vostrel::bench {
namespace {

using namespace libimagedecoder;
using streamencoder::BitWriter;

constexpr size_t PlaneCount = 5000;
constexpr LbePlaneFormat LumaFormat{256, 16, 6, 8};

/// Random literals and long runs from both sides, mixed so that literals make up about the given
/// share of the codes, in percent.
std::vector<uint8_t> EncodePlanes(unsigned literalShare) {
    std::mt19937 random(1);
    BitWriter bits;
    for (size_t plane = 0; plane < PlaneCount; ++plane) {
        for (size_t i = 0; i < LumaFormat.m_uiSamples;) {
            if (random() % 100 < literalShare) {
                bits.Write(random() & 63, 1 + LumaFormat.m_uiLiteralBits);
                i += 1;
            } else {
                const auto code = static_cast<uint32_t>(random() % 14);
                bits.Write(random() % 2 == 0 ? 0b101 : 0b111, 3);
                bits.Write(code, 4);
                i += code + 3;
            }
        }
    }
    return bits.GetBytes();
}

void ReportRate(benchmark::State& state) {
    state.counters["Mplane/s"] = benchmark::Counter(static_cast<double>(PlaneCount) * 1e-6,
                                                    benchmark::Counter::kIsIterationInvariantRate);
}

void DecodePlane(benchmark::State& state) {
    std::vector<uint8_t> stream = EncodePlanes(static_cast<unsigned>(state.range(0)));
    LbePlaneBuffer plane;
    for (auto _ : state) {
        StreambufferArray buffer(nullptr, stream.data(), stream.size());
        BitStreamReader reader(&buffer, 0, 0, 0, 0);
        for (size_t i = 0; i < PlaneCount; ++i) {
            DecodeLbePlane(reader, LumaFormat, plane);
            benchmark::DoNotOptimize(plane);
        }
    }
    ReportRate(state);
}

BENCHMARK(DecodePlane)->Arg(10)->Arg(50)->Arg(90)->ArgName("literals%");

using Variant = KernelVariant<LbePlaneKernel>;

void DecodePlaneByKernel(benchmark::State& state, const Variant& variant, unsigned literalShare) {
    std::vector<uint8_t> stream = EncodePlanes(literalShare);
    stream.resize(stream.size() + LbePlaneRoom(LumaFormat));
    const LbePlaneKernel decode = variant.m_pMake(nullptr);
    LbePlaneBytes plane;
    for (auto _ : state) {
        size_t position = 0;
        for (size_t i = 0; i < PlaneCount; ++i) {
            position = decode(stream.data(), position, LumaFormat, plane);
            benchmark::DoNotOptimize(plane);
        }
    }
    ReportRate(state);
}

[[maybe_unused]] const bool s_bRegistered = [] {
    for (const unsigned literalShare : {10u, 50u, 90u})
        RegisterVariants(LbePlaneKernelFactory::GetVariants(), "DecodePlaneByKernel",
                         "literals%:" + std::to_string(literalShare), benchmark::kNanosecond,
                         [=](benchmark::State& state, const Variant& variant) {
                             DecodePlaneByKernel(state, variant, literalShare);
                         });
    return true;
}();

} // namespace
} // namespace Vostrel::bench
