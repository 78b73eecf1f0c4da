#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace Vostrel::rctool {

/// What a run of a program came to.
struct ProgramRun {
    int m_iExitCode;
    std::string m_output; ///< of both channels, or of the output alone
};

/// Runs a shell's command line, in which $rctool is the program.
inline ProgramRun RunShell(const std::string& line) {
    const std::string command = "rctool=" RCTOOL_PATH "; " + line;
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0)
        output.append(buffer, count);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

/// Runs rctool with a shell's command line. errors: where its error channel goes.
inline ProgramRun RunRctool(const std::string& arguments, const std::string& errors = "2>&1") {
    return RunShell(RCTOOL_PATH " " + arguments + " " + errors);
}

/// Its output alone.
inline ProgramRun RunRctoolQuietly(const std::string& arguments) {
    return RunRctool(arguments, "2>/dev/null");
}

} // namespace Vostrel::rctool
