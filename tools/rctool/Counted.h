#pragma once

#include <cstddef>
#include <string>

namespace Vostrel::rctool {

/// "update" for 1, else "updates": a noun whose plural ends in s.
inline std::string Plural(size_t count, const std::string& noun) {
    return count == 1 ? noun : noun + "s";
}

/// "1 update", "2 updates"
inline std::string Counted(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + Plural(count, noun);
}

} // namespace Vostrel::rctool
