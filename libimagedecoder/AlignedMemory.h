#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace Vostrel::libimagedecoder {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// An array of plain values from posix_memalign.
template <class T>
using AlignedArray = std::unique_ptr<T[], FreeDeleter>;

/// Allocates count zeroed elements at a multiple of alignment bytes (a power of two, at least the
/// size of a pointer). Throws std::bad_alloc.
template <class T>
AlignedArray<T> AllocateAligned(size_t count, size_t alignment) {
    void* memory = nullptr;
    if (count > std::numeric_limits<size_t>::max() / sizeof(T) ||
        posix_memalign(&memory, alignment, count * sizeof(T)) != 0)
        throw std::bad_alloc();
    std::memset(memory, 0, count * sizeof(T));
    return AlignedArray<T>(static_cast<T*>(memory));
}

} // namespace Vostrel::libimagedecoder
