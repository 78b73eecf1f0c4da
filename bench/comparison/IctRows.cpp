#include "bench/DecodingScene.h"
#include "bench/comparison/IctScreen.h"
#include "bench/comparison/InstructionLimit.h"
#include "bench/comparison/Peers.h"
#include "bench/comparison/Rows.h"

#include <string>

// Whole screens, ICT through HandleUpdate against libjpeg-turbo over the same levels.

namespace Vostrel::bench {

using namespace streamencoder;

namespace {

struct IctCase {
    unsigned m_uiRow;
    Screen m_screen;
    ChromaSubsampling m_chroma;
    uint32_t m_uiLevel;
    Goal m_goal;
    Goal m_goalAgainstFastest = {};
    Instructions m_instructions = Instructions::All;
};

std::string NameOf(const IctCase& work) {
    constexpr const char* Chromas[] = {"4:2:0", "4:2:2", "4:4:4"};
    return std::string("ICT ") + Chromas[static_cast<size_t>(work.m_chroma)] + ' ' +
           NameOf(work.m_screen) + " level " + std::to_string(work.m_uiLevel) +
           Suffix(work.m_instructions);
}

void MeasureScreen(const IctCase& work, const RoundSettings& settings, Report& report) {
    const Picture picture = WholeScreen(work.m_screen);
    IctAndJpeg encoded = EncodeBoth(picture, work.m_chroma, work.m_uiLevel);
    const size_t width = picture.m_uiWidth;
    const size_t height = picture.m_uiHeight;
    const InstructionLimit limit(work.m_instructions);
    DecodingScene scene({Codec::Ict, 0, work.m_chroma, 0, width, height});
    CheckKernels(scene, work.m_instructions);
    TurboJpeg byDefault(TurboJpeg::Mode::Default);
    TurboJpeg fastest(TurboJpeg::Mode::Fastest);
    // One framebuffer for each: none finds it in the cache because another has just left it there.
    std::vector<uint32_t> words(width * height);
    std::vector<uint32_t> fastestWords(width * height);

    Rounds rounds(settings);
    const size_t ours = rounds.Add([&] { scene.Decode(encoded.m_update); });
    const size_t defaultPeer = rounds.Add([&] {
        byDefault.Decode(encoded.m_jpeg, {words.data(), width, height});
    });
    const size_t fastestPeer = rounds.Add([&] {
        fastest.Decode(encoded.m_jpeg, {fastestWords.data(), width, height});
    });
    rounds.Run();
    CheckRecognisable(scene.Framebuffer(), picture);
    CheckRecognisable(words, picture);
    CheckRecognisable(fastestWords, picture);

    const auto add = [&](const char* measure, size_t peer, const Goal& goal) {
        report.Add({work.m_uiRow, NameOf(work), measure, rounds.Speedup(ours, peer), goal,
                    rounds.Nanoseconds(ours), rounds.Nanoseconds(peer),
                    BitsPerPixel(encoded.m_update), JpegBitsPerPixel(encoded)});
    };
    add("x tj default", defaultPeer, work.m_goal);
    add("x tj fastest", fastestPeer, work.m_goalAgainstFastest);
}

} // namespace

void MeasureIctDesktop(const RoundSettings& settings, Report& report) {
    MeasureScreen({1, Screen::Desktop, ChromaSubsampling::Yuv420, 8, {2.2, 3.0}, {1.85}}, settings,
                  report);
}

void MeasureIctDesktopExtremes(const RoundSettings& settings, Report& report) {
    MeasureScreen({2, Screen::Desktop, ChromaSubsampling::Yuv420, 0, {2.5, 3.3}}, settings, report);
    MeasureScreen({2, Screen::Desktop, ChromaSubsampling::Yuv420, 15, {1.9, 2.5}}, settings,
                  report);
}

void MeasureIctWithLessInstructions(const RoundSettings& settings, Report& report) {
    MeasureScreen(
        {13, Screen::Desktop, ChromaSubsampling::Yuv420, 8, {1.9}, {}, Instructions::Sse2},
        settings, report);
    MeasureScreen(
        {13, Screen::Desktop, ChromaSubsampling::Yuv420, 8, {1.2}, {}, Instructions::None},
        settings, report);
}

void MeasureIctPhoto(const RoundSettings& settings, Report& report) {
    MeasureScreen({3, Screen::Photo, ChromaSubsampling::Yuv420, 3, {2.3, 3.0}}, settings, report);
    MeasureScreen({3, Screen::Photo, ChromaSubsampling::Yuv420, 12, {2.1, 2.7}}, settings, report);
    MeasureScreen({3, Screen::Photo, ChromaSubsampling::Yuv420, 15, {2.0, 2.5}}, settings, report);
}

void MeasureIctConsole(const RoundSettings& settings, Report& report) {
    MeasureScreen({4, Screen::Console, ChromaSubsampling::Yuv420, 3, {3.3, 5.0}}, settings, report);
    MeasureScreen({4, Screen::Console, ChromaSubsampling::Yuv420, 15, {2.5, 3.5}}, settings,
                  report);
}

void MeasureIctOtherSubsamplings(const RoundSettings& settings, Report& report) {
    MeasureScreen({5, Screen::Desktop, ChromaSubsampling::Yuv422, 8, {2.0, 2.7}}, settings, report);
    MeasureScreen({5, Screen::Desktop, ChromaSubsampling::Yuv444, 8, {2.0, 2.7}}, settings, report);
}

} // namespace Vostrel::bench
