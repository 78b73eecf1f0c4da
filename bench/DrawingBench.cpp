#include "bench/DecodingScene.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <memory>
#include <random>

// The renderer alone on a whole screen: with few macroblocks coded, at reduced depth beside a loop
// that reads the colour table for every pixel, and with the options that look at every pixel again.

namespace Vostrel::bench {
namespace {

using libimagedecoder::ImageDecoderRenderer;
using libimagedecoder::YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

constexpr unsigned short Width = 1920;
constexpr unsigned short Height = 1080;
constexpr size_t Pixels = size_t{Width} * 1088;
constexpr size_t Macroblocks = Pixels / 256;

/// Planes of random samples and a renderer that draws them.
struct Screen {
    explicit Screen(bool accelerate)
        : m_Renderer(YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&m_Logger, accelerate)) {
        std::mt19937 random(1);
        for (size_t i = 0; i < Pixels; ++i) {
            m_vLuma[i] = static_cast<uint8_t>(random());
            m_vChroma[i] = static_cast<uint8_t>(random());
            m_vChromaValues[i] = static_cast<uint16_t>(random());
        }
        m_Renderer.SetFramebufferSize(Width, Height, false);
        m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_vFramebuffer.data()));
    }

    /// Leaves every macroblock but one in 1000 / permille alone.
    void MaskAllBut(unsigned permille) {
        std::mt19937 random(1);
        std::generate_n(m_pMask.get(), Macroblocks, [&] { return random() % 1000 >= permille; });
    }

    void Draw() {
        m_Renderer.DrawDataYCbCr420(0, 0, Width, Height, Width, Width / 2, m_vLuma.data(),
                                    m_vChroma.data(), m_vChroma.data(), m_pMask.get());
    }

    SilentLogger m_Logger;
    ImageDecoderRenderer m_Renderer;
    std::vector<uint8_t> m_vLuma = std::vector<uint8_t>(Pixels);
    std::vector<uint8_t> m_vChroma = std::vector<uint8_t>(Pixels);
    std::vector<uint16_t> m_vChromaValues = std::vector<uint16_t>(Pixels);
    std::unique_ptr<bool[]> m_pMask = std::make_unique<bool[]>(Macroblocks);
    std::vector<uint32_t> m_vFramebuffer = std::vector<uint32_t>(Pixels);
};

void DrawSparse(benchmark::State& state) {
    Screen screen(true);
    screen.MaskAllBut(static_cast<unsigned>(state.range(0)));
    for (auto _ : state)
        screen.Draw();
}

BENCHMARK(DrawSparse)
    ->ArgName("permille")
    ->Arg(0)
    ->Arg(10)
    ->Arg(100)
    ->Arg(500)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);

struct Sampling {
    decltype(&ImageDecoderRenderer::DrawDataYCbCr420Quantized) draw;
    size_t chromaDivX;
    size_t chromaDivY;
};
constexpr Sampling Samplings[] = {{&ImageDecoderRenderer::DrawDataYCbCr420Quantized, 2, 2},
                                  {&ImageDecoderRenderer::DrawDataYCbCr422Quantized, 2, 1},
                                  {&ImageDecoderRenderer::DrawDataYCbCr444Quantized, 1, 1}};

/// Arguments: subsampling code, luma depth, chroma depth.
void EveryDepthInEverySampling(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"chroma", "y", "c"})->Unit(benchmark::kMicrosecond);
    for (int chroma = 0; chroma < 3; ++chroma)
        for (const auto& [y, c] : {std::pair(2, 3),
                                   {2, 4},
                                   {3, 3},
                                   {3, 4},
                                   {4, 3},
                                   {4, 4},
                                   {5, 4},
                                   {5, 5},
                                   {6, 4},
                                   {6, 5}})
            benchmark->Args({chroma, y, c});
}

void DrawQuantized(benchmark::State& state, bool accelerate) {
    Screen screen(accelerate);
    const Sampling& sampling = Samplings[state.range(0)];
    for (auto _ : state)
        (screen.m_Renderer.*sampling.draw)(
            static_cast<unsigned char>(state.range(1)), static_cast<unsigned char>(state.range(2)),
            0, 0, Width, Height, Width, Width / sampling.chromaDivX, screen.m_vLuma.data(),
            screen.m_vChromaValues.data(), screen.m_pMask.get());
}

BENCHMARK_CAPTURE(DrawQuantized, Accelerated, true)->Apply(EveryDepthInEverySampling);
BENCHMARK_CAPTURE(DrawQuantized, Portable, false)->Apply(EveryDepthInEverySampling);

void ReadTablePerPixel(benchmark::State& state) {
    Screen screen(true);
    const Sampling& sampling = Samplings[state.range(0)];
    const auto lumaBits = static_cast<unsigned char>(state.range(1));
    const auto chromaBits = static_cast<unsigned char>(state.range(2));
    const unsigned int* const table =
        ImageDecoderRenderer::GetQuantizedLookupTable(lumaBits, chromaBits);
    for (uint8_t& level : screen.m_vLuma)
        level = static_cast<uint8_t>(level & ((1 << lumaBits) - 1));
    for (uint16_t& value : screen.m_vChromaValues)
        value = static_cast<uint16_t>(value & ((1 << 2 * chromaBits) - 1));
    for (auto _ : state) {
        for (size_t y = 0; y < Height; ++y) {
            const uint8_t* const luma = &screen.m_vLuma[y * Width];
            const uint16_t* const chroma =
                &screen.m_vChromaValues[y / sampling.chromaDivY * (Width / sampling.chromaDivX)];
            uint32_t* const out = &screen.m_vFramebuffer[y * Width];
            for (size_t x = 0; x < Width; ++x)
                out[x] = table[static_cast<size_t>(luma[x]) << 2 * chromaBits |
                               chroma[sampling.chromaDivX == 2 ? x / 2 : x]];
        }
        benchmark::ClobberMemory();
    }
}

BENCHMARK(ReadTablePerPixel)->Apply(EveryDepthInEverySampling);

void AdjustScreen(benchmark::State& state) {
    Screen screen(true);
    screen.m_Renderer.SetClientPostprocessingEnabled(true);
    for (auto _ : state)
        screen.Draw();
}

BENCHMARK(AdjustScreen)->Unit(benchmark::kMicrosecond);

void StretchScreen(benchmark::State& state) {
    Screen screen(true);
    screen.m_Renderer.SetContrastEnhance(50);
    for (auto _ : state)
        screen.m_Renderer.ApplyContrastEnhancement(Width, Height, Width, screen.m_vLuma.data(), 8,
                                                   screen.m_pMask.get());
}

BENCHMARK(StretchScreen)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace Vostrel::bench
