#pragma once

#include <cstdio>
#include <cstdlib>

namespace Vostrel::fuzz {

/// Ends the process, with a line that tells what went wrong; the fuzzer then keeps the input.
[[noreturn]] inline void Fail(const char* what) {
    std::fprintf(stderr, "FINDING: %s\n", what);
    std::abort();
}

/// What must hold on every input.
inline void Check(bool holds, const char* otherwise) {
    if (!holds) [[unlikely]]
        Fail(otherwise);
}

} // namespace Vostrel::fuzz
