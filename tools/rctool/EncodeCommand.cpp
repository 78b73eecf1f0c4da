#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"
#include "tools/PngFile.h"
#include "tools/rctool/Commands.h"
#include "tools/rctool/Options.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingWriter.h"

#include <cstdio>
#include <stdexcept>

namespace Vostrel::rctool {

using namespace streamencoder;
using recording::Player;
using recording::RecordedUpdate;
using recording::RecordingWriter;

namespace {

constexpr uint32_t DefaultQuality = 10;
constexpr uint32_t DefaultQualityOfLbeVersion0 = 7;

struct EncodeRequest {
    std::vector<std::string> m_vFrames;
    std::string m_output;
    UpdateFormat m_format;
    ChromaSubsampling m_chroma = ChromaSubsampling::Yuv420;
    std::optional<uint32_t> m_quality;
    double m_fFramesPerSecond = 25;
    bool m_bWithoutChecksums = false;
    bool m_bQuiet = false;
};

void Describe(CLI::App& app, EncodeRequest& request) {
    app.add_option("FRAME", request.m_vFrames, "PNG files of one size, in order of time")
        ->required()
        ->type_name("");
    app.add_option("-o,--output", request.m_output, "recording to write (.rcrec)")
        ->required()
        ->type_name("FILE");
    AddChoice<Codec>(app, "--codec", request.m_format.m_codec,
                     {{"ict", Codec::Ict}, {"lbe", Codec::Lbe}}, "ict or lbe [ict]");
    app.add_option("--protocol", request.m_format.m_uiProtocolVersion, "version 0, 1 or 2 [2]")
        ->type_name("N")
        ->check(CLI::Range(0, 2).description(""));
    AddChoice<ChromaSubsampling>(app, "--chroma", request.m_chroma,
                                 {{"420", ChromaSubsampling::Yuv420},
                                  {"422", ChromaSubsampling::Yuv422},
                                  {"444", ChromaSubsampling::Yuv444}},
                                 "subsampling 420, 422 or 444 [420]");
    app.add_option("--quality", request.m_quality,
                   "ict: 0 (coarse) to 15 (fine) [10]; lbe: 2 to 11\n"
                   "[10], in version 0 2 to 7 [7]")
        ->type_name("N");
    AddChoice<RecordLayout>(app, "--layout", request.m_format.m_layout,
                            {{"continuous", RecordLayout::Continuous},
                             {"pool", RecordLayout::Pool},
                             {"inplace", RecordLayout::InPlace}},
                            "for a decoder with threads: pool, without: continuous,\n"
                            "both: inplace [pool]");
    app.add_option("--fps", request.m_fFramesPerSecond, "frames a second [25]")
        ->type_name("X")
        ->check(CLI::Range(0.001, 1e6).description(""));
    app.add_flag("--no-checksums", request.m_bWithoutChecksums,
                 "do not decode to take checksums of the pictures");
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
    app.footer("Blocks that equal the frame before are skipped.");
}

std::unique_ptr<UpdateEncoder> MakeEncoder(const EncodeRequest& request) {
    if (request.m_format.m_codec == Codec::Ict)
        return std::make_unique<IctEncoder>(request.m_format, request.m_chroma,
                                            request.m_quality.value_or(DefaultQuality));
    const bool fewQualities = request.m_format.m_uiProtocolVersion == 0;
    return std::make_unique<LbeEncoder>(
        request.m_format, request.m_chroma,
        request.m_quality.value_or(fewQualities ? DefaultQualityOfLbeVersion0 : DefaultQuality));
}

recording::Header HeaderFor(const EncodeRequest& request, const Picture& picture) {
    recording::Header header;
    header.m_codec = request.m_format.m_codec;
    header.m_uiProtocolVersion = static_cast<uint8_t>(request.m_format.m_uiProtocolVersion);
    header.m_chroma = request.m_chroma;
    header.m_layout = request.m_format.m_layout;
    header.m_settings.m_uiWidth = static_cast<uint16_t>(picture.m_uiWidth);
    header.m_settings.m_uiHeight = static_cast<uint16_t>(picture.m_uiHeight);
    return header;
}

/// Adds what a decoder makes of the update.
void AddChecksum(Player& player, RecordedUpdate& update) {
    const auto played = player.Play(update.m_encoded);
    if (!played.m_failure.empty())
        throw std::runtime_error("An update cannot be decoded: " + played.m_failure);
    update.m_result = played.m_uiResult;
    update.m_coverage = recording::Coverage::Framebuffer;
    update.m_uiPictureCrc =
        player.GetFramebuffer().GetCrc(update.m_coverage, update.m_encoded.m_rectangle);
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

int Encode(const EncodeRequest& request) {
    const auto encoder = MakeEncoder(request);
    std::unique_ptr<RecordingWriter> writer;
    std::unique_ptr<Player> player;
    Picture previous;
    double time = 0;
    for (const std::string& frame : request.m_vFrames) {
        Picture picture = ReadPng(frame);
        RecordedUpdate update;
        update.m_encoded = EncodeFrame(*encoder, frame, picture, writer ? &previous : nullptr);
        update.m_uiTime = static_cast<uint64_t>(time);
        if (!writer) {
            recording::Header header = HeaderFor(request, picture);
            player = std::make_unique<Player>(header, recording::PlayerOptions{});
            header.m_uiThreads = player->GetThreads();
            writer = std::make_unique<RecordingWriter>(request.m_output, header);
        }
        if (!request.m_bWithoutChecksums)
            AddChecksum(*player, update);
        writer->Write(update);
        if (!request.m_bQuiet)
            PrintUpdate(frame, picture, update.m_encoded);
        previous = std::move(picture);
        time += 1e6 / request.m_fFramesPerSecond;
    }
    writer->Close();
    return Done;
}

} // namespace

void AddEncode(CLI::App& app, Action& action) {
    AddCommand<EncodeRequest>(app, action, "encode", "Encode PNG frames as a recording", Describe,
                              Encode);
}

} // namespace Vostrel::rctool
