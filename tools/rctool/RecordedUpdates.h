#pragma once

#include "tools/rctool/Interruption.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"
#include "tools/walker/StreamWalker.h"

#include <cstddef>
#include <string>
#include <variant>

/// What subcommands do with the updates of a recording.
namespace Vostrel::rctool {

/// A walker for the update that a reader delivered last: of its decoder's format, with the size of
/// its framebuffer.
walker::StreamWalker WalkerOf(const recording::RecordingReader& reader,
                              const recording::RecordedUpdate& update);

/// Complains about a recording that ends amid a record. Returns RecordingEnds then, Done otherwise.
int ReportEnd(const std::string& path, const recording::RecordingEnd& end);

/// Complains about updates that fail and did not when they were recorded. Returns UpdateFailed if
/// there are any, Done otherwise.
int ReportFailures(size_t unexpectedFailures);

/// Complains about an update that is not among the first `updates` ones, which the recording has.
/// Returns RecordingEnds for a recording that is cut or damaged, which may have had more. Throws
/// std::invalid_argument for a whole one.
int ReportNoSuchUpdate(const std::string& path, size_t updates, const recording::RecordingEnd& end);

/// For a recording that has no updates, or none before its end. Returns RecordingEnds for one that
/// is cut or damaged, throws std::runtime_error for a whole one.
int ReportNoUpdates(const std::string& path, const recording::RecordingEnd& end);

/// How many updates the index of a recording names; 0 without one. For progress alone: the records
/// may disagree.
size_t CountUpdates(recording::RecordingReader& reader);

/// Reads all records that follow. Returns how the recording ends. Throws Interrupted.
recording::RecordingEnd ReadToEnd(recording::RecordingReader& reader);

/// Feeds a player with a record that is no update. Throws what the player throws, with the record's
/// place when the recording is at fault.
void ApplyTo(recording::Player& player, const recording::Record& record, uint64_t offset);

/// Feeds a player with the records of a reader, up to the end or until onUpdate returns false.
/// onUpdate is called for updates, which it has to play. Throws Interrupted.
template <class OnUpdate>
void ForEachUpdate(recording::RecordingReader& reader, recording::Player& player,
                   OnUpdate onUpdate) {
    while (const auto record = reader.Next()) {
        CheckForInterruption();
        const auto* const update = std::get_if<recording::RecordedUpdate>(&*record);
        if (update == nullptr)
            ApplyTo(player, *record, reader.GetOffset());
        else if (!onUpdate(*update))
            return;
    }
}

} // namespace Vostrel::rctool
