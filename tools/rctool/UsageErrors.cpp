#include "tools/rctool/UsageErrors.h"

#include <algorithm>
#include <vector>

namespace Vostrel::rctool {
namespace {

bool IsOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-';
}

std::string Reason(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    const auto option = std::find_if(unknown.begin(), unknown.end(), IsOption);
    if (option != unknown.end())
        return *option + ": No such option";
    if (unknown.empty())
        return error.what();
    return unknown.front() +
           (app.get_subcommands().empty() ? ": No such command" : ": This argument is too many");
}

} // namespace

std::string HelpHint(const CLI::App& app) {
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : commands.front()->get_name() + " ";
    return "; try " + app.get_name() + " " + command + "--help";
}

std::string UsageError(const CLI::App& app, const CLI::ParseError& error) {
    return Reason(app, error) + HelpHint(app);
}

} // namespace Vostrel::rctool
