#include "tools/rctool/Commands.h"
#include "tools/rctool/InspectReport.h"
#include "tools/rctool/Options.h"
#include "tools/walker/StreamWalker.h"

namespace Vostrel::rctool {

namespace {

struct InspectRequest {
    std::string m_recording;
    size_t m_uiUpdate = 0;
    InspectDetail m_detail;
    bool m_bJson = false;
};

void Describe(CLI::App& app, InspectRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_option("--update", request.m_uiUpdate, "which update, counted from 0 [0]")
        ->type_name("N");
    app.add_option("--macroblock", request.m_detail.m_macroblock,
                   "only this one, counted from 0 in row order")
        ->type_name("N");
    app.add_flag("--symbols", request.m_detail.m_bSymbols, "every code and value of the tiles");
    app.add_flag("--json", request.m_bJson, "as JSON");
    app.footer("Offsets count the bits of the update's data, from 0. A macroblock begins with\n"
               "its skip code. Of data that cannot be decoded the first wrong bit is named,\n"
               "with what should be there; the exit status is then 3.");
}

int Inspect(const InspectRequest& request) {
    recording::RecordingReader reader(request.m_recording);
    const auto update = ReadUpdate(reader, request.m_uiUpdate);
    walker::StreamWalker streamWalker(WalkFormatOf(reader.GetHeader()));
    InspectReport report(reader.GetHeader().m_codec, request.m_detail);
    report.SetEnd(streamWalker.Walk(update.m_encoded, report));
    if (request.m_bJson)
        report.PrintJson(request.m_uiUpdate, update);
    else
        report.PrintText(request.m_uiUpdate, update);
    return report.HasFault() ? UpdateFailed : Done;
}

} // namespace

void AddInspect(CLI::App& app, Action& action) {
    AddCommand<InspectRequest>(app, action, "inspect", "Take an update apart, bit by bit", Describe,
                               Inspect);
}

} // namespace Vostrel::rctool
