#include "tests/faults/AllocationFaults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

extern "C" {
void* __real_malloc(size_t);
void* __real_calloc(size_t, size_t);
void* __real_realloc(void*, size_t);
int __real_posix_memalign(void**, size_t, size_t);
void __real_free(void*);
}

namespace Vostrel::tests {
namespace {

std::atomic<bool> s_armed = false;
std::atomic<size_t> s_allocations = 0;
std::atomic<size_t> s_first = 0;
std::atomic<size_t> s_count = 0;
std::atomic<bool> s_struck = false;
std::atomic<size_t> s_failedBytes = 0;
thread_local int t_pauses = 0;

/// The allocations that are watched. A plain array: this code cannot allocate.
class Watched {
public:
    void add(void* memory) {
        const std::lock_guard lock(m_mutex);
        if (m_size == m_addresses.size()) {
            std::fputs("Too many allocations to watch.\n", stderr);
            std::abort();
        }
        m_addresses[m_size++] = memory;
    }

    void remove(void* memory) {
        if (!memory || m_size == 0)
            return;
        const std::lock_guard lock(m_mutex);
        const auto end = m_addresses.begin() + static_cast<std::ptrdiff_t>(m_size);
        const auto found = std::find(m_addresses.begin(), end, memory);
        if (found != end)
            *found = m_addresses[--m_size];
    }

    size_t size() const { return m_size; }

private:
    std::mutex m_mutex;
    std::array<void*, 16384> m_addresses{};
    std::atomic<size_t> m_size = 0;
};

constinit Watched s_watched;

bool isCounted() {
    return s_armed && t_pauses == 0;
}

/// Counts an allocation; true when it is to fail.
bool fails(size_t bytes) {
    if (!isCounted())
        return false;
    const size_t number = ++s_allocations;
    const bool failing = number >= s_first && number - s_first < s_count;
    if (failing) {
        s_struck = true;
        s_failedBytes = bytes;
    }
    return failing;
}

void* watch(void* memory) {
    if (memory && isCounted())
        s_watched.add(memory);
    return memory;
}

void release(void* memory) {
    s_watched.remove(memory);
    __real_free(memory);
}

void* allocate(size_t size, size_t alignment) {
    if (fails(size) || size > PTRDIFF_MAX)
        return nullptr;
    void* memory = nullptr;
    if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__)
        memory = __real_malloc(std::max<size_t>(size, 1));
    else if (__real_posix_memalign(&memory, alignment, size) != 0)
        memory = nullptr;
    return watch(memory);
}

void* allocateOrThrow(size_t size, size_t alignment) {
    void* const memory = allocate(size, alignment);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

} // namespace

AllocationFaults::AllocationFaults(size_t first, size_t count) {
    s_allocations = 0;
    s_struck = false;
    s_first = first;
    s_count = count;
    s_armed = true;
}

AllocationFaults::~AllocationFaults() {
    s_armed = false;
}

bool AllocationFaults::haveStruck() {
    return s_struck;
}

size_t AllocationFaults::allocations() {
    return s_allocations;
}

size_t AllocationFaults::failedBytes() {
    return s_failedBytes;
}

size_t AllocationFaults::live() {
    return s_watched.size();
}

AllocationFaults::Pause::Pause() {
    ++t_pauses;
}

AllocationFaults::Pause::~Pause() {
    --t_pauses;
}

} // namespace Vostrel::tests

using namespace Vostrel::tests;

extern "C" {

void* __wrap_malloc(size_t size) {
    return fails(size) ? nullptr : watch(__real_malloc(size));
}

void* __wrap_calloc(size_t count, size_t size) {
    return fails(count * size) ? nullptr : watch(__real_calloc(count, size));
}

void* __wrap_realloc(void* old, size_t size) {
    if (fails(size))
        return nullptr;
    void* const memory = __real_realloc(old, size);
    if (memory)
        s_watched.remove(old);
    return watch(memory);
}

int __wrap_posix_memalign(void** memory, size_t alignment, size_t size) {
    if (fails(size))
        return ENOMEM;
    const int code = __real_posix_memalign(memory, alignment, size);
    if (code == 0)
        watch(*memory);
    return code;
}

void __wrap_free(void* memory) {
    release(memory);
}

} // extern "C"

constexpr size_t PlainAlignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

void* operator new(size_t size) {
    return allocateOrThrow(size, PlainAlignment);
}
void* operator new[](size_t size) {
    return allocateOrThrow(size, PlainAlignment);
}
void* operator new(size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<size_t>(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<size_t>(alignment));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, PlainAlignment);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, PlainAlignment);
}
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, static_cast<size_t>(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, static_cast<size_t>(alignment));
}

void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    release(memory);
}
