#include "tools/rctool/Commands.h"
#include "tools/rctool/Counted.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RawExport.h"
#include "tools/rctool/RecordedUpdates.h"
#include "tools/rctool/VideoExport.h"

#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using recording::RecordingReader;
using streamencoder::ChromaSubsampling;

namespace {

struct ExportRequest {
    std::string m_recording;
    std::string m_folder;
    std::string m_video;
    std::optional<double> m_framesPerSecond;
    ChromaSubsampling m_chroma = ChromaSubsampling::Yuv420;
    DecodingOptions m_decoding;
    bool m_bForce = false;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, ExportRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_option("-o,--output", request.m_folder,
                   "folder for the data of the updates, a file each, and for\n"
                   "index.json, which describes them")
        ->type_name("FOLDER");
    app.add_option("--y4m", request.m_video, "uncompressed video file; - is the output")
        ->type_name("FILE");
    app.add_option("--fps", request.m_framesPerSecond,
                   "frames a second of the video [the recording's\n"
                   "own if its updates have a constant period, or 25]")
        ->type_name("X")
        ->check(Number(0.001, 1e6));
    AddChoice<ChromaSubsampling>(
        app, "--chroma", request.m_chroma,
        {{"420", ChromaSubsampling::Yuv420}, {"444", ChromaSubsampling::Yuv444}},
        "subsampling of the video, 420 or 444 [420]");
    AddDecodingOptions(app, request.m_decoding);
    AddForce(app, request.m_bForce);
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
    app.footer("The video begins with the first update. Frames are repeated or left out as\n"
               "the recorded times ask for it.");
}

int WriteVideo(const ExportRequest& request) {
    RecordingReader reader(request.m_recording);
    recording::PlayerOptions options{request.m_decoding.m_threads, request.m_decoding.m_kernels,
                                     recording::Target::Argb};
    recording::Player player(reader.GetHeader(), options);
    std::optional<FrameRate> rate;
    if (request.m_framesPerSecond)
        rate = RateOf(*request.m_framesPerSecond);
    const VideoPlan plan = PlanVideo(reader, rate);
    if (plan.GetUpdates() == 0)
        return ReportNoUpdates(request.m_recording, reader.GetEnd());
    size_t failures = 0;
    Progress progress("export", "update", plan.GetUpdates(), !request.m_bQuiet);
    WriteWhole(request.m_video, request.m_bForce, [&](std::FILE* file) {
        failures = ExportVideo(reader, player, plan, request.m_chroma, file, progress);
    });
    progress.Clear();
    if (!request.m_bQuiet)
        std::fprintf(TextStream({request.m_video}), "%s: %zu x %zu, %s at %u/%u a second\n",
                     OutputName(request.m_video).c_str(), plan.m_size.m_uiWidth,
                     plan.m_size.m_uiHeight, Counted(plan.GetFrames(), "frame").c_str(),
                     plan.m_rate.m_uiFrames, plan.m_rate.m_uiSeconds);
    const int end = ReportEnd(request.m_recording, reader.GetEnd());
    const int outcome = ReportFailures(failures);
    return outcome != Done ? outcome : end;
}

int WriteRaw(const ExportRequest& request) {
    RecordingReader reader(request.m_recording);
    Progress progress("export", "update", CountUpdates(reader), !request.m_bQuiet);
    const size_t count = ExportRaw(reader, request.m_folder, request.m_bForce, progress);
    progress.Clear();
    if (!request.m_bQuiet)
        std::fprintf(TextStream({request.m_video}), "%s: %s\n", request.m_folder.c_str(),
                     Counted(count, "update").c_str());
    return ReportEnd(request.m_recording, reader.GetEnd());
}

int Export(const ExportRequest& request) {
    if (request.m_folder.empty() && request.m_video.empty())
        throw std::invalid_argument("There is nothing to export: --output or --y4m is needed");
    const int raw = request.m_folder.empty() ? int{Done} : WriteRaw(request);
    const int video = request.m_video.empty() ? int{Done} : WriteVideo(request);
    return video != Done ? video : raw;
}

} // namespace

void AddExport(CLI::App& app, Action& action) {
    AddCommand<ExportRequest>(app, action, "export", "Export raw updates or a video", Describe,
                              Export);
}

} // namespace Vostrel::rctool
