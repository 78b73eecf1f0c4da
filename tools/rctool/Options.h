#pragma once

#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"
#include "tools/walker/BlockWalker.h"

#include <CLI/CLI.hpp>

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// What several subcommands have in common.
namespace Vostrel::rctool {

/// A path that names the standard output.
constexpr const char* StandardOutput = "-";

/// An option whose values have names.
template <class Value, class Target>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, Target& value,
                       const std::map<std::string, Value>& choices, const std::string& help) {
    return app
        .add_option_function<std::string>(
            name, [&value, choices](const std::string& text) { value = choices.at(text); }, help)
        ->type_name("NAME")
        ->check(CLI::IsMember(choices).description(""));
}

/// The options of subcommands that decode.
struct DecodingOptions {
    std::optional<unsigned> m_threads;
    std::optional<recording::KernelVariant> m_kernels;
};

void AddRecordingArgument(CLI::App& app, std::string& path);
void AddForce(CLI::App& app, bool& force, const char* help = "replace files that exist");
void AddDecodingOptions(CLI::App& app, DecodingOptions& options);

/// Names as they are written in options and results.
const char* NameOf(streamencoder::Codec codec);
const char* NameOf(streamencoder::ChromaSubsampling chroma);
const char* NameOf(streamencoder::RecordLayout layout);
const char* NameOf(recording::Sink sink);
const char* NameOf(recording::KernelVariant variant);
const char* NameOf(recording::KernelRule rule);

/// Of a tile: Y, Cb or Cr; of LBE's planes luma or chroma.
const char* NameOf(streamencoder::Codec codec, libimagedecoder::IctComponent component);

/// How the updates of a recording are coded.
walker::WalkFormat WalkFormatOf(const recording::Header& header);

/// Complains about a recording that ends amid a record. Returns RecordingEnds then, Done otherwise.
int ReportEnd(const std::string& path, const recording::RecordingEnd& end);

/// Complains about updates that fail and did not when they were recorded. Returns whether there are
/// any.
bool ReportFailures(size_t failures, size_t recordedFailures);

/// The update at a number of its recording, counted from 0. Throws std::invalid_argument when there
/// is none.
recording::RecordedUpdate ReadUpdate(recording::RecordingReader& reader, const std::string& path,
                                     size_t number);

/// That a recording has no update of a number, as it has only so many.
std::invalid_argument NoSuchUpdate(const std::string& path, size_t updates);

/// Feeds a player with the records of a reader, up to the end or until onUpdate returns false.
/// onUpdate is called for updates, which it has to play.
template <class OnUpdate>
void ForEachUpdate(recording::RecordingReader& reader, recording::Player& player,
                   OnUpdate onUpdate) {
    while (const auto record = reader.Next()) {
        if (const auto* settings = std::get_if<recording::Settings>(&*record))
            player.Apply(*settings);
        else if (const auto* picture = std::get_if<recording::RecordedPicture>(&*record))
            player.Apply(*picture);
        else if (const auto* update = std::get_if<recording::RecordedUpdate>(&*record);
                 update != nullptr && !onUpdate(*update))
            return;
    }
}

} // namespace Vostrel::rctool
