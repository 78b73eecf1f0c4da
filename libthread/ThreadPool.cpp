#include "libthread/ThreadPool.h"

#include "libthread/JoinableThread.h"

#include <mutex>
#include <string>
#include <utility>

namespace Vostrel::libthread {

ThreadPool::ThreadPool(unsigned long threadCount) : m_threadCount(threadCount) {
    m_threads.reserve(m_threadCount);
    try {
        for (unsigned int index = 0; index < m_threadCount; ++index)
            startWorker(index);
    } catch (...) {
        // The workers started so far run on this object: they must end before it is gone.
        joinAll(false);
        throw;
    }
}

ThreadPool::~ThreadPool() {
    joinAll(true);
}

bool ThreadPool::isSupported() {
    return true;
}

unsigned long ThreadPool::runningThreads() const {
    return m_runningThreads;
}

void ThreadPool::addJob(std::function<void(unsigned int)>& job) {
    if (m_joined)
        return;
    std::lock_guard lock(m_jobMutex);
    m_jobs.push_back(std::move(job));
    ++m_pendingJobs;
    m_jobCondition.signal();
}

void ThreadPool::waitAll() {
    std::lock_guard lock(m_doneMutex);
    while (m_pendingJobs > 0)
        m_doneCondition.wait(m_doneMutex);
}

void ThreadPool::joinAll(bool wait) {
    if (m_joined)
        return;
    if (wait)
        waitAll();
    {
        std::lock_guard lock(m_jobMutex);
        m_stopping.exchange(true);
        m_jobCondition.broadcast();
    }
    for (const std::shared_ptr<Thread>& thread : m_threads)
        thread->join();
    m_joined.exchange(true);
}

void ThreadPool::startWorker(unsigned int index) {
    m_threads.push_back(std::shared_ptr<Thread>(new JoinableThread(
        [this, index] { threadTask(index); }, "ThreadPool Thread " + std::to_string(index))));
    if (m_threads.back()->start() == 0)
        ++m_runningThreads;
}

void ThreadPool::threadTask(unsigned int index) {
    while (!m_stopping) {
        // The job is destroyed before it counts as finished: whoever waits may then release what
        // the job refers to.
        nextJob()(index);
        finishJob();
    }
}

ThreadPool::Job ThreadPool::nextJob() {
    std::lock_guard lock(m_jobMutex);
    while (!m_stopping && m_jobs.empty())
        m_jobCondition.wait(m_jobMutex);
    if (m_stopping) {
        ++m_pendingJobs; // Balances the finishJob that follows every job.
        return [](unsigned int) {};
    }
    Job job = std::move(m_jobs.back());
    m_jobs.pop_back();
    return job;
}

void ThreadPool::finishJob() {
    std::lock_guard lock(m_doneMutex);
    if (m_pendingJobs-- == 1)
        m_doneCondition.signal();
}

} // namespace Vostrel::libthread
