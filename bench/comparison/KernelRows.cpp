#include "bench/DecodingScene.h"
#include "bench/comparison/PlainLoops.h"
#include "bench/comparison/Rows.h"
#include "bench/comparison/Screens.h"
#include "libimagedecoder/AlignedMemory.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tools/YCbCrPlanes.h"

#include <memory>
#include <random>

// The kernels alone, as the factories choose them.

namespace Vostrel::bench {

using namespace libimagedecoder;
using namespace streamencoder;
using InverseTransform::InverseIct::InverseIctFactory;
using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

namespace {

struct ConversionCase {
    const char* m_name;
    ChromaSubsampling m_chroma;
    decltype(&IYCbCr4xxToArgb32::Convert420) m_convert;
    Goal m_goal;
};

constexpr ConversionCase ConversionCases[] = {
    {"colour conversion 4:2:0",
     ChromaSubsampling::Yuv420,
     &IYCbCr4xxToArgb32::Convert420,
     {1.0, 0.9, false}},
    {"colour conversion 4:2:2",
     ChromaSubsampling::Yuv422,
     &IYCbCr4xxToArgb32::Convert422,
     {1.3, Goal::None, false}},
    {"colour conversion 4:4:4",
     ChromaSubsampling::Yuv444,
     &IYCbCr4xxToArgb32::Convert444,
     {1.3, Goal::None, false}},
};

void MeasureConversion(const ConversionCase& work, const Picture& picture,
                       const RoundSettings& settings, Report& report) {
    SilentLogger logger;
    const auto kernel = YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, true);
    const auto width = static_cast<unsigned short>(picture.m_uiWidth);
    const auto height = static_cast<unsigned short>(picture.m_uiHeight);
    const YCbCrPlanes planes = ConvertToYCbCr(picture, {0, 0, width, height}, work.m_chroma);
    const auto skipMask = std::make_unique<bool[]>(picture.m_vPixels.size() / 256);
    std::vector<uint32_t> framebuffer(picture.m_vPixels.size());

    Rounds rounds(settings);
    const size_t convert = rounds.Add([&] {
        (kernel.get()->*work.m_convert)(
            framebuffer.data(), planes.m_y.At(0, 0), planes.m_cb.At(0, 0), planes.m_cr.At(0, 0),
            width, height, width, planes.m_y.m_uiWidth, planes.m_cb.m_uiWidth, skipMask.get());
    });
    const size_t store =
        rounds.Add([&] { StorePixels(framebuffer.data(), framebuffer.size(), 0xFF123456); });
    rounds.Run();
    report.Add({8, work.m_name, "x time of plain stores", rounds.Speedup(store, convert),
                work.m_goal, rounds.Nanoseconds(convert), rounds.Nanoseconds(store)});
}

constexpr size_t TransformedTiles = 64;

/// Coefficients of tiles that fill the value range of samples. The accelerated transforms have no
/// branches: what the numbers are is all the same to them.
AlignedArray<int16_t> RandomCoefficients() {
    auto coefficients = AllocateAligned<int16_t>(TransformedTiles * 64, 32);
    std::mt19937 random(1);
    for (size_t i = 0; i < TransformedTiles * 64; ++i)
        coefficients[i] = static_cast<int16_t>(static_cast<int>(random() % 2000) - 1000);
    return coefficients;
}

} // namespace

void MeasureColourConversion(const RoundSettings& settings, Report& report) {
    const Picture picture = WholeScreen(Screen::Desktop);
    for (const ConversionCase& work : ConversionCases)
        MeasureConversion(work, picture, settings, report);
}

void MeasureTransform(const RoundSettings& settings, Report& report) {
    SilentLogger logger;
    const auto transform = InverseIctFactory::CreateInverseIct(&logger, true);
    const AlignedArray<int16_t> coefficients = RandomCoefficients();
    AlignedArray<int16_t> dcOnly = AllocateAligned<int16_t>(TransformedTiles * 64, 32);
    for (size_t i = 0; i < TransformedTiles; ++i)
        dcOnly[i * 64] = coefficients[i * 64];
    constexpr size_t Stride = TransformedTiles * 8;
    std::vector<uint8_t> samples(Stride * 8);

    Rounds rounds(settings);
    const size_t full = rounds.Add(
        [&] {
            for (size_t i = 0; i < TransformedTiles; ++i)
                transform->TransformTile(&coefficients[i * 64], &samples[i * 8], Stride);
        },
        TransformedTiles);
    const size_t flat = rounds.Add(
        [&] {
            for (size_t i = 0; i < TransformedTiles; ++i)
                transform->TransformTile(&dcOnly[i * 64], &samples[i * 8], Stride);
        },
        TransformedTiles);
    const size_t chain = rounds.Add(RunCycleChain);
    rounds.Run();
    report.Add({9,
                "transform of a full tile",
                "cycles",
                CyclesInChain * rounds.Speedup(chain, full),
                {45, 35, false},
                rounds.Nanoseconds(full)});
    report.Add({9,
                "transform of a DC-only tile",
                "cycles",
                CyclesInChain * rounds.Speedup(chain, flat),
                {8, 6, false},
                rounds.Nanoseconds(flat)});
}

} // namespace Vostrel::bench
