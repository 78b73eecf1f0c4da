#pragma once

#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"
#include "tools/walker/BlockWalker.h"

#include <cstddef>
#include <string>
#include <variant>

/// What subcommands do with the updates of a recording.
namespace Vostrel::rctool {

/// How the updates of a recording are coded.
walker::WalkFormat WalkFormatOf(const recording::Header& header);

/// Complains about a recording that ends amid a record. Returns RecordingEnds then, Done otherwise.
int ReportEnd(const std::string& path, const recording::RecordingEnd& end);

/// Complains about updates that fail and did not when they were recorded. Returns UpdateFailed if
/// there are any, Done otherwise.
int ReportFailures(size_t unexpectedFailures);

/// Complains about an update that is not among the first `updates` ones, which the recording has.
/// Returns RecordingEnds for a recording that is cut or damaged, which may have had more. Throws
/// std::invalid_argument for a whole one.
int ReportNoSuchUpdate(const std::string& path, size_t updates, const recording::RecordingEnd& end);

/// How many updates the index of a recording names; 0 without one. For progress alone: the records
/// may disagree.
size_t CountUpdates(recording::RecordingReader& reader);

/// Reads all records that follow. Returns how the recording ends.
recording::RecordingEnd ReadToEnd(recording::RecordingReader& reader);

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
