#pragma once

#include "tools/recording/Framebuffer.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingReader.h"

#include <optional>
#include <string>
#include <vector>

/// Updates that are played again, and what was recorded of them.
namespace Vostrel::rctool {

/// A value that came out otherwise than it was recorded. Both are hexadecimal.
struct Difference {
    const char* m_what; ///< "result" or "picture checksum"
    std::string m_found;
    std::string m_recorded;
};

/// "result 1f, recorded 2f"
std::string Text(const Difference& difference);

/// Whether a result or a checksum was recorded.
bool CanBeCompared(const recording::RecordedUpdate& update);

/// Compares result and picture of an update that was just played with the recorded ones.
std::vector<Difference> Compare(const recording::RecordedUpdate& update,
                                const recording::PlayedUpdate& played,
                                const recording::Framebuffer& framebuffer);

/// What a replay up to an update says about it.
struct Replay {
    std::string m_notCompared; ///< why it was not compared; empty when it was
    std::string m_failure;     ///< the decoder's message; empty when it decodes
    std::vector<Difference> m_vDifferences;
    std::optional<size_t> m_firstDifferent; ///< the first update before it that differs
};

/// Plays a recording from its start to the update at a number, counted from 0, and compares.
/// Reading then goes on somewhere in the recording. What prevents the replay is the reason in the
/// result. Throws Interrupted.
Replay ReplayUpTo(recording::RecordingReader& reader, size_t number);

} // namespace Vostrel::rctool
