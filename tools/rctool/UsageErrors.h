#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Vostrel::rctool {

/// "; try rctool COMMAND --help" for the command that was given, or "; try rctool --help".
std::string HelpHint(const CLI::App& app);

/// What is wrong with a command line that app could not parse, and where to find help. Unknown
/// options come before all else, since a mistyped one can make others seem missing.
std::string UsageError(const CLI::App& app, const CLI::ParseError& error);

} // namespace Vostrel::rctool
