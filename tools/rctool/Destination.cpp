#include "tools/rctool/Destination.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace Vostrel::rctool {

namespace fs = std::filesystem;

namespace {

/// Whether a path is a link such as /proc/self/fd/3, which stands for a stream that is open. The
/// text of such a link need not be a path.
bool IsOpenStream(const fs::path& path) {
    std::error_code ignored;
    const fs::path folder = fs::canonical(fs::absolute(path).parent_path(), ignored);
    return folder.string().starts_with("/proc/");
}

/// The end of a chain of symbolic links, or the link to an open stream among them. The chain is
/// known to end.
fs::path FollowLinks(fs::path path) {
    while (fs::is_symlink(fs::symlink_status(path)) && !IsOpenStream(path))
        path = path.parent_path() / fs::read_symlink(path);
    return path;
}

} // namespace

bool IsStandardOutput(const std::string& path) {
    constexpr std::array<std::string_view, 4> Names{"-", "/dev/stdout", "/dev/fd/1",
                                                    "/proc/self/fd/1"};
    return std::find(Names.begin(), Names.end(), path) != Names.end();
}

std::string OutputName(const std::string& path) {
    return IsStandardOutput(path) ? "standard output" : path;
}

Destination FindDestination(const std::string& path) {
    if (IsStandardOutput(path))
        return {DestinationKind::StandardOutput, path};
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::status_known(status))
        throw std::runtime_error(path + ": " + error.message());
    if (fs::is_directory(status))
        throw std::runtime_error(path + ": Is a directory");
    if (fs::exists(status) && !fs::is_regular_file(status))
        return {DestinationKind::Direct, path};
    const fs::path target = FollowLinks(path);
    if (fs::is_symlink(fs::symlink_status(target)))
        return {DestinationKind::Direct, path};
    return {DestinationKind::File, target.string(), fs::exists(status)};
}

} // namespace Vostrel::rctool
