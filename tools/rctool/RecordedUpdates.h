#pragma once

#include "tools/rctool/Interruption.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"
#include "tools/walker/StreamWalker.h"

#include <cstddef>
#include <stdexcept>
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

/// Complains about updates that fail and did not when they were recorded. Returns whether there are
/// any.
bool ReportFailures(size_t failures, size_t recordedFailures);

/// The update at a number of its recording, counted from 0. Throws std::invalid_argument when there
/// is none.
recording::RecordedUpdate ReadUpdate(recording::RecordingReader& reader, const std::string& path,
                                     size_t number);

/// That a recording has no update of a number, as it has only so many.
std::invalid_argument NoSuchUpdate(const std::string& path, size_t updates);

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
