#include "tools/rctool/Comparison.h"

#include "tools/rctool/Interruption.h"
#include "tools/rctool/Progress.h"
#include "tools/rctool/RecordedUpdates.h"

#include <cstdio>
#include <exception>

namespace Vostrel::rctool {

using recording::Coverage;
using recording::PlayedUpdate;
using recording::Player;
using recording::RecordedUpdate;

namespace {

std::string Hexadecimal(uint64_t value) {
    char text[20];
    std::snprintf(text, sizeof(text), "%llx", static_cast<unsigned long long>(value));
    return text;
}

} // namespace

std::string Text(const Difference& difference) {
    return std::string(difference.m_what) + " " + difference.m_found + ", recorded " +
           difference.m_recorded;
}

bool CanBeCompared(const RecordedUpdate& update) {
    return update.m_result || update.m_coverage != Coverage::Nothing;
}

std::vector<Difference> Compare(const RecordedUpdate& update, const PlayedUpdate& played,
                                const recording::Framebuffer& framebuffer) {
    std::vector<Difference> differences;
    if (update.m_result && played.m_uiResult != *update.m_result)
        differences.push_back(
            {"result", Hexadecimal(played.m_uiResult), Hexadecimal(*update.m_result)});
    if (update.m_coverage != Coverage::Nothing) {
        const uint32_t crc = framebuffer.GetCrc(update.m_coverage, update.m_encoded.m_rectangle);
        if (crc != update.m_uiPictureCrc)
            differences.push_back(
                {"picture checksum", Hexadecimal(crc), Hexadecimal(update.m_uiPictureCrc)});
    }
    return differences;
}

Replay ReplayUpTo(recording::RecordingReader& reader, size_t number) {
    Replay replay;
    replay.m_notCompared = "the recording is damaged before it";
    try {
        reader.FindUpdates(); // Goes back to the start.
        Player player(reader.GetHeader(), {});
        Progress progress("inspect", "update", number + 1);
        size_t current = 0;
        ForEachUpdate(reader, player, [&](const RecordedUpdate& update) {
            progress.Step();
            const PlayedUpdate played = player.Play(update);
            auto differences = Compare(update, played, player.GetFramebuffer());
            if (current == number) {
                replay.m_failure = played.m_failure;
                replay.m_vDifferences = std::move(differences);
                replay.m_notCompared = CanBeCompared(update) ? "" : "nothing was recorded of it";
            } else if (!differences.empty() && !replay.m_firstDifferent) {
                replay.m_firstDifferent = current;
            }
            return current++ != number;
        });
    } catch (const Interrupted&) {
        throw;
    } catch (const std::exception& error) {
        replay.m_notCompared = error.what();
    }
    return replay;
}

} // namespace Vostrel::rctool
