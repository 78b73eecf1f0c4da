#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace Vostrel::tests {

/// Address space of any size, of which only what was opened can be touched.
class SparseMemory {
public:
    explicit SparseMemory(size_t bytes)
        : m_uiBytes(bytes), m_pMemory(mmap(nullptr, bytes, PROT_NONE,
                                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
        if (m_pMemory == MAP_FAILED)
            throw std::bad_alloc();
    }
    ~SparseMemory() { munmap(m_pMemory, m_uiBytes); }
    SparseMemory(const SparseMemory&) = delete;
    SparseMemory& operator=(const SparseMemory&) = delete;

    uint8_t* Data() { return static_cast<uint8_t*>(m_pMemory); }

    /// Allows access to the pages of these bytes, which are zero at first.
    uint8_t* Open(size_t first, size_t count) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t start = first / page * page;
        if (mprotect(Data() + start, first + count - start, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
        return Data() + first;
    }

private:
    size_t m_uiBytes;
    void* m_pMemory;
};

} // namespace Vostrel::tests
