#pragma once

#include "tools/rctool/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Vostrel::rctool {

/// Writes a file as a whole, or to the standard output for its name: write(file) gets a std::FILE*.
/// Throws std::runtime_error with the path and the reason.
template <class Write>
void WriteThroughFile(const std::string& path, bool replace, Write write) {
    const auto fail = [](const std::string& name) {
        throw std::runtime_error(name + ": " + std::generic_category().message(errno));
    };
    if (path == StandardOutput) {
        write(stdout);
        if (std::fflush(stdout) != 0)
            fail("The standard output");
        return;
    }
    WriteWhole(path, replace, [&](const std::string& written) {
        std::FILE* const file = std::fopen(written.c_str(), "wb");
        if (file == nullptr)
            fail(written);
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> owned(file, std::fclose);
        write(file);
        const bool good = std::fflush(file) == 0 && std::ferror(file) == 0;
        if (!good || std::fclose(owned.release()) != 0)
            fail(written);
    });
}

} // namespace Vostrel::rctool
