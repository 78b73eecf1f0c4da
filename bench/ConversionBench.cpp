#include "bench/DecodingScene.h"
#include "bench/KernelBench.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>

// A whole screen through the colour conversion, beside a loop that only stores to the framebuffer.

namespace Vostrel::bench {
namespace {

using YCbCr = libimagedecoder::YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using libimagedecoder::YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

constexpr unsigned short Width = 1920;
constexpr unsigned short Height = 1088;
constexpr size_t Pixels = size_t{Width} * Height;

std::vector<uint8_t> RandomSamples() {
    std::mt19937 random(1);
    std::vector<uint8_t> samples(Pixels);
    for (uint8_t& sample : samples)
        sample = static_cast<uint8_t>(random());
    return samples;
}

void ReportRate(benchmark::State& state) {
    state.counters["Mpixel/s"] = benchmark::Counter(static_cast<double>(Pixels) * 1e-6,
                                                    benchmark::Counter::kIsIterationInvariantRate);
}

using Conversion = decltype(&YCbCr::Convert420);

using Variant = libimagedecoder::KernelVariant<std::shared_ptr<YCbCr>>;

void ConvertScreen(benchmark::State& state, const Variant& variant, Conversion conversion,
                   unsigned chromaDivX) {
    SilentLogger logger;
    const std::shared_ptr<YCbCr> kernel = variant.m_pMake(&logger);
    const std::vector<uint8_t> luma = RandomSamples();
    const std::vector<uint8_t> chroma = RandomSamples();
    const auto skipMask = std::make_unique<bool[]>(Pixels / 256);
    std::vector<uint32_t> framebuffer(Pixels);
    for (auto _ : state) {
        (kernel.get()->*conversion)(framebuffer.data(), luma.data(), chroma.data(), chroma.data(),
                                    Width, Height, Width, Width, Width / chromaDivX,
                                    skipMask.get());
        benchmark::ClobberMemory();
    }
    ReportRate(state);
}

void StoreScreen(benchmark::State& state) {
    std::vector<uint32_t> framebuffer(Pixels);
    uint32_t word = 0;
    for (auto _ : state) {
        std::fill(framebuffer.begin(), framebuffer.end(), ++word);
        benchmark::ClobberMemory();
    }
    ReportRate(state);
}

BENCHMARK(StoreScreen)->Unit(benchmark::kMicrosecond);

void RegisterSampling(const char* name, Conversion conversion, unsigned chromaDivX) {
    RegisterVariants(YCbCr4xxToArgb32Factory::GetVariants(), "ConvertScreen", name,
                     benchmark::kMicrosecond, [=](benchmark::State& state, const Variant& variant) {
                         ConvertScreen(state, variant, conversion, chromaDivX);
                     });
}

[[maybe_unused]] const bool s_bRegistered = [] {
    RegisterSampling("420", &YCbCr::Convert420, 2);
    RegisterSampling("422", &YCbCr::Convert422, 2);
    RegisterSampling("444", &YCbCr::Convert444, 1);
    return true;
}();

} // namespace
} // namespace Vostrel::bench
