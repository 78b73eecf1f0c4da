#pragma once

#include <array>
#include <cstddef>
#include <ctime>
#include <functional>
#include <optional>

namespace Vostrel::tests {

/// Watches the system calls of the code under test and makes them fail on demand. Without such a
/// demand every call goes through. One object lives at a time, in the test that needs it; it is set
/// up before the call under test and read after it.
class SystemCalls {
public:
    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // Codes that the calls return instead of being made; 0 lets them through.
    int m_attrInitCode = 0;
    int m_setDetachStateCode = 0;
    int m_setStackSizeCode = 0;
    int m_createCode = 0;
    /// How many calls of pthread_create m_createCode is for; the later ones go through.
    unsigned m_createFailures = ~0U;
    bool m_mallocFails = false;
    /// The calls of operator new by this thread that still go through before one fails.
    std::optional<unsigned> m_allocationsBeforeFailure;
    /// The monotonic clock's time, if not the real one.
    std::optional<timespec> m_now;
    /// Runs at the start of every pthread_join.
    std::function<void()> m_onJoin;

    // What was seen.
    unsigned m_creates = 0; ///< Threads created; failures do not count.
    unsigned m_joins = 0;
    int m_lastDetachState = 0;
    std::size_t m_lastStackSize = 0;
    std::array<char, 64> m_lastThreadName{}; ///< As it stands in the block handed to the thread.
    void* m_lastBlock = nullptr;
    bool m_lastBlockFreed = false; ///< By the thread that owns this object.
};

} // namespace Vostrel::tests
