#pragma once

#include <cstddef>
#include <valgrind/memcheck.h>

namespace Vostrel::tests {

/// Whether every bit of some memory comes from initialised memory. Only valgrind knows: without it
/// the answer is always yes.
inline bool IsDefined(const void* memory, std::size_t bytes) {
    return VALGRIND_CHECK_MEM_IS_DEFINED(memory, bytes) == 0;
}

} // namespace Vostrel::tests
