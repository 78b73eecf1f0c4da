#include "tools/rctool/Completion.h"

#include <cstdio>
#include <map>
#include <string>

/// Prints the completions of one shell: bash, zsh or fish.
int main(int argc, char** argv) {
    using namespace Vostrel::rctool;
    const std::map<std::string, std::string (*)(const CompletedProgram&)> shells = {
        {"bash", BashCompletion}, {"zsh", ZshCompletion}, {"fish", FishCompletion}};
    const auto shell = shells.find(argc == 2 ? argv[1] : "");
    if (shell == shells.end())
        return 1;
    std::fputs(shell->second(DescribeProgram()).c_str(), stdout);
    return std::fflush(stdout) != 0 ? 1 : 0;
}
