#include "tools/PngFile.h"
#include "tools/rctool/Commands.h"
#include "tools/rctool/Heatmap.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/RecordedUpdates.h"
#include "tools/walker/StreamWalker.h"

#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using recording::Player;
using recording::RecordedUpdate;
using recording::RecordingReader;

namespace {

struct HeatmapRequest {
    std::string m_recording;
    std::string m_output;
    std::optional<size_t> m_update;
    HeatmapKind m_kind = HeatmapKind::Bits;
    bool m_bForce = false;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, HeatmapRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_option("-o,--output", request.m_output, "PNG file to write")
        ->required()
        ->type_name("FILE");
    app.add_option("--update", request.m_update, "only this one, counted from 0 [all of them]")
        ->type_name("N");
    AddChoice<HeatmapKind>(app, "--show", request.m_kind,
                           {{"bits", HeatmapKind::Bits}, {"changes", HeatmapKind::Changes}},
                           "bits: what the macroblocks took;\n"
                           "changes: how often they were coded [bits]");
    AddForce(app, request.m_bForce);
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
    app.footer("The picture in grey, coloured from blue (little) to red (the most) where\n"
               "macroblocks were coded. A line frames every area of coded macroblocks.");
}

int MakeHeatmap(const HeatmapRequest& request) {
    RecordingReader reader(request.m_recording);
    const recording::Header& header = reader.GetHeader();
    recording::PlayerOptions options;
    options.m_target = recording::Target::Argb;
    Player player(header, options);
    walker::StreamWalker streamWalker(WalkFormatOf(header));
    size_t number = 0;
    size_t failures = 0; ///< that the recording does not have
    Heatmap heatmap(header.m_settings.m_uiWidth, header.m_settings.m_uiHeight, request.m_kind);
    ForEachUpdate(reader, player, [&](const RecordedUpdate& update) {
        const bool failed = !player.Play(update.m_encoded).m_failure.empty();
        failures += failed && update.m_result != recording::FailedResult ? 1 : 0;
        const recording::Framebuffer& screen = player.GetFramebuffer();
        heatmap.UseSize(screen.GetWidth(), screen.GetHeight());
        streamWalker.SetResolution(screen.GetWidth(), screen.GetHeight());
        if (number == request.m_update.value_or(number)) {
            heatmap.BeginUpdate(update.m_encoded.m_rectangle);
            streamWalker.Walk(update.m_encoded, heatmap);
        }
        return number++ != request.m_update;
    });
    if (request.m_update && *request.m_update >= number)
        return ReportNoSuchUpdate(request.m_recording, number, reader.GetEnd());
    WriteWhole(request.m_output, request.m_bForce, [&](const std::string& path) {
        WritePng(path, heatmap.Paint(player.GetFramebuffer().GetPicture()));
    });
    if (!request.m_bQuiet)
        std::printf("the most: %.0f %s\n", heatmap.GetMost(),
                    request.m_kind == HeatmapKind::Bits ? "bits a macroblock" : "times");
    const int end = ReportEnd(request.m_recording, reader.GetEnd());
    const int outcome = ReportFailures(failures);
    return outcome != Done ? outcome : end;
}

} // namespace

void AddHeatmap(CLI::App& app, Action& action) {
    AddCommand<HeatmapRequest>(app, action, "heatmap", "Paint where the bits went", Describe,
                               MakeHeatmap);
}

} // namespace Vostrel::rctool
