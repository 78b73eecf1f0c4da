#include "tools/rctool/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Vostrel::rctool {

void ReserveStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        // Opened in the wrong direction, so that reading and writing still fail.
        const int direction = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", direction) != stream)
            return; // Without /dev/null there is nothing to reserve them with.
    }
}

void FinishStandardOutput() {
    const bool failedBefore = std::ferror(stdout) != 0;
    if (std::fflush(stdout) != 0)
        throw std::runtime_error("standard output: " + std::generic_category().message(errno));
    if (failedBefore)
        throw std::runtime_error("standard output: Not all could be written");
}

} // namespace Vostrel::rctool
