#pragma once

#include "tools/rctool/Progress.h"
#include "tools/recording/RecordingReader.h"

#include <cstddef>
#include <string>

namespace Vostrel::rctool {

/// The name of the file that lists the others.
constexpr const char* RawIndexName = "index.json";

/// Writes the data of every update to a file of its own in a folder, which is made if need be, and
/// an index in JSON at the end. progress: counts the updates. Returns how many updates there are.
/// Throws std::runtime_error, also for a file that exists, unless it is to be replaced.
size_t ExportRaw(recording::RecordingReader& reader, const std::string& folder, bool replace,
                 Progress& progress);

} // namespace Vostrel::rctool
