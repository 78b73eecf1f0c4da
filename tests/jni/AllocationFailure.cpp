#include "tests/jni/AllocationFailure.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocationsUntilFailure = 0; ///< 0 for none

void* allocate(size_t size) {
    const bool fails = allocationsUntilFailure > 0 && --allocationsUntilFailure == 0;
    void* memory = fails || size > PTRDIFF_MAX ? nullptr : std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

} // namespace

void* operator new(size_t size) {
    return allocate(size ? size : 1);
}
void* operator new[](size_t size) {
    return allocate(size ? size : 1);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}

namespace Vostrel::tests {

AllocationFailure::AllocationFailure(int n) {
    allocationsUntilFailure = n;
}

AllocationFailure::~AllocationFailure() {
    allocationsUntilFailure = 0;
}

bool AllocationFailure::hasStruck() const {
    return allocationsUntilFailure == 0;
}

} // namespace Vostrel::tests
