#include "tools/rctool/Commands.h"
#include "tools/rctool/StandardStreams.h"

#include <cstdio>
#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace Vostrel::rctool;

int Complain(const char* reason, ExitCode code) {
    std::fprintf(stderr, "rctool: %s\n", reason);
    return code;
}

/// Reads the command line. Returns the status of one that asks for nothing more, help for example.
std::optional<int> Parse(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::RequiredError& error) {
        const bool unknown = argc > 1 && app.get_subcommands().empty();
        return Complain(unknown ? (argv[1] + std::string(": No such command")).c_str()
                                : error.what(),
                        WrongUsage);
    } catch (const CLI::ParseError& error) {
        return Complain(error.what(), WrongUsage);
    }
}

int Run(const std::function<int()>& action) {
    try {
        return action();
    } catch (const std::invalid_argument& error) {
        return Complain(error.what(), WrongUsage);
    } catch (const std::exception& error) {
        return Complain(error.what(), FileFailed);
    }
}

} // namespace

int main(int argc, char** argv) {
    ReserveStandardStreams();
    Action action;
    const auto app = MakeApp(action);
    const std::optional<int> parsed = Parse(*app, argc, argv);
    const int code = parsed ? *parsed : Run(action);
    const int finished = Run([] {
        FinishStandardOutput();
        return Done;
    });
    return finished != Done ? finished : code;
}
