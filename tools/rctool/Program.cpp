#include "tools/rctool/Program.h"

#include "tools/rctool/Commands.h"
#include "tools/rctool/Interruption.h"
#include "tools/rctool/StandardStreams.h"
#include "tools/rctool/UsageErrors.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

namespace Vostrel::rctool {
namespace {

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
    } catch (const CLI::ParseError& error) {
        return Complain(UsageError(app, error).c_str(), WrongUsage);
    }
}

/// What fails after a signal fails because of it.
int Fail(const char* reason, ExitCode code) {
    return GetNotedSignal() != 0 ? BySignal : Complain(reason, code);
}

int Run(const CLI::App& app, const Action& action) {
    try {
        return action();
    } catch (const std::invalid_argument& error) {
        return Fail((error.what() + HelpHint(app)).c_str(), WrongUsage);
    } catch (const std::exception& error) {
        return Fail(error.what(), FileFailed);
    }
}

/// Of the command and of the end of its output, the latter counts first.
int RunToTheEnd(const CLI::App& app, const Action& action) {
    const int code = Run(app, action);
    const int finished = Run(app, [] {
        FinishStandardOutput();
        return Done;
    });
    if (const int signal = GetNotedSignal(); signal != 0)
        return BySignal + signal;
    return finished != Done ? finished : code;
}

} // namespace

int RunProgram(int argc, char** argv) {
    ReserveStandardStreams();
    NoteSignals();
    Action action;
    const auto app = MakeApp(action);
    const std::optional<int> parsed = Parse(*app, argc, argv);
    return RunToTheEnd(*app, parsed ? [&] { return *parsed; } : action);
}

} // namespace Vostrel::rctool
