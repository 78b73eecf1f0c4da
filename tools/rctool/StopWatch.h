#pragma once

#include <algorithm>
#include <cstdint>
#include <ctime>

namespace Vostrel::rctool {

/// Nanoseconds that a piece of work took: by the wall clock, of processor time on the calling
/// thread, and of processor time on all threads of the process.
struct WorkTime {
    int64_t m_iWall = 0;
    int64_t m_iOwn = 0;
    int64_t m_iAll = 0;

    /// Processor time of the other threads: the workers. The clocks are read one after another, so
    /// their difference may be a little below zero.
    int64_t Workers() const { return std::max<int64_t>(m_iAll - m_iOwn, 0); }
};

/// Takes such times.
class StopWatch {
public:
    WorkTime Elapsed() const {
        const WorkTime now = Now();
        return {now.m_iWall - m_start.m_iWall, now.m_iOwn - m_start.m_iOwn,
                now.m_iAll - m_start.m_iAll};
    }

private:
    static int64_t Read(clockid_t clock) {
        timespec time{};
        clock_gettime(clock, &time);
        return int64_t{1'000'000'000} * time.tv_sec + time.tv_nsec;
    }
    static WorkTime Now() {
        return {Read(CLOCK_MONOTONIC), Read(CLOCK_THREAD_CPUTIME_ID),
                Read(CLOCK_PROCESS_CPUTIME_ID)};
    }

    WorkTime m_start = Now();
};

} // namespace Vostrel::rctool
