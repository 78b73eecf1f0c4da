#include "bench/DecodingScene.h"
#include "bench/comparison/LevelPicture.h"
#include "bench/comparison/Rows.h"
#include "bench/comparison/Screens.h"

#include <algorithm>
#include <filesystem>
#include <string>

// Protocol version 2 with a pool of workers against decoding in place on one core.

namespace Vostrel::bench {

using namespace streamencoder;
using libimagedecoder::MacroblockEdge;

namespace {

struct PoolCase {
    Screen m_screen;
    uint32_t m_uiLevel;
    Goal m_goal;
};

constexpr PoolCase PoolCases[] = {
    {Screen::Desktop, 8, {1.5, 1.6}},
    {Screen::Photo, 12, {1.5, 1.6}},
    {Screen::Console, 3, {1.15, 1.3}},
};

std::vector<int> ThreadsOfProcess() {
    std::vector<int> threads;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
        threads.push_back(std::stoi(task.path().filename()));
    std::sort(threads.begin(), threads.end());
    return threads;
}

/// A scene with a pool, its workers pinned to the given cores in turn.
std::unique_ptr<DecodingScene> PinnedScene(const SceneSettings& scene,
                                           const std::vector<int>& cores) {
    const std::vector<int> before = ThreadsOfProcess();
    auto decoder = std::make_unique<DecodingScene>(scene);
    size_t worker = 0;
    for (const int thread : ThreadsOfProcess()) {
        if (!std::binary_search(before.begin(), before.end(), thread))
            PinThread(thread, cores[worker++ % cores.size()]);
    }
    return decoder;
}

void MeasureCase(const PoolCase& work, const RoundSettings& settings, Report& report) {
    constexpr auto Chroma = ChromaSubsampling::Yuv420;
    const Picture picture = WholeScreen(work.m_screen);
    const LevelPicture levels = QuantisePicture(picture, Chroma, work.m_uiLevel);
    const auto encode = [&](RecordLayout layout) {
        return WriteIctUpdate(
            levels, work.m_uiLevel,
            {.m_codec = Codec::Ict, .m_uiProtocolVersion = 2, .m_layout = layout});
    };
    EncodedUpdate continuous = encode(RecordLayout::Continuous);
    EncodedUpdate records = encode(RecordLayout::Pool);
    const int first = settings.m_iCore;
    const int second = settings.m_iSecondCore;
    const auto scene = [&](unsigned long threads) {
        return SceneSettings{Codec::Ict, 2, Chroma, threads, picture.m_uiWidth, picture.m_uiHeight};
    };
    DecodingScene inPlace(scene(0));
    const auto oneWorker = PinnedScene(scene(1), {first});
    const auto twoWorkers = PinnedScene(scene(2), {second, first});
    const std::string name =
        std::string("ICT ") + NameOf(work.m_screen) + " level " + std::to_string(work.m_uiLevel);

    // The driving thread goes wherever there is room.
    Rounds wall(settings, Clock::WallTime);
    const size_t alone =
        wall.Add([&] { inPlace.Decode(continuous); }, 1, [&] { PinCallingThread(first); });
    const size_t shared =
        wall.Add([&] { twoWorkers->Decode(records); }, 1, [&] { PinCallingThread(first, second); });
    wall.Run();
    report.Add({12, name + ", two workers", "x in place", wall.Speedup(shared, alone), work.m_goal,
                wall.Nanoseconds(shared), wall.Nanoseconds(alone)});

    const double macroblocks = static_cast<double>(picture.m_vPixels.size()) /
                               static_cast<double>(MacroblockEdge * MacroblockEdge);
    Rounds processor(settings, Clock::ProcessTime);
    const size_t none = processor.Add([&] { inPlace.Decode(continuous); });
    const size_t one = processor.Add([&] { oneWorker->Decode(records); });
    processor.Run();
    report.Add({12,
                name + ", one worker",
                "ns more a macroblock",
                (processor.Speedup(none, one) - 1) * processor.Nanoseconds(none) / macroblocks,
                {10, Goal::None, false},
                processor.Nanoseconds(one),
                processor.Nanoseconds(none)});
}

} // namespace

void MeasurePool(const RoundSettings& settings, Report& report) {
    for (const PoolCase& work : PoolCases)
        MeasureCase(work, settings, report);
}

} // namespace Vostrel::bench
