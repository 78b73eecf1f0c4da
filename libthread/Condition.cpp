#include "libthread/Condition.h"

#include <cstdint>

namespace Vostrel::libthread {

namespace {

constexpr std::int64_t NanosecondsPerSecond = 1'000'000'000;

/// Adds without the undefined behaviour of a signed overflow; a sum that wraps turns negative, and
/// the wait for it is refused with EINVAL.
std::int64_t wrappingSum(std::int64_t left, std::uint64_t right) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) + right);
}

} // namespace

Condition::Condition() {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

int Condition::wait(ErrorCheckingMutex& mutex) {
    return pthread_cond_wait(&m_condition, &mutex.m_mutex);
}

int Condition::timedwait(ErrorCheckingMutex& mutex, const timespec& deadline) {
    return pthread_cond_timedwait(&m_condition, &mutex.m_mutex, &deadline);
}

int Condition::timedwait(ErrorCheckingMutex& mutex, unsigned long sec, unsigned long nsec) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return timedwait(mutex, deadlineAfter(now, sec, nsec));
}

int Condition::signal() {
    return pthread_cond_signal(&m_condition);
}

int Condition::broadcast() {
    return pthread_cond_broadcast(&m_condition);
}

timespec Condition::deadlineAfter(const timespec& now, unsigned long sec, unsigned long nsec) {
    std::int64_t seconds = wrappingSum(now.tv_sec, sec);
    std::int64_t nanoseconds = wrappingSum(now.tv_nsec, nsec);
    // Strictly greater: callers rely on EINVAL at the exact boundary.
    if (nanoseconds > NanosecondsPerSecond) {
        seconds =
            wrappingSum(seconds, static_cast<std::uint64_t>(nanoseconds / NanosecondsPerSecond));
        nanoseconds %= NanosecondsPerSecond;
    }
    return {.tv_sec = seconds, .tv_nsec = nanoseconds};
}

} // namespace Vostrel::libthread
