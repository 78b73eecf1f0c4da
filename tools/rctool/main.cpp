#include "tools/rctool/Commands.h"
#include "tools/rctool/UsageErrors.h"

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

using namespace Vostrel::rctool;

int Complain(const char* reason, ExitCode code) {
    std::fprintf(stderr, "rctool: %s\n", reason);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    Action action;
    const auto app = MakeApp(action);
    try {
        app->parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app->exit(help);
    } catch (const CLI::ParseError& error) {
        return Complain(UsageError(*app, error).c_str(), WrongUsage);
    }
    try {
        const int code = action();
        if (std::fflush(stdout) != 0)
            return Complain("The output could not be written", FileFailed);
        return code;
    } catch (const std::invalid_argument& error) {
        return Complain((error.what() + HelpHint(*app)).c_str(), WrongUsage);
    } catch (const std::exception& error) {
        return Complain(error.what(), FileFailed);
    }
}
