#pragma once

#include <cstddef>

namespace Vostrel::tests {

/// Makes allocations fail while it lives, and watches what becomes of the others.
///
/// It stands between the program and operator new in all its forms, malloc, calloc, realloc and
/// posix_memalign. Allocations of every thread count, except on a thread that holds a Pause. One
/// object lives at a time.
class AllocationFaults {
public:
    static constexpr size_t Every = static_cast<size_t>(-1);

    /// @param first number of the first allocation that fails, counted from 1
    /// @param count how many fail from that one on
    explicit AllocationFaults(size_t first, size_t count = 1);
    AllocationFaults(const AllocationFaults&) = delete;
    AllocationFaults& operator=(const AllocationFaults&) = delete;
    ~AllocationFaults();

    /// Whether an allocation has failed already.
    static bool haveStruck();

    /// Allocations made under any of these objects, failed ones among them, since the last object
    /// was made.
    static size_t allocations();

    /// Bytes that the last failed allocation asked for.
    static size_t failedBytes();

    /// Allocations that were made while any such object lived and have not been freed, whoever
    /// freed the others and when.
    static size_t live();

    /// Exempts what this thread does meanwhile: the fake Java side and the test's own bookkeeping.
    class Pause {
    public:
        Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause();
    };
};

} // namespace Vostrel::tests
