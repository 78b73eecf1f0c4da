#pragma once

#include "tools/rctool/OutputFile.h"
#include "tools/rctool/StopWatch.h"
#include "tools/recording/Player.h"

#include <cstdio>
#include <optional>
#include <string>

namespace Vostrel::rctool {

/// A CSV table of what every update took.
class FrameTimes {
public:
    /// Writes to a file, to the standard output, or nowhere for an empty path. Throws
    /// std::runtime_error, also for a file that exists, unless it is to be replaced.
    FrameTimes(const std::string& path, bool replace);

    void Add(size_t number, const recording::RecordedUpdate& update,
             const recording::PlayedUpdate& played, const WorkTime& time);

    /// Without it there will be no file. Throws std::runtime_error when not all could be written.
    void Close();

private:
    std::optional<OutputFile> m_output;
};

} // namespace Vostrel::rctool
