#include "tools/rctool/Commands.h"
#include "tools/rctool/InfoReport.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RecordedUpdates.h"

namespace Vostrel::rctool {

using recording::RecordedUpdate;
using recording::RecordingReader;

namespace {

struct InfoRequest {
    std::string m_recording;
    bool m_bJson = false;
};

void Describe(CLI::App& app, InfoRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_flag("--json", request.m_bJson, "as JSON, with all symbols");
    app.footer("Bits of a macroblock count its skip code, length, tiles and filling.");
}

/// Walks all updates; nothing is decoded.
class InfoCollector {
public:
    InfoCollector(InfoReport& report, const RecordingReader& reader)
        : m_report(report), m_reader(reader) {
        m_report.m_vDecoders.push_back({reader.GetHeader(), 0, {}});
    }

    void operator()(const RecordedUpdate& update) {
        const auto& encoded = update.m_encoded;
        DecoderReport& decoder = m_report.m_vDecoders.at(update.m_uiDecoder);
        ++m_report.m_uiUpdates;
        ++decoder.m_uiUpdates;
        ++m_report.m_qualities[encoded.m_uiQuality];
        m_report.m_uiPayloadBytes += encoded.m_vuiPayload.size();
        m_report.m_uiLastTime = update.m_uiTime;
        m_report.m_uiChecksums += update.m_coverage != recording::Coverage::Nothing ? 1 : 0;
        const bool failedBefore = update.m_result == recording::FailedResult;
        m_report.m_uiRecordedFailures += failedBefore ? 1 : 0;
        if (const auto end = WalkerOf(m_reader, update).Walk(encoded, decoder.m_statistics))
            decoder.m_statistics.AddUpdate(*end, encoded.m_vuiPayload.size());
        else
            m_report.m_uiUnexpectedFailures += failedBefore ? 0 : 1;
    }
    void operator()(const recording::Settings&) { ++m_report.m_uiSettingsChanges; }
    void operator()(const recording::RecordedPicture&) { ++m_report.m_uiPictures; }
    void operator()(const recording::Note& note) { m_report.m_vNotes.push_back(note.m_text); }
    void operator()(const recording::AddedDecoder& decoder) {
        m_report.m_vDecoders.push_back({decoder.m_format, 0, {}});
    }

private:
    InfoReport& m_report;
    const RecordingReader& m_reader;
};

int Info(const InfoRequest& request) {
    RecordingReader reader(request.m_recording);
    InfoReport report;
    report.m_uiFileVersion = reader.GetFileVersion();
    report.m_header = reader.GetHeader();
    report.m_bIndexed = reader.ReadIndex().has_value();
    InfoCollector collector(report, reader);
    Progress progress("info", "record", 0);
    while (const auto record = reader.Next()) {
        CheckForInterruption();
        progress.Step();
        std::visit(collector, *record);
    }
    progress.Clear();
    report.m_end = reader.GetEnd();
    if (request.m_bJson)
        PrintJson(report);
    else
        PrintText(report);
    const int end = ReportEnd(request.m_recording, reader.GetEnd());
    const int outcome = ReportFailures(report.m_uiUnexpectedFailures);
    return outcome != Done ? outcome : end;
}

} // namespace

void AddInfo(CLI::App& app, Action& action) {
    AddCommand<InfoRequest>(app, action, "info", "Tell what a recording is made of", Describe,
                            Info);
}

} // namespace Vostrel::rctool
