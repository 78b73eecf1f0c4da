#include "bench/DecodingScene.h"
#include "bench/comparison/IctScreen.h"
#include "bench/comparison/Peers.h"
#include "bench/comparison/Rows.h"

#include <random>
#include <string>

// Updates of which little or nothing is coded.

namespace Vostrel::bench {

using namespace streamencoder;
using libimagedecoder::MacroblockEdge;

namespace {

constexpr uint32_t Level = 8;
constexpr auto Chroma = ChromaSubsampling::Yuv420;
constexpr UpdateFormat Format{.m_codec = Codec::Ict, .m_uiProtocolVersion = 0};

/// Squares cut from random places of two desktops. There are so many of them that no branch
/// predictor learns them by heart.
std::vector<IctAndJpeg> CutUpdates(size_t edge, size_t count) {
    const Picture screens[] = {WholeScreen(Screen::Desktop),
                               LoadScreen("desktop-1920x1080-01.png")};
    std::mt19937 random(1);
    std::vector<IctAndJpeg> updates;
    for (size_t i = 0; i < count; ++i) {
        const Picture& screen = screens[i % std::size(screens)];
        const size_t x = random() % ((screen.m_uiWidth - edge) / MacroblockEdge) * MacroblockEdge;
        const size_t y = random() % ((screen.m_uiHeight - edge) / MacroblockEdge) * MacroblockEdge;
        updates.push_back(EncodeBoth(Cut(screen, x, y, edge, edge), Chroma, Level,
                                     static_cast<uint16_t>(x), static_cast<uint16_t>(y)));
    }
    return updates;
}

void MeasureSquares(size_t edge, size_t count, const Goal& goal, const RoundSettings& settings,
                    Report& report) {
    constexpr size_t Width = 1920;
    constexpr size_t Height = 1088;
    std::vector<IctAndJpeg> updates = CutUpdates(edge, count);
    DecodingScene scene({Codec::Ict, 0, Chroma, 0, Width, Height});
    TurboJpeg jpeg(TurboJpeg::Mode::Default);
    std::vector<uint32_t> words(Width * Height);

    Rounds rounds(settings);
    const auto decodeAll = [&] {
        for (IctAndJpeg& update : updates)
            scene.Decode(update.m_update);
    };
    const auto decodeAllByPeer = [&] {
        for (const IctAndJpeg& update : updates)
            jpeg.Decode(update.m_jpeg, {words.data(), Width, Height},
                        update.m_update.m_rectangle.m_uiX, update.m_update.m_rectangle.m_uiY);
    };
    const size_t ours = rounds.Add(decodeAll, count);
    const size_t peer = rounds.Add(decodeAllByPeer, count);
    rounds.Run();
    const std::string size = std::to_string(edge);
    report.Add({6, "ICT update of " + size + "x" + size, "x tj default", rounds.Speedup(ours, peer),
                goal, rounds.Nanoseconds(ours), rounds.Nanoseconds(peer)});
}

/// Which macroblocks of a picture are coded when about that share of them is.
std::vector<bool> RandomlyCoded(const Picture& picture, double share) {
    std::mt19937 random(1);
    std::bernoulli_distribution coded(share);
    std::vector<bool> mask(picture.m_uiWidth / MacroblockEdge *
                           (picture.m_uiHeight / MacroblockEdge));
    for (size_t i = 0; i < mask.size(); ++i)
        mask[i] = coded(random);
    return mask;
}

} // namespace

void MeasureSmallUpdates(const RoundSettings& settings, Report& report) {
    MeasureSquares(16, 3000, {12, 20}, settings, report);
    MeasureSquares(64, 600, {3.2, 5}, settings, report);
    MeasureSquares(256, 60, {2.3, 3}, settings, report);
}

void MeasureSparseUpdates(const RoundSettings& settings, Report& report) {
    const Picture picture = WholeScreen(Screen::Desktop);
    const LevelPicture levels = QuantisePicture(picture, Chroma, Level);
    const IctAndJpeg whole = EncodeBoth(picture, Chroma, Level);
    EncodedUpdate unchanged =
        WriteIctUpdate(levels, Level, Format, 0, 0, RandomlyCoded(picture, 0));
    EncodedUpdate sparse =
        WriteIctUpdate(levels, Level, Format, 0, 0, RandomlyCoded(picture, 0.01));
    DecodingScene scene({Codec::Ict, 0, Chroma, 0, picture.m_uiWidth, picture.m_uiHeight});
    TurboJpeg jpeg(TurboJpeg::Mode::Default);
    std::vector<uint32_t> words(picture.m_vPixels.size());

    Rounds rounds(settings);
    const size_t nothing = rounds.Add([&] { scene.Decode(unchanged); });
    const size_t little = rounds.Add([&] { scene.Decode(sparse); });
    const size_t peer = rounds.Add([&] {
        jpeg.Decode(whole.m_jpeg, {words.data(), picture.m_uiWidth, picture.m_uiHeight});
    });
    rounds.Run();
    report.Add({7,
                "ICT whole screen, 0 % coded",
                "us",
                rounds.Nanoseconds(nothing) / 1000,
                {25, 5, false},
                rounds.Nanoseconds(nothing)});
    report.Add({7,
                "ICT whole screen, 1 % coded",
                "% of tj, all coded",
                100 * rounds.Speedup(peer, little),
                {2.5, 1.5, false},
                rounds.Nanoseconds(little),
                rounds.Nanoseconds(peer)});
}

} // namespace Vostrel::bench
