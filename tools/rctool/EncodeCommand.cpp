#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"
#include "tools/PngFile.h"
#include "tools/rctool/Commands.h"
#include "tools/rctool/Options.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/Recorder.h"

#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using namespace streamencoder;

namespace {

constexpr uint32_t DefaultQuality = 10;
constexpr uint32_t DefaultQualityOfLbeVersion0 = 7;

struct EncodeRequest {
    std::vector<std::string> m_vFrames;
    std::string m_output;
    std::optional<Codec> m_codec;
    std::optional<uint8_t> m_protocol;
    std::optional<ChromaSubsampling> m_chroma;
    std::optional<RecordLayout> m_layout;
    std::optional<uint32_t> m_quality;
    double m_fFramesPerSecond = 25;
    bool m_bWithoutChecksums = false;
    bool m_bAppend = false;
    bool m_bForce = false;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, EncodeRequest& request) {
    app.add_option("FRAME", request.m_vFrames, "PNG files of one size, in order of time")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", request.m_output, "recording to write (.rcrec)")
        ->required()
        ->type_name("FILE");
    app.add_flag("--append", request.m_bAppend,
                 "go on with a recording, with its format and frame size");
    AddForce(app, request.m_bForce, "replace the file; with --append, drop its bad end");
    AddChoice<Codec>(app, "--codec", request.m_codec, {{"ict", Codec::Ict}, {"lbe", Codec::Lbe}},
                     "ict or lbe [ict]");
    AddChoice<uint8_t>(app, "--protocol", request.m_protocol, {{"0", 0}, {"1", 1}, {"2", 2}},
                       "version 0, 1 or 2 [2]")
        ->type_name("N");
    AddChoice<ChromaSubsampling>(app, "--chroma", request.m_chroma,
                                 {{"420", ChromaSubsampling::Yuv420},
                                  {"422", ChromaSubsampling::Yuv422},
                                  {"444", ChromaSubsampling::Yuv444}},
                                 "subsampling 420, 422 or 444 [420]");
    AddChoice<RecordLayout>(app, "--layout", request.m_layout,
                            {{"continuous", RecordLayout::Continuous},
                             {"pool", RecordLayout::Pool},
                             {"inplace", RecordLayout::InPlace}},
                            "for a decoder with threads: pool, without: continuous,\n"
                            "both: inplace [pool]");
    app.add_option("--quality", request.m_quality,
                   "ict: 0 (coarse) to 15 (fine) [10]; lbe: 2 to 11\n"
                   "[10], in version 0 2 to 7 [7]")
        ->type_name("N")
        ->check(WholeNumber(0, 15));
    app.add_option("--fps", request.m_fFramesPerSecond, "frames a second [25]")
        ->type_name("X")
        ->check(Number(0.001, 1e6));
    app.add_flag("--no-checksums", request.m_bWithoutChecksums,
                 "do not decode to take checksums of the pictures");
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
}

recording::Header HeaderFor(const EncodeRequest& request) {
    const Picture picture = ReadPng(request.m_vFrames.front());
    recording::Header header;
    header.m_codec = request.m_codec.value_or(header.m_codec);
    header.m_uiProtocolVersion = request.m_protocol.value_or(header.m_uiProtocolVersion);
    header.m_chroma = request.m_chroma.value_or(header.m_chroma);
    header.m_layout = request.m_layout.value_or(header.m_layout);
    header.m_settings.m_uiWidth = static_cast<uint16_t>(picture.m_uiWidth);
    header.m_settings.m_uiHeight = static_cast<uint16_t>(picture.m_uiHeight);
    return header;
}

std::unique_ptr<UpdateEncoder> MakeEncoder(const recording::Header& header,
                                           std::optional<uint32_t> quality) {
    UpdateFormat format;
    format.m_codec = header.m_codec;
    format.m_uiProtocolVersion = header.m_uiProtocolVersion;
    format.m_layout = header.m_layout;
    if (format.m_codec == Codec::Ict)
        return std::make_unique<IctEncoder>(format, header.m_chroma,
                                            quality.value_or(DefaultQuality));
    const bool fewQualities = format.m_uiProtocolVersion == 0;
    return std::make_unique<LbeEncoder>(
        format, header.m_chroma,
        quality.value_or(fewQualities ? DefaultQualityOfLbeVersion0 : DefaultQuality));
}

/// Says on the error output what is lost of a picture.
Picture ReadFrame(const std::string& frame, bool quiet, Progress& progress) {
    PngLoss loss;
    Picture picture = ReadPng(frame, loss);
    if (loss.m_bTransparency || loss.m_b16Bits)
        progress.Clear();
    if (loss.m_bTransparency && !quiet)
        std::fprintf(stderr, "rctool: %s: Its transparent parts are blended with black\n",
                     frame.c_str());
    if (loss.m_b16Bits && !quiet)
        std::fprintf(stderr, "rctool: %s: Its 16-bit samples are rounded to 8 bits\n",
                     frame.c_str());
    return picture;
}

void PrintUpdate(const std::string& frame, const Picture& picture, const EncodedUpdate& update) {
    const auto bytes = static_cast<double>(update.m_vuiPayload.size());
    const auto pixels = static_cast<double>(picture.m_vPixels.size());
    std::printf("%s: %zu x %zu, %.0f bytes, %.3f bits per pixel\n", frame.c_str(),
                picture.m_uiWidth, picture.m_uiHeight, bytes, 8 * bytes / pixels);
}

EncodedUpdate EncodeFrame(UpdateEncoder& encoder, const std::string& frame, const Picture& picture,
                          const Picture* previous) {
    try {
        return encoder.EncodeUpdate(picture, previous);
    } catch (const std::invalid_argument& error) {
        throw std::runtime_error(frame + ": " + error.what());
    }
}

/// An update of another size would not fail: a rectangle may overhang.
void CheckSize(const std::string& frame, const Picture& picture,
               const recording::Settings& settings) {
    if (picture.m_uiWidth != settings.m_uiWidth || picture.m_uiHeight != settings.m_uiHeight)
        throw std::runtime_error(frame + ": The recording's frames have " +
                                 std::to_string(settings.m_uiWidth) + " x " +
                                 std::to_string(settings.m_uiHeight) + " pixels");
}

/// The first frame is coded whole, whatever the recording showed before.
void EncodeFrames(const EncodeRequest& request, Recorder& recorder) {
    const auto encoder = MakeEncoder(recorder.GetHeader(), request.m_quality);
    const double period = 1e6 / request.m_fFramesPerSecond;
    double time = recorder.GetTime() ? static_cast<double>(*recorder.GetTime()) + period : 0;
    std::optional<Picture> previous;
    Progress progress("encode", "frame", request.m_vFrames.size(), !request.m_bQuiet);
    for (const std::string& frame : request.m_vFrames) {
        progress.Step();
        Picture picture = ReadFrame(frame, request.m_bQuiet, progress);
        const EncodedUpdate update =
            EncodeFrame(*encoder, frame, picture, previous ? &*previous : nullptr);
        CheckSize(frame, picture, recorder.GetHeader().m_settings);
        recorder.Write(update, static_cast<uint64_t>(time), !request.m_bWithoutChecksums);
        progress.Clear();
        if (!request.m_bQuiet)
            PrintUpdate(frame, picture, update);
        previous = std::move(picture);
        time += period;
    }
    recorder.Close();
}

int Encode(const EncodeRequest& request) {
    if (request.m_bAppend) {
        if (request.m_codec || request.m_protocol || request.m_chroma || request.m_layout)
            throw std::invalid_argument("--append takes codec, protocol, chroma and layout from "
                                        "the recording");
        Recorder recorder(request.m_output, request.m_bForce);
        EncodeFrames(request, recorder);
        return Done;
    }
    const recording::Header header = HeaderFor(request);
    MakeEncoder(header, request.m_quality); // Refuses a wrong quality before there is a file.
    WriteWhole(request.m_output, request.m_bForce, [&](const std::string& path) {
        Recorder recorder(path, header);
        EncodeFrames(request, recorder);
    });
    return Done;
}

} // namespace

void AddEncode(CLI::App& app, Action& action) {
    AddCommand<EncodeRequest>(app, action, "encode", "Encode PNG frames as a recording", Describe,
                              Encode);
}

} // namespace Vostrel::rctool
