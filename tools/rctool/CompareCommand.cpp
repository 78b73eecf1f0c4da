#include "tools/PngFile.h"
#include "tools/PpmFile.h"
#include "tools/rctool/Commands.h"
#include "tools/rctool/CompareReport.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RecordedUpdates.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace Vostrel::rctool {

using recording::RecordedUpdate;
using recording::RecordingReader;
using streamencoder::Picture;

namespace {

struct CompareRequest {
    std::string m_first;
    std::string m_second;
    std::string m_output;
    DecodingOptions m_decoding;
    bool m_bForce = false;
    bool m_bJson = false;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, CompareRequest& request) {
    app.add_option("FIRST", request.m_first, "a recording, or a picture (PNG, PPM)")
        ->required()
        ->type_name("");
    app.add_option("SECOND", request.m_second, "another one of the same kind")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", request.m_output,
                   "PNG file for the first pictures that differ: their\n"
                   "differences, the largest of them white")
        ->type_name("FILE");
    AddForce(app, request.m_bForce);
    AddDecodingOptions(app, request.m_decoding);
    app.add_flag("--json", request.m_bJson, "as JSON");
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
    app.footer("Recordings are compared by the pictures after every update. The exit status\n"
               "is 4 when anything differs.");
}

enum class FileKind { Recording, Png, Ppm };

/// By the first bytes. What is not known is left to the reader of recordings to complain about.
FileKind KindOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    char start[2]{};
    in.read(start, sizeof(start));
    if (start[0] == '\x89' && start[1] == 'P')
        return FileKind::Png;
    return start[0] == 'P' && start[1] == '6' ? FileKind::Ppm : FileKind::Recording;
}

Picture ReadPicture(const std::string& path, FileKind kind) {
    return kind == FileKind::Png ? streamencoder::ReadPng(path) : streamencoder::ReadPpm(path);
}

/// A recording that is shown update by update.
class Showing {
public:
    Showing(const std::string& path, const DecodingOptions& decoding)
        : m_path(path), m_reader(path),
          m_player(m_reader.GetHeader(),
                   {decoding.m_threads, decoding.m_kernels, recording::Target::Argb}) {}

    /// Plays up to the next update. Returns false at the end.
    bool Next() {
        bool played = false;
        ForEachUpdate(m_reader, m_player, [&](const RecordedUpdate& update) {
            m_player.Play(update);
            played = true;
            return false;
        });
        m_uiUpdates += played ? 1 : 0;
        return played;
    }

    /// By the index; 0 without one.
    size_t CountAll() { return CountUpdates(m_reader); }

    size_t GetUpdates() const { return m_uiUpdates; }
    const recording::Framebuffer& GetFramebuffer() const { return m_player.GetFramebuffer(); }
    int Report() const { return ReportEnd(m_path, m_reader.GetEnd()); }

private:
    std::string m_path;
    RecordingReader m_reader;
    recording::Player m_player;
    size_t m_uiUpdates = 0;
};

/// Returns how the recordings end.
int CompareRecordings(const CompareRequest& request, CompareReport& report) {
    Showing first(request.m_first, request.m_decoding);
    Showing second(request.m_second, request.m_decoding);
    Progress progress("compare", "update", first.CountAll(), !request.m_bQuiet);
    bool hasFirst = true;
    bool hasSecond = true;
    while (true) {
        hasFirst = first.Next();
        hasSecond = second.Next();
        if (!hasFirst || !hasSecond)
            break;
        progress.Step();
        report.Add(first.GetFramebuffer().GetPicture(), second.GetFramebuffer().GetPicture(),
                   first.GetUpdates() - 1);
    }
    while (hasFirst)
        hasFirst = first.Next();
    while (hasSecond)
        hasSecond = second.Next();
    progress.Clear();
    report.m_bRecordings = true;
    report.m_auiUpdates = {first.GetUpdates(), second.GetUpdates()};
    const int end = first.Report();
    const int otherEnd = second.Report();
    return end != Done ? end : otherEnd;
}

int CompareFiles(const CompareRequest& request, CompareReport& report) {
    const FileKind first = KindOf(request.m_first);
    const FileKind second = KindOf(request.m_second);
    if ((first == FileKind::Recording) != (second == FileKind::Recording))
        throw std::invalid_argument("A recording cannot be compared with a picture");
    if (first == FileKind::Recording)
        return CompareRecordings(request, report);
    report.Add(ReadPicture(request.m_first, first), ReadPicture(request.m_second, second), 0);
    return Done;
}

void WriteDifference(const CompareRequest& request, const CompareReport& report) {
    if (!report.m_shown) {
        std::fprintf(stderr, "rctool: %s: not written, as %s\n", request.m_output.c_str(),
                     report.m_vDifferent.empty() ? "no pictures differ" : "the sizes differ");
        return;
    }
    WriteWhole(request.m_output, request.m_bForce, [&](std::FILE* file) {
        streamencoder::WritePng(file, request.m_output, report.m_shown->m_picture);
    });
    if (!request.m_bQuiet && !request.m_bJson)
        std::fprintf(TextStream({request.m_output}), "%s: differences, %.1f times as bright\n",
                     OutputName(request.m_output).c_str(), report.m_shown->m_fGain);
}

int Compare(const CompareRequest& request) {
    if (!request.m_output.empty())
        CheckOutput(request.m_output, request.m_bForce);
    CompareReport report;
    const int end = CompareFiles(request, report);
    if (request.m_bJson)
        PrintJson(report);
    else if (!request.m_bQuiet)
        PrintText(report);
    if (!request.m_output.empty())
        WriteDifference(request, report);
    return report.IsEqual() ? end : int{NotVerified};
}

} // namespace

void AddCompare(CLI::App& app, Action& action) {
    AddCommand<CompareRequest>(app, action, "compare", "Compare two recordings or pictures",
                               Describe, Compare);
}

} // namespace Vostrel::rctool
