#pragma once

#include <string>

namespace Vostrel::rctool {

/// Where an output goes.
enum class DestinationKind {
    StandardOutput, ///< which is open already
    Direct,         ///< a device, a FIFO or another open stream: written to, never replaced
    File,           ///< a regular file, or a name that is not in use
};

struct Destination {
    DestinationKind m_kind;
    std::string m_path;     ///< of a file: the target of symbolic links, which need not exist
    bool m_bExists = false; ///< and is a regular file
};

/// What a path names. Throws std::runtime_error for a folder and for a path that cannot be
/// followed.
Destination FindDestination(const std::string& path);

/// Whether a path names the standard output: "-", or one of the names that the system has for it.
bool IsStandardOutput(const std::string& path);

/// What messages call the destination.
std::string OutputName(const std::string& path);

} // namespace Vostrel::rctool
