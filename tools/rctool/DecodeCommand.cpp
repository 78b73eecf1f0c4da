#include "tools/rctool/Commands.h"
#include "tools/rctool/Comparison.h"
#include "tools/rctool/Counted.h"
#include "tools/rctool/FrameTimes.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Names.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/PictureFile.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RecordedUpdates.h"
#include "tools/rctool/StopWatch.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using recording::PlayedUpdate;
using recording::Player;
using recording::RecordedUpdate;
using recording::RecordingReader;
using recording::Sink;
using recording::Target;

namespace {

struct DecodeRequest {
    std::string m_recording;
    std::string m_output;
    std::optional<PictureFormat> m_format; ///< that of the output's name without it
    bool m_bForce = false;
    bool m_bEveryPicture = false;
    bool m_bVerify = false;
    std::string m_frameTimes;
    bool m_bRealTime = false;
    DecodingOptions m_decoding;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, DecodeRequest& request) {
    AddRecordingArgument(app, request.m_recording);
    app.add_option("-o,--output", request.m_output,
                   "file for the last picture, - is the output [none]")
        ->type_name("FILE");
    AddChoice<PictureFormat>(app, "--format", request.m_format,
                             {{"png", PictureFormat::Png},
                              {"ppm", PictureFormat::Ppm},
                              {"argb", PictureFormat::Argb},
                              {"planes", PictureFormat::Planes}},
                             "png, ppm, argb (blue, green, red, alpha bytes) or\n"
                             "planes (Y, Cb, Cr; ict only) [FILE's extension, or png]");
    app.add_flag("--all", request.m_bEveryPicture,
                 "a picture after every update: FILE-00000.png and so on");
    AddForce(app, request.m_bForce);
    app.add_flag("--verify", request.m_bVerify,
                 "compare results and checksums with the recorded ones");
    app.add_option("--frametimes", request.m_frameTimes,
                   "CSV file of what every update took; - is the output")
        ->type_name("FILE");
    app.add_flag("--realtime", request.m_bRealTime, "at the recorded times, not at once");
    AddDecodingOptions(app, request.m_decoding);
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
}

PictureFormat ShownFormat(const DecodeRequest& request) {
    return request.m_format ? *request.m_format : FormatOf(request.m_output);
}

Target TargetOf(const DecodeRequest& request) {
    if (request.m_output.empty())
        return Target::AsRecorded;
    return ShownFormat(request) == PictureFormat::Planes ? Target::ScreenPlanes : Target::Argb;
}

/// Decodes a recording and keeps account of what differs from it.
class Decoding {
public:
    Decoding(const DecodeRequest& request, RecordingReader& reader)
        : m_request(request), m_frameTimes(request.m_frameTimes, request.m_bForce),
          m_player(reader.GetHeader(), {request.m_decoding.m_threads, request.m_decoding.m_kernels,
                                        TargetOf(request)}) {
        if (request.m_bVerify)
            CheckThatChecksumsHold(reader);
    }

    int Run(RecordingReader& reader);

private:
    void CheckThatChecksumsHold(RecordingReader& reader) const;
    void Show(const RecordedUpdate& update);
    void WriteShown(const std::string& path) const;
    void WaitFor(const RecordedUpdate& update) const;
    void Judge(const RecordedUpdate& update, const PlayedUpdate& played);
    void Verify(const RecordedUpdate& update, const PlayedUpdate& played);
    void PrintSummary(std::FILE* text) const;
    int Outcome(bool whole) const;

    const DecodeRequest& m_request;
    FrameTimes m_frameTimes;
    Player m_player;
    std::optional<Progress> m_progress; ///< once the recording is read
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    size_t m_uiUpdates = 0;
    size_t m_uiFailures = 0; ///< recorded ones among them
    size_t m_uiUnexpectedFailures = 0;
    size_t m_uiCompared = 0; ///< updates with something to compare
    size_t m_uiDifferences = 0;
};

void Decoding::CheckThatChecksumsHold(RecordingReader& reader) const {
    const recording::Settings& settings = reader.GetHeader().m_settings;
    const Target target = TargetOf(m_request);
    if (target == Target::ScreenPlanes ||
        (target == Target::Argb && settings.m_sink == Sink::Planes))
        throw std::invalid_argument("The recorded checksums are not of pictures of this format");
    const auto decoders = reader.FindDecoders();
    const bool rounds = std::ranges::any_of(decoders, [](const recording::DecoderFormat& decoder) {
        return decoder.m_codec == streamencoder::Codec::Ict;
    });
    if (rounds && recording::RuleOf(m_player.GetKernels()) != settings.m_kernels)
        throw std::invalid_argument(std::string("The recorded checksums are those of ") +
                                    NameOf(settings.m_kernels) + " kernels");
}

int Decoding::Run(RecordingReader& reader) {
    const bool shown = !m_request.m_bQuiet && !IsStandardOutput(m_request.m_frameTimes);
    m_progress.emplace("decode", "update", CountUpdates(reader), shown);
    ForEachUpdate(reader, m_player, [this](const RecordedUpdate& update) {
        m_progress->Step();
        if (m_request.m_bRealTime)
            WaitFor(update);
        Show(update);
        ++m_uiUpdates;
        return true;
    });
    m_progress->Clear();
    if (!m_request.m_output.empty() && !m_request.m_bEveryPicture)
        WriteShown(m_request.m_output);
    m_frameTimes.Close();
    if (!m_request.m_bQuiet)
        PrintSummary(TextStream({m_request.m_output, m_request.m_frameTimes}));
    return Outcome(reader.GetEnd().m_kind == recording::EndKind::Whole);
}

void Decoding::WaitFor(const RecordedUpdate& update) const {
    SleepUntil(m_start + std::chrono::microseconds(update.m_uiTime));
}

void Decoding::Show(const RecordedUpdate& update) {
    const StopWatch watch;
    const PlayedUpdate played = m_player.Play(update);
    m_frameTimes.Add(m_uiUpdates, update, played, watch.Elapsed());
    Judge(update, played);
    if (!m_request.m_output.empty() && m_request.m_bEveryPicture)
        WriteShown(NumberedPath(m_request.m_output, m_uiUpdates));
}

void Decoding::WriteShown(const std::string& path) const {
    WritePicture(path, ShownFormat(m_request), m_player.GetFramebuffer(), m_request.m_bForce);
}

void Decoding::Judge(const RecordedUpdate& update, const PlayedUpdate& played) {
    if (!played.m_failure.empty()) {
        ++m_uiFailures;
        const bool asRecorded = update.m_result == recording::FailedResult;
        m_uiUnexpectedFailures += asRecorded ? 0 : 1;
        m_progress->Clear();
        std::fprintf(stderr, "rctool: update %zu: %s%s\n", m_uiUpdates, played.m_failure.c_str(),
                     asRecorded ? ", as when it was recorded" : "");
    }
    if (m_request.m_bVerify)
        Verify(update, played);
}

void Decoding::Verify(const RecordedUpdate& update, const PlayedUpdate& played) {
    m_uiCompared += CanBeCompared(update) ? 1 : 0;
    for (const Difference& difference : Compare(update, played, m_player.GetFramebuffer())) {
        ++m_uiDifferences;
        m_progress->Clear();
        std::fprintf(stderr, "rctool: update %zu: %s\n", m_uiUpdates, Text(difference).c_str());
    }
}

void Decoding::PrintSummary(std::FILE* text) const {
    std::fprintf(text, "%s, %zu failed", Counted(m_uiUpdates, "update").c_str(), m_uiFailures);
    if (m_request.m_bVerify)
        std::fprintf(text, ", %zu compared, %s", m_uiCompared,
                     Counted(m_uiDifferences, "difference").c_str());
    std::fprintf(text, "\n");
}

int Decoding::Outcome(bool whole) const {
    if (m_uiUnexpectedFailures != 0)
        return UpdateFailed;
    if (m_request.m_bVerify && m_uiCompared == 0 && whole) {
        std::fprintf(stderr, "rctool: The recording holds nothing to verify\n");
        return NotVerified;
    }
    return m_uiDifferences != 0 ? NotVerified : Done;
}

void CheckUsage(const DecodeRequest& request) {
    if (request.m_bEveryPicture && request.m_output.empty())
        throw std::invalid_argument("--all needs --output");
    if (IsStandardOutput(request.m_output) && IsStandardOutput(request.m_frameTimes))
        throw std::invalid_argument("Only one of --output and --frametimes can be the output");
    if (request.m_bEveryPicture &&
        FindDestination(request.m_output).m_kind != DestinationKind::File)
        throw std::invalid_argument(request.m_output + ": --all needs the name of a file");
}

int Decode(const DecodeRequest& request) {
    CheckUsage(request);
    RecordingReader reader(request.m_recording);
    Decoding decoding(request, reader);
    if (!request.m_output.empty() && !request.m_bEveryPicture)
        CheckOutput(request.m_output, request.m_bForce); // Replaying may take long.
    const int outcome = decoding.Run(reader);
    const int end = ReportEnd(request.m_recording, reader.GetEnd());
    return outcome != Done ? outcome : end;
}

} // namespace

void AddDecode(CLI::App& app, Action& action) {
    AddCommand<DecodeRequest>(app, action, "decode",
                              "Decode a recording, verify it, write pictures", Describe, Decode);
}

} // namespace Vostrel::rctool
