#include "bench/DecodingScene.h"

#include <benchmark/benchmark.h>

// Whole updates through HandleUpdate: stream, macroblocks, transform, drawing.

namespace Vostrel::bench {
namespace {

using streamencoder::ChromaSubsampling;
using streamencoder::Codec;
using streamencoder::RecordLayout;

void DecodeWholeScreen(benchmark::State& state, const char* screen, Codec codec,
                       ChromaSubsampling chroma, uint32_t quality, unsigned long threads) {
    const RecordLayout layout = threads > 0 ? RecordLayout::Pool : RecordLayout::Continuous;
    const unsigned version = threads > 0 ? 2 : 1;
    const streamencoder::Picture picture = LoadScreen(screen);
    streamencoder::EncodedUpdate update = EncodeScreen(
        picture, {.m_codec = codec, .m_uiProtocolVersion = version, .m_layout = layout}, chroma,
        quality);
    DecodingScene scene({codec, version, chroma, threads, picture.m_uiWidth, picture.m_uiHeight});
    for (auto _ : state)
        scene.Decode(update);
    state.counters["Mpixel/s"] = benchmark::Counter(static_cast<double>(scene.Pixels()) * 1e-6,
                                                    benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bits/pixel"] = BitsPerPixel(update);
}

constexpr const char* Desktop = "desktop-1920x1080-00.png";
constexpr const char* Photo = "photo-1920x1080-00.png";
constexpr const char* Console = "console-720x400-00.png";

#define UPDATE_CASE(name, ...)                                                                     \
    BENCHMARK_CAPTURE(DecodeWholeScreen, name, __VA_ARGS__)                                        \
        ->Unit(benchmark::kMicrosecond)                                                            \
        ->UseRealTime()

UPDATE_CASE(IctDesktop420Level0, Desktop, Codec::Ict, ChromaSubsampling::Yuv420, 0, 0);
UPDATE_CASE(IctDesktop420Level8, Desktop, Codec::Ict, ChromaSubsampling::Yuv420, 8, 0);
UPDATE_CASE(IctDesktop420Level15, Desktop, Codec::Ict, ChromaSubsampling::Yuv420, 15, 0);
UPDATE_CASE(IctDesktop422Level8, Desktop, Codec::Ict, ChromaSubsampling::Yuv422, 8, 0);
UPDATE_CASE(IctDesktop444Level8, Desktop, Codec::Ict, ChromaSubsampling::Yuv444, 8, 0);
UPDATE_CASE(IctDesktop420Level8Pool1, Desktop, Codec::Ict, ChromaSubsampling::Yuv420, 8, 1);
UPDATE_CASE(IctDesktop420Level8Pool2, Desktop, Codec::Ict, ChromaSubsampling::Yuv420, 8, 2);
UPDATE_CASE(IctPhoto420Level12, Photo, Codec::Ict, ChromaSubsampling::Yuv420, 12, 0);
UPDATE_CASE(IctConsole420Level3, Console, Codec::Ict, ChromaSubsampling::Yuv420, 3, 0);
UPDATE_CASE(LbeDesktop420Quality10, Desktop, Codec::Lbe, ChromaSubsampling::Yuv420, 10, 0);
UPDATE_CASE(LbeDesktop422Quality10, Desktop, Codec::Lbe, ChromaSubsampling::Yuv422, 10, 0);
UPDATE_CASE(LbeDesktop444Quality10, Desktop, Codec::Lbe, ChromaSubsampling::Yuv444, 10, 0);
UPDATE_CASE(LbeDesktop420Quality10Pool2, Desktop, Codec::Lbe, ChromaSubsampling::Yuv420, 10, 2);
UPDATE_CASE(LbeConsole420Quality5, Console, Codec::Lbe, ChromaSubsampling::Yuv420, 5, 0);

} // namespace
} // namespace Vostrel::bench
