#include "tools/rctool/Commands.h"
#include "tools/rctool/Counted.h"
#include "tools/rctool/HeatmapPicture.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/PictureFile.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RecordedUpdates.h"

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
    app.add_option("-o,--output", request.m_output, "PNG file to write; - is the output")
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
    app.footer("Macroblocks that were coded in colours from blue (little) to red (the most),\n"
               "with a legend; black where nothing was coded. Beside it the screen in grey.");
}

/// What the sums were taken over.
struct Span {
    size_t m_uiFirst = 0; ///< update, the first one of the screen's last size
    size_t m_uiEnd = 0;
};

std::string TitleOf(const HeatmapRequest& request, const Span& span) {
    std::string title =
        request.m_kind == HeatmapKind::Bits ? "BITS A MACROBLOCK, " : "TIMES CODED, ";
    if (request.m_update)
        title += "UPDATE " + std::to_string(*request.m_update);
    else if (span.m_uiFirst != 0)
        title +=
            "UPDATES " + std::to_string(span.m_uiFirst) + " TO " + std::to_string(span.m_uiEnd - 1);
    else
        title += "ALL UPDATES";
    return title + ". BLACK: NOT CODED";
}

std::string InUnits(uint32_t heat, HeatmapKind kind) {
    return kind == HeatmapKind::Bits ? Counted(heat, "bit") + " a macroblock"
                                     : "coded " + Counted(heat, "time");
}

void PrintMost(const HeatmapRequest& request, const Heatmap& heatmap, const Span& span) {
    std::FILE* const text = TextStream({request.m_output});
    const std::string most = InUnits(heatmap.GetMost(), request.m_kind);
    if (request.m_update) {
        std::fprintf(text, "the most in update %zu: %s\n", *request.m_update, most.c_str());
        return;
    }
    const std::string one = InUnits(heatmap.GetMostInOneUpdate(), request.m_kind);
    std::fprintf(text, "the most in one update: %s\n", one.c_str());
    if (span.m_uiFirst == 0)
        std::fprintf(text, "the most in the whole recording: %s\n", most.c_str());
    else
        std::fprintf(text, "the most since update %zu, when the size changed: %s\n", span.m_uiFirst,
                     most.c_str());
}

/// Replaying may take long.
void CheckRequest(const HeatmapRequest& request) {
    if (FormatOf(request.m_output) != PictureFormat::Png)
        throw std::invalid_argument(request.m_output + ": A heatmap is a PNG file (.png)");
    CheckOutput(request.m_output, request.m_bForce);
}

int MakeHeatmap(const HeatmapRequest& request) {
    CheckRequest(request);
    RecordingReader reader(request.m_recording);
    const recording::Header& header = reader.GetHeader();
    recording::PlayerOptions options;
    options.m_target = recording::Target::Argb;
    Player player(header, options);
    Span span;
    size_t failures = 0; ///< that the recording does not have
    Heatmap heatmap(header.m_settings.m_uiWidth, header.m_settings.m_uiHeight, request.m_kind);
    Progress progress("heatmap", "update", CountUpdates(reader), !request.m_bQuiet);
    ForEachUpdate(reader, player, [&](const RecordedUpdate& update) {
        progress.Step();
        const bool failed = !player.Play(update).m_failure.empty();
        failures += failed && update.m_result != recording::FailedResult ? 1 : 0;
        const recording::Framebuffer& screen = player.GetFramebuffer();
        if (heatmap.UseSize(screen.GetWidth(), screen.GetHeight()))
            span.m_uiFirst = span.m_uiEnd;
        if (span.m_uiEnd == request.m_update.value_or(span.m_uiEnd)) {
            heatmap.BeginUpdate(update.m_encoded.m_rectangle);
            WalkerOf(reader, update).Walk(update.m_encoded, heatmap);
        }
        return span.m_uiEnd++ != request.m_update;
    });
    progress.Clear();
    if (request.m_update && *request.m_update >= span.m_uiEnd)
        return ReportNoSuchUpdate(request.m_recording, span.m_uiEnd, reader.GetEnd());
    WriteWhole(request.m_output, request.m_bForce, [&](std::FILE* file) {
        Progress rows("heatmap", "row", heatmap.GetHeight(), !request.m_bQuiet);
        WriteHeatmap(file, OutputName(request.m_output), heatmap, player.GetFramebuffer(),
                     TitleOf(request, span), rows);
    });
    if (!request.m_bQuiet)
        PrintMost(request, heatmap, span);
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
