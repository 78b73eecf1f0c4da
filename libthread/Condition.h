#pragma once

#include "libthread/ErrorCheckingMutex.h"

#include <ctime>
#include <pthread.h>

namespace Vostrel::libthread {

/// A condition variable whose timeouts are on the monotonic clock, so that setting the wall clock
/// neither cuts nor stretches a wait. Every operation returns the POSIX code unchanged; the waits
/// can wake spuriously.
///
/// The condition is not passed to pthread_cond_destroy: on Linux it holds nothing to release.
class Condition {
public:
    Condition();
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    /// Releases the mutex, which the caller holds, while it waits.
    int wait(ErrorCheckingMutex& mutex);

    /// Waits until the absolute monotonic time `deadline`; ETIMEDOUT when it passes.
    int timedwait(ErrorCheckingMutex& mutex, const timespec& deadline);

    /// Waits for `sec` seconds plus `nsec` nanoseconds (which may exceed a second) from now.
    int timedwait(ErrorCheckingMutex& mutex, unsigned long sec, unsigned long nsec);

    /// Wakes one waiting thread.
    int signal();

    /// Wakes all waiting threads.
    int broadcast();

    /// The absolute time `sec` seconds and `nsec` nanoseconds after `now`. Nanoseconds above one
    /// second are carried into the seconds; a sum of exactly one second is not, and a wait for such
    /// a deadline returns EINVAL.
    static timespec deadlineAfter(const timespec& now, unsigned long sec, unsigned long nsec);

private:
    pthread_cond_t m_condition;
};

} // namespace Vostrel::libthread
