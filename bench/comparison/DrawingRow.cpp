#include "bench/DecodingScene.h"
#include "bench/comparison/PlainLoops.h"
#include "bench/comparison/Rows.h"
#include "bench/comparison/Screens.h"
#include "libimagedecoder/LbeQuality.h"
#include "tools/NearestLevels.h"
#include "tools/YCbCrPlanes.h"

#include <memory>
#include <stdexcept>
#include <string>

// The renderer's drawing of levels, for every pair of depths, against a table read per pixel.

namespace Vostrel::bench {

using namespace libimagedecoder;
using namespace streamencoder;

namespace {

struct DrawingCase {
    const char* m_name;
    ChromaSubsampling m_chroma;
    decltype(&ImageDecoderRenderer::DrawDataYCbCr420Quantized) m_draw;
};

constexpr DrawingCase DrawingCases[] = {
    {"4:2:0", ChromaSubsampling::Yuv420, &ImageDecoderRenderer::DrawDataYCbCr420Quantized},
    {"4:2:2", ChromaSubsampling::Yuv422, &ImageDecoderRenderer::DrawDataYCbCr422Quantized},
    {"4:4:4", ChromaSubsampling::Yuv444, &ImageDecoderRenderer::DrawDataYCbCr444Quantized},
};

/// A picture at reduced depth.
struct ReducedPicture {
    std::vector<uint8_t> m_vuiLuma;
    std::vector<uint16_t> m_vuiChroma;
};

ReducedPicture Reduce(const YCbCrPlanes& planes, const LbeQuality& depths) {
    const LevelMap lumaLevels = NearestLumaLevels(depths.m_uiLumaBits);
    const LevelMap chromaLevels = NearestChromaLevels(depths.m_uiChromaBits);
    ReducedPicture reduced;
    for (const uint8_t sample : planes.m_y.m_vuiSamples)
        reduced.m_vuiLuma.push_back(lumaLevels[sample]);
    for (size_t i = 0; i < planes.m_cb.m_vuiSamples.size(); ++i) {
        const unsigned cb = chromaLevels[planes.m_cb.m_vuiSamples[i]];
        const unsigned cr = chromaLevels[planes.m_cr.m_vuiSamples[i]];
        reduced.m_vuiChroma.push_back(static_cast<uint16_t>(cb << depths.m_uiChromaBits | cr));
    }
    return reduced;
}

void MeasureDrawing(const DrawingCase& work, const YCbCrPlanes& planes, const LbeQuality& depths,
                    const RoundSettings& settings, Report& report) {
    const size_t width = planes.m_y.m_uiWidth;
    const size_t height = planes.m_y.m_uiHeight;
    ReducedPicture picture = Reduce(planes, depths);
    const LevelsToDraw levels{picture.m_vuiLuma.data(),
                              picture.m_vuiChroma.data(),
                              width,
                              height,
                              ChromaDivX(work.m_chroma),
                              ChromaDivY(work.m_chroma),
                              depths.m_uiChromaBits};
    SilentLogger logger;
    ImageDecoderRenderer renderer(&logger);
    std::vector<uint32_t> words(width * height);
    std::vector<uint32_t> peerWords(width * height);
    renderer.SetFramebufferSize(static_cast<unsigned short>(width),
                                static_cast<unsigned short>(height), false);
    renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(words.data()));
    const unsigned* const table =
        ImageDecoderRenderer::GetQuantizedLookupTable(depths.m_uiLumaBits, depths.m_uiChromaBits);
    const auto skipMask = std::make_unique<bool[]>(width * height / 256);

    Rounds rounds(settings);
    const size_t ours = rounds.Add([&] {
        (renderer.*work.m_draw)(
            depths.m_uiLumaBits, depths.m_uiChromaBits, 0, 0, static_cast<unsigned short>(width),
            static_cast<unsigned short>(height), width, planes.m_cb.m_uiWidth,
            picture.m_vuiLuma.data(), picture.m_vuiChroma.data(), skipMask.get());
    });
    const size_t plain = rounds.Add([&] { DrawByTable(levels, table, peerWords.data()); });
    rounds.Run();
    if (words != peerWords)
        throw std::logic_error("The table read per pixel draws something else");
    const std::string name = std::string("drawing ") + work.m_name + ", " +
                             std::to_string(depths.m_uiLumaBits) + " + 2 x " +
                             std::to_string(depths.m_uiChromaBits) + " bits";
    report.Add({11,
                name,
                "x table read per pixel",
                rounds.Speedup(ours, plain),
                {5, 8},
                rounds.Nanoseconds(ours),
                rounds.Nanoseconds(plain)});
}

} // namespace

void MeasureReducedDepthDrawing(const RoundSettings& settings, Report& report) {
    const Picture picture = WholeScreen(Screen::Desktop);
    for (const DrawingCase& work : DrawingCases) {
        const YCbCrPlanes planes = ConvertToYCbCr(picture,
                                                  {0, 0, static_cast<uint16_t>(picture.m_uiWidth),
                                                   static_cast<uint16_t>(picture.m_uiHeight)},
                                                  work.m_chroma);
        for (const LbeQuality& depths : s_aLbeQualities)
            MeasureDrawing(work, planes, depths, settings, report);
    }
}

} // namespace Vostrel::bench
