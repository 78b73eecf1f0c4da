#pragma once

namespace Vostrel::rctool {

/// The whole program: takes the arguments of main and returns the exit status.
int RunProgram(int argc, char** argv);

} // namespace Vostrel::rctool
