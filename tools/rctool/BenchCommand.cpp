#include "tools/rctool/Commands.h"
#include "tools/rctool/Counted.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Names.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RecordedUpdates.h"
#include "tools/rctool/StopWatch.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using recording::Player;
using recording::RecordedUpdate;
using recording::RecordingReader;

namespace {

struct BenchRequest {
    std::string m_recording;
    unsigned m_uiPasses = 15;
    DecodingOptions m_decoding;
    bool m_bJson = false;
};

void Describe(CLI::App& app, BenchRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_option("--passes", request.m_uiPasses, "how often the recording is decoded [15]")
        ->type_name("N")
        ->check(WholeNumber(1, 1000000));
    AddDecodingOptions(app, request.m_decoding);
    app.add_flag("--json", request.m_bJson, "as JSON");
    app.footer("Times are medians over the passes. Compare on an idle machine, pinned to\n"
               "processors (taskset), and quote ratios.");
}

/// The updates in memory, with what there is to decode in them.
struct Work {
    std::vector<RecordedUpdate> m_vUpdates;
    size_t m_uiPixels = 0; ///< of all rectangles
    size_t m_uiCoded = 0;  ///< macroblocks
};

/// Gives the player the decoders that the updates need.
Work Load(RecordingReader& reader, Player& player) {
    walker::IStreamVisitor nobody;
    Work work;
    while (auto record = reader.Next()) {
        CheckForInterruption();
        if (std::holds_alternative<recording::Settings>(*record))
            throw std::runtime_error("A recording whose settings change cannot be measured");
        auto* const update = std::get_if<RecordedUpdate>(&*record);
        if (const auto* const decoder = std::get_if<recording::AddedDecoder>(&*record))
            player.Apply(*decoder);
        if (update == nullptr)
            continue;
        const auto& area = update->m_encoded.m_rectangle;
        work.m_uiPixels += size_t{area.m_uiWidth} * area.m_uiHeight;
        if (const auto end = WalkerOf(reader, *update).Walk(update->m_encoded, nobody))
            work.m_uiCoded += end->m_uiCoded;
        work.m_vUpdates.push_back(std::move(*update));
    }
    return work;
}

/// Returns how many updates fail that did not when they were recorded.
size_t PlayAll(Player& player, const Work& work) {
    return static_cast<size_t>(
        std::count_if(work.m_vUpdates.begin(), work.m_vUpdates.end(), [&](const auto& update) {
            CheckForInterruption();
            const bool failed = !player.Play(update).m_failure.empty();
            return failed && update.m_result != recording::FailedResult;
        }));
}

double MedianOf(std::vector<WorkTime> times, int64_t (*valueOf)(const WorkTime&)) {
    std::vector<int64_t> values(times.size());
    std::transform(times.begin(), times.end(), values.begin(), valueOf);
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return static_cast<double>(*middle);
}

struct Figures {
    double m_fWall; ///< nanoseconds of a pass, as are the next two
    double m_fOwn;
    double m_fWorkers;
    double m_fPerMacroblock; ///< nanoseconds of all threads for a coded macroblock
    double m_fMegapixels;    ///< a second of the wall clock, skipped pixels among them
};

Figures FiguresOf(const std::vector<WorkTime>& times, const Work& work) {
    Figures figures{};
    figures.m_fWall = MedianOf(times, [](const WorkTime& time) { return time.m_iWall; });
    figures.m_fOwn = MedianOf(times, [](const WorkTime& time) { return time.m_iOwn; });
    figures.m_fWorkers = MedianOf(times, [](const WorkTime& time) { return time.Workers(); });
    const double all = MedianOf(times, [](const WorkTime& time) { return time.m_iAll; });
    figures.m_fPerMacroblock = all / static_cast<double>(std::max<size_t>(work.m_uiCoded, 1));
    figures.m_fMegapixels = 1e3 * static_cast<double>(work.m_uiPixels) / figures.m_fWall;
    return figures;
}

void PrintText(const Figures& figures, const Work& work, const BenchRequest& request,
               const Player& player) {
    std::printf("%s, %s, %s, %s, %s kernels\n", Counted(work.m_vUpdates.size(), "update").c_str(),
                Counted(work.m_uiCoded, "coded macroblock").c_str(),
                request.m_uiPasses == 1 ? "1 pass"
                                        : (std::to_string(request.m_uiPasses) + " passes").c_str(),
                Counted(player.GetThreads(), "thread").c_str(), player.GetKernels().m_pName);
    std::printf("wall clock         %12.3f ms a pass\n", figures.m_fWall / 1e6);
    std::printf("calling thread     %12.3f ms of processor time\n", figures.m_fOwn / 1e6);
    std::printf("workers            %12.3f ms of processor time\n", figures.m_fWorkers / 1e6);
    std::printf("coded macroblock   %12.1f ns of processor time\n", figures.m_fPerMacroblock);
    std::printf("speed              %12.1f Mpixel/s, skipped ones among them\n",
                figures.m_fMegapixels);
}

void PrintJson(const Figures& figures, const Work& work, const BenchRequest& request,
               const Player& player) {
    const nlohmann::ordered_json json = {{"updates", work.m_vUpdates.size()},
                                         {"codedMacroblocks", work.m_uiCoded},
                                         {"passes", request.m_uiPasses},
                                         {"threads", player.GetThreads()},
                                         {"kernels", player.GetKernels().m_pName},
                                         {"wallNs", figures.m_fWall},
                                         {"ownCpuNs", figures.m_fOwn},
                                         {"workersCpuNs", figures.m_fWorkers},
                                         {"cpuNsPerMacroblock", figures.m_fPerMacroblock},
                                         {"megapixelsPerSecond", figures.m_fMegapixels}};
    constexpr int Indent = 2;
    std::puts(json.dump(Indent).c_str());
}

int Bench(const BenchRequest& request) {
    RecordingReader reader(request.m_recording);
    Player player(reader.GetHeader(), {request.m_decoding.m_threads, request.m_decoding.m_kernels});
    const Work work = Load(reader, player);
    if (work.m_vUpdates.empty())
        return ReportNoUpdates(request.m_recording, reader.GetEnd());
    const size_t failures = PlayAll(player, work); // Warms caches and tables.
    std::vector<WorkTime> times;
    Progress progress("bench", "pass", request.m_uiPasses);
    for (unsigned pass = 0; pass < request.m_uiPasses; ++pass) {
        progress.Step();
        const StopWatch watch;
        PlayAll(player, work);
        times.push_back(watch.Elapsed());
    }
    progress.Clear();
    const Figures figures = FiguresOf(times, work);
    (request.m_bJson ? PrintJson : PrintText)(figures, work, request, player);
    const int end = ReportEnd(request.m_recording, reader.GetEnd());
    const int outcome = ReportFailures(failures);
    return outcome != Done ? outcome : end;
}

} // namespace

void AddBench(CLI::App& app, Action& action) {
    AddCommand<BenchRequest>(app, action, "bench", "Measure how fast a recording decodes", Describe,
                             Bench);
}

} // namespace Vostrel::rctool
