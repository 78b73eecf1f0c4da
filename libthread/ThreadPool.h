#pragma once

#include "libthread/Condition.h"
#include "libthread/ErrorCheckingMutex.h"
#include "libthread/Thread.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Vostrel::libthread {

/// Runs jobs on a fixed set of worker threads.
///
/// One owner thread adds jobs, waits for them, and joins or destroys the pool. A job receives the
/// index of the worker that runs it, 0 to thread count - 1, by which it can pick scratch memory of
/// its own without locking. A job must not throw: an exception that leaves it ends the process.
///
/// A pool whose workers all failed to start (see runningThreads) never runs a job, so waiting after
/// addJob would never end; its owner has to run the jobs itself.
class ThreadPool {
public:
    /// Starts `threadCount` workers; 0 makes a pool without any. A worker that the system refuses
    /// to start is left out.
    explicit ThreadPool(unsigned long threadCount);
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Runs every queued job to its end, unless the pool was joined before: then the jobs still
    /// queued are destroyed unrun.
    virtual ~ThreadPool();

    /// Whether this platform has threads: always true.
    static bool isSupported();

    /// The number of workers that were started, at most the thread count asked for.
    unsigned long runningThreads() const;

    /// Moves the job into the pool and leaves `job` empty. The job added last runs first. On a pool
    /// that was joined nothing happens, and `job` keeps its job. Throws std::bad_alloc when the
    /// queue cannot grow, with pool and job unchanged.
    void addJob(std::function<void(unsigned int)>& job);

    /// Returns when every job added so far has finished.
    void waitAll();

    /// Stops and joins the workers: after all jobs if `wait` is set, otherwise as soon as each has
    /// finished the job in its hands. A second call returns at once.
    void joinAll(bool wait);

private:
    using Job = std::function<void(unsigned int)>;

    void startWorker(unsigned int index);
    void threadTask(unsigned int index);
    Job nextJob();
    void finishJob();

    // The two mutexes are never held together. The atomics are also read outside their mutex.
    std::uint64_t m_threadCount;
    std::vector<std::shared_ptr<Thread>> m_threads;
    std::vector<Job> m_jobs;                    ///< A stack; guarded by m_jobMutex.
    std::atomic<std::int32_t> m_pendingJobs{0}; ///< Jobs added and not yet finished.
    std::atomic<bool> m_stopping{false};        ///< Workers take no more jobs.
    std::atomic<bool> m_joined{false};          ///< Every worker has ended.
    Condition m_jobCondition;
    Condition m_doneCondition;
    ErrorCheckingMutex m_doneMutex; ///< Guards the wait for m_pendingJobs to reach zero.
    ErrorCheckingMutex m_jobMutex;  ///< Guards m_jobs and the setting of m_stopping.
    unsigned long m_runningThreads = 0;
};

} // namespace Vostrel::libthread
