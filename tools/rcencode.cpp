#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"
#include "tools/PngFile.h"
#include "tools/StreamFile.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Vostrel::streamencoder;

enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

/// What the command line asks for.
struct Request {
    std::vector<std::string> m_vFrames;
    std::string m_output;
    UpdateFormat m_format;
    ChromaSubsampling m_chroma = ChromaSubsampling::Yuv420;
    std::optional<uint32_t> m_uiQuality; ///< the encoding's default without one
    bool m_bQuiet = false;
};

const std::map<std::string, Codec> Codecs{{"ict", Codec::Ict}, {"lbe", Codec::Lbe}};
const std::map<std::string, ChromaSubsampling> Chromas{{"420", ChromaSubsampling::Yuv420},
                                                       {"422", ChromaSubsampling::Yuv422},
                                                       {"444", ChromaSubsampling::Yuv444}};
const std::map<std::string, RecordLayout> Layouts{{"continuous", RecordLayout::Continuous},
                                                  {"pool", RecordLayout::Pool},
                                                  {"inplace", RecordLayout::InPlace}};

template <class Value>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, Value& value,
                       const std::map<std::string, Value>& choices, const std::string& help) {
    return app
        .add_option_function<std::string>(
            name, [&](const std::string& text) { value = choices.at(text); }, help)
        ->check(CLI::IsMember(choices));
}

void DescribeOptions(CLI::App& app, Request& request) {
    app.add_option("FRAME", request.m_vFrames, "PNG files of one size, in order of time")
        ->required();
    app.add_option("-o,--output", request.m_output, "stream file to write")->required();
    AddChoice(app, "--codec", request.m_format.m_codec, Codecs, "encoding [ict]");
    app.add_option("--version", request.m_format.m_uiProtocolVersion, "protocol version [2]")
        ->check(CLI::Range(0, 2));
    AddChoice(app, "--chroma", request.m_chroma, Chromas, "chroma subsampling [420]");
    app.add_option("--quality", request.m_uiQuality,
                   "ict: 0 (coarse) to 15 (fine); lbe: 2 to 11, in version 0\n"
                   "2 to 7 [10, in version 0 of lbe 7]");
    AddChoice(app, "--layout", request.m_format.m_layout, Layouts,
              "version 2: records for a decoder with a pool, without one, or with\n"
              "either [pool]");
    app.add_flag("--quiet", request.m_bQuiet, "print nothing but errors");
    app.footer("Blocks that equal the frame before are skipped.\n"
               "Exit code: 0 done, 1 a file could not be read, encoded or written, 2 wrong usage.");
}

std::unique_ptr<UpdateEncoder> MakeEncoder(const Request& request) {
    if (request.m_format.m_codec == Codec::Ict)
        return std::make_unique<IctEncoder>(request.m_format, request.m_chroma,
                                            request.m_uiQuality.value_or(10));
    const uint32_t defaultQuality = request.m_format.m_uiProtocolVersion == 0 ? 7 : 10;
    return std::make_unique<LbeEncoder>(request.m_format, request.m_chroma,
                                        request.m_uiQuality.value_or(defaultQuality));
}

void PrintUpdate(const std::string& frame, const Picture& picture, const EncodedUpdate& update) {
    const auto bytes = static_cast<double>(update.m_vuiPayload.size());
    const auto pixels = static_cast<double>(picture.m_vPixels.size());
    std::printf("%s: %zu x %zu, %.0f bytes, %.3f bits per pixel\n", frame.c_str(),
                picture.m_uiWidth, picture.m_uiHeight, bytes, 8 * bytes / pixels);
}

void EncodeFrames(const Request& request, UpdateEncoder& encoder) {
    StreamFile file;
    Picture previous;
    for (const std::string& frame : request.m_vFrames) {
        Picture picture = ReadPng(frame);
        const bool isFirst = file.m_vUpdates.empty();
        try {
            file.m_vUpdates.push_back(encoder.EncodeUpdate(picture, isFirst ? nullptr : &previous));
        } catch (const std::invalid_argument& error) {
            throw std::runtime_error(frame + ": " + error.what());
        }
        if (!request.m_bQuiet)
            PrintUpdate(frame, picture, file.m_vUpdates.back());
        previous = std::move(picture);
    }

    file.m_header = {request.m_format.m_codec,
                     static_cast<uint8_t>(request.m_format.m_uiProtocolVersion),
                     request.m_chroma,
                     request.m_format.m_layout,
                     static_cast<uint16_t>(previous.m_uiWidth),
                     static_cast<uint16_t>(previous.m_uiHeight)};
    WriteStreamFile(request.m_output, file);
}

int Complain(const char* reason, ExitCode code) {
    std::fprintf(stderr, "rcencode: %s\n", reason);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    Request request;
    CLI::App app("Encodes PNG pictures as a stream of framebuffer updates.", "rcencode");
    DescribeOptions(app, request);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return Complain(error.what(), WrongUsage);
    }

    std::unique_ptr<UpdateEncoder> encoder;
    try {
        encoder = MakeEncoder(request);
    } catch (const std::invalid_argument& error) {
        return Complain(error.what(), WrongUsage);
    }
    try {
        EncodeFrames(request, *encoder);
    } catch (const std::exception& error) {
        return Complain(error.what(), Failed);
    }
    return Done;
}
