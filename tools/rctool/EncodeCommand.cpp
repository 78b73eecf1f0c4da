#include "tools/rctool/Commands.h"
#include "tools/rctool/FrameEncoder.h"
#include "tools/rctool/FrameReader.h"
#include "tools/rctool/FrameSizes.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/Recorder.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using namespace streamencoder;

namespace {

struct EncodeRequest {
    std::vector<std::string> m_vFrames;
    std::string m_output;
    FormatRequest m_format;
    FrameArea m_area;
    bool m_bResize = false;
    double m_fFramesPerSecond = 25;
    bool m_bWithoutChecksums = false;
    bool m_bAppend = false;
    bool m_bForce = false;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, EncodeRequest& request) {
    app.add_option("FRAME", request.m_vFrames,
                   "PNG files in order of time, of 16384 x 16384 and\n"
                   "67108864 pixels at most; - is the standard input")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", request.m_output, "recording to write (.rcrec); - is the output")
        ->required()
        ->type_name("FILE");
    app.add_flag("--append", request.m_bAppend,
                 "go on with a recording, with its frame size; a format\n"
                 "that it does not hold yet is added");
    AddForce(app, request.m_bForce, "replace the file; with --append, drop its bad end");
    AddChoices<Codec>(app, "--codec", request.m_format.m_vCodecs,
                      {{"ict", Codec::Ict}, {"lbe", Codec::Lbe}},
                      "ict or lbe, or ict,lbe for the frames in turn [ict]");
    AddChoice<uint8_t>(app, "--protocol", request.m_format.m_protocol,
                       {{"0", 0}, {"1", 1}, {"2", 2}}, "version 0, 1 or 2 [2]")
        ->type_name("N");
    AddChoice<ChromaSubsampling>(app, "--chroma", request.m_format.m_chroma,
                                 {{"420", ChromaSubsampling::Yuv420},
                                  {"422", ChromaSubsampling::Yuv422},
                                  {"444", ChromaSubsampling::Yuv444}},
                                 "subsampling 420, 422 or 444 [420]");
    AddChoice<RecordLayout>(app, "--layout", request.m_format.m_layout,
                            {{"continuous", RecordLayout::Continuous},
                             {"pool", RecordLayout::Pool},
                             {"inplace", RecordLayout::InPlace}},
                            "for a decoder with threads: pool, without: continuous,\n"
                            "both: inplace [pool]");
    app.add_option("--quality", request.m_format.m_quality,
                   "ict: 0 (coarse) to 15 (fine) [10]; lbe: 2 to 11\n"
                   "[10], in version 0 2 to 7 [7]")
        ->type_name("N")
        ->check(WholeNumber(0, 15));
    AddRectangle(app, "--rectangle", request.m_area.m_rectangle,
                 "only this part of the frames, in whole blocks of 16");
    app.add_flag("--changed", request.m_area.m_bChangedOnly,
                 "only the smallest rectangle that changed, if any did");
    app.add_flag("--resize", request.m_bResize, "frames may change their size");
    app.add_option("--fps", request.m_fFramesPerSecond, "frames a second [25]")
        ->type_name("X")
        ->check(Number(0.001, 1e6));
    app.add_flag("--no-checksums", request.m_bWithoutChecksums,
                 "do not decode to take checksums of the pictures");
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
}

recording::Header HeaderFor(const EncodeRequest& request, const PictureSize& size) {
    recording::Header header;
    static_cast<recording::DecoderFormat&>(header) = FirstFormat(request.m_format);
    header.m_settings.m_uiWidth = static_cast<uint16_t>(size.m_uiWidth);
    header.m_settings.m_uiHeight = static_cast<uint16_t>(size.m_uiHeight);
    return header;
}

/// Says on the error output what is lost of a frame.
void ReportLoss(const Frame& frame, Progress& progress) {
    if (frame.m_loss.m_bTransparency || frame.m_loss.m_b16Bits)
        progress.Clear();
    if (frame.m_loss.m_bTransparency)
        std::fprintf(stderr, "rctool: %s: Its transparent parts are blended with black\n",
                     frame.m_name.c_str());
    if (frame.m_loss.m_b16Bits)
        std::fprintf(stderr, "rctool: %s: Its 16-bit samples are rounded to 8 bits\n",
                     frame.m_name.c_str());
}

void PrintUpdate(std::FILE* text, const std::string& frame, const EncodedUpdate& update) {
    const auto& area = update.m_rectangle;
    const auto bytes = static_cast<double>(update.m_vuiPayload.size());
    const double pixels = double{1} * area.m_uiWidth * area.m_uiHeight;
    std::fprintf(text, "%s: %u x %u at %u, %u, %.0f bytes, %.3f bits per pixel\n", frame.c_str(),
                 area.m_uiWidth, area.m_uiHeight, area.m_uiX, area.m_uiY, bytes,
                 8 * bytes / pixels);
}

void PrintFrame(std::FILE* text, const std::string& frame,
                const std::optional<EncodedUpdate>& update) {
    if (update)
        PrintUpdate(text, frame, *update);
    else
        std::fprintf(text, "%s: nothing changed, no update\n", frame.c_str());
}

PictureSize SizeOf(const recording::Settings& settings) {
    return {settings.m_uiWidth, settings.m_uiHeight};
}

/// 0 if streams are among the paths.
size_t CountFrames(const std::vector<std::string>& paths) {
    return std::ranges::any_of(paths, IsFrameStream) ? 0 : paths.size();
}

/// A frame whose size could not be checked before, as it comes from a stream, is checked here.
void EncodeFrames(const EncodeRequest& request, FrameReader& frames, Recorder& recorder) {
    FrameEncoder encoder(recorder, request.m_format, request.m_area);
    const double period = 1e6 / request.m_fFramesPerSecond;
    double time = recorder.GetTime() ? static_cast<double>(*recorder.GetTime()) + period : 0;
    std::FILE* const text = TextStream({request.m_output});
    Progress progress("encode", "frame", CountFrames(request.m_vFrames), !request.m_bQuiet);
    while (auto frame = frames.Next()) {
        progress.Step();
        const PictureSize size = frame->m_picture.GetSize();
        CheckLimit(frame->m_name, size);
        if (!request.m_bResize)
            CheckSame(frame->m_name, size, SizeOf(recorder.GetHeader().m_settings));
        if (!request.m_bQuiet)
            ReportLoss(*frame, progress);
        const auto update =
            encoder.Write(frame->m_name, std::move(frame->m_picture), static_cast<uint64_t>(time),
                          !request.m_bWithoutChecksums);
        progress.Clear();
        if (!request.m_bQuiet)
            PrintFrame(text, frame->m_name, update);
        time += period;
    }
    recorder.Close();
}

/// Frames that were added when a signal ends the program stay.
void Append(const EncodeRequest& request) {
    if (IsStandardOutput(request.m_output))
        throw std::invalid_argument("--append needs the name of a file");
    Recorder recorder(request.m_output, request.m_bForce);
    CheckFrames(request.m_vFrames, SizeOf(recorder.GetHeader().m_settings), request.m_bResize);
    FrameReader frames(request.m_vFrames);
    try {
        EncodeFrames(request, frames, recorder);
    } catch (const Interrupted&) {
        if (recorder.GetAdded() != 0) {
            recorder.Close();
            std::fprintf(stderr, "rctool: %s: Interrupted; frames added: %zu\n",
                         request.m_output.c_str(), recorder.GetAdded());
        }
        throw;
    }
}

int Encode(const EncodeRequest& request) {
    if (request.m_bAppend) {
        Append(request);
        return Done;
    }
    CheckQuality(request.m_format); // Before there is a file, as are the sizes.
    CheckFrames(request.m_vFrames, std::nullopt, request.m_bResize);
    FrameReader frames(request.m_vFrames);
    const Frame& first = frames.Peek();
    CheckLimit(first.m_name, first.m_picture.GetSize());
    const recording::Header header = HeaderFor(request, first.m_picture.GetSize());
    WriteWhole(request.m_output, request.m_bForce, [&](std::FILE* file) {
        Recorder recorder(file, OutputName(request.m_output), header);
        EncodeFrames(request, frames, recorder);
    });
    return Done;
}

} // namespace

void AddEncode(CLI::App& app, Action& action) {
    AddCommand<EncodeRequest>(app, action, "encode", "Encode PNG frames as a recording", Describe,
                              Encode);
}

} // namespace Vostrel::rctool
