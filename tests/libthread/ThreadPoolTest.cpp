#include "libthread/ThreadPool.h"
#include "tests/libthread/SystemCalls.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Vostrel::libthread {

namespace {

using Job = std::function<void(unsigned int)>;

void add(ThreadPool& pool, Job job) {
    pool.addJob(job);
}

/// A job that holds one worker until it is released.
class Gate {
public:
    /// Returns when a worker of the pool stands in the gate.
    explicit Gate(ThreadPool& pool) {
        add(pool, [this](unsigned int) {
            m_entered.count_down();
            m_opened.wait();
        });
        m_entered.wait();
    }

    void open() { m_opened.count_down(); }

private:
    std::latch m_entered{1};
    std::latch m_opened{1};
};

TEST(ThreadPool, IsSupported) {
    EXPECT_TRUE(ThreadPool::isSupported());
}

TEST(ThreadPool, RunsEveryJobOnce) {
    std::vector<int> runs(100, 0);
    ThreadPool pool(3);
    for (int& run : runs)
        add(pool, [&run](unsigned int) { ++run; });
    pool.waitAll();
    EXPECT_EQ(runs, std::vector<int>(100, 1));
}

TEST(ThreadPool, JobAddedLastRunsFirst) {
    std::vector<int> order;
    ThreadPool pool(1);
    Gate gate(pool);
    for (int number = 1; number <= 3; ++number)
        add(pool, [&order, number](unsigned int) { order.push_back(number); });
    gate.open();
    pool.waitAll();
    EXPECT_EQ(order, (std::vector<int>{3, 2, 1}));
}

TEST(ThreadPool, EveryWorkerPassesItsOwnIndex) {
    constexpr unsigned int Workers = 4;
    std::vector<unsigned int> runs(Workers, 0);
    std::latch allWorkersHere(Workers);
    ThreadPool pool(Workers);
    for (unsigned int i = 0; i < Workers; ++i)
        add(pool, [&](unsigned int index) {
            allWorkersHere.arrive_and_wait();
            ++runs.at(index);
        });
    pool.waitAll();
    EXPECT_EQ(runs, std::vector<unsigned int>(Workers, 1));
}

TEST(ThreadPool, WorkersAreNamedByTheirIndex) {
    tests::SystemCalls calls;
    for (unsigned long workers : {1UL, 2UL, 12UL}) {
        ThreadPool pool(workers);
        EXPECT_EQ(std::string(calls.m_lastThreadName.data()),
                  "ThreadPool Thread " + std::to_string(workers - 1));
        EXPECT_EQ(calls.m_lastStackSize, std::size_t{1} << 20);
    }
}

TEST(ThreadPool, WaitAllWithoutJobsReturnsAtOnce) {
    ThreadPool pool(2);
    pool.waitAll();
    pool.waitAll();
}

TEST(ThreadPool, WaitAllWaitsForAJobThatIsRunning) {
    std::atomic<bool> finished = false;
    ThreadPool pool(2);
    Gate gate(pool);
    add(pool, [&](unsigned int) {
        gate.open();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        finished = true;
    });
    pool.waitAll();
    EXPECT_TRUE(finished);
}

TEST(ThreadPool, JobIsDestroyedBeforeWaitAllReturns) {
    auto held = std::make_shared<int>(0);
    ThreadPool pool(2);
    for (int i = 0; i < 50; ++i) {
        add(pool, [held](unsigned int) {});
        pool.waitAll();
        ASSERT_EQ(held.use_count(), 1);
    }
}

/// A job that counts its copies.
struct CopyCounter {
    explicit CopyCounter(std::atomic<int>& copies) : m_copies(&copies) {}
    CopyCounter(const CopyCounter& other) : m_copies(other.m_copies) { ++*m_copies; }
    CopyCounter(CopyCounter&&) = default;
    void operator()(unsigned int) const {}

    std::atomic<int>* m_copies;
};

TEST(ThreadPool, JobIsMovedNeverCopied) {
    std::atomic<int> copies = 0;
    ThreadPool pool(1);
    Job job = CopyCounter(copies);
    copies = 0;
    pool.addJob(job);
    EXPECT_FALSE(job);
    pool.waitAll();
    EXPECT_EQ(copies, 0);
}

TEST(ThreadPool, AddJobAfterJoinAllLeavesTheJobWithTheCaller) {
    int runs = 0;
    Job job = [&runs](unsigned int) { ++runs; };
    {
        ThreadPool pool(2);
        pool.joinAll(true);
        pool.addJob(job);
        EXPECT_TRUE(job);
        pool.waitAll();
    }
    EXPECT_EQ(runs, 0);
}

TEST(ThreadPool, AddJobWhileJoinAllStopsTheWorkersTakesTheJob) {
    tests::SystemCalls calls;
    int runs = 0;
    Job job = [&runs](unsigned int) { ++runs; };
    {
        ThreadPool pool(1);
        Gate gate(pool);
        // The pool stops before it joins: no worker takes jobs any more, but it is not joined.
        calls.m_onJoin = [&] {
            pool.addJob(job);
            gate.open();
        };
        pool.joinAll(false);
        EXPECT_FALSE(job) << "the pool owns the job";
    }
    EXPECT_EQ(runs, 0);
}

TEST(ThreadPool, JoinAllWithWaitRunsEveryQueuedJob) {
    int runs = 0;
    ThreadPool pool(1);
    Gate gate(pool);
    for (int i = 0; i < 3; ++i)
        add(pool, [&runs](unsigned int) { ++runs; });
    gate.open();
    pool.joinAll(true);
    EXPECT_EQ(runs, 3);
}

TEST(ThreadPool, JoinAllWithoutWaitFinishesTheCurrentJobAndDropsTheQueue) {
    tests::SystemCalls calls;
    int runs = 0;
    auto held = std::make_shared<int>(0);
    {
        ThreadPool pool(1);
        Gate gate(pool);
        for (int i = 0; i < 2; ++i)
            add(pool, [&runs, held](unsigned int) { ++runs; });
        calls.m_onJoin = [&gate] { gate.open(); }; // The pool stops before it joins.
        pool.joinAll(false);
        EXPECT_EQ(calls.m_joins, 1U);
        EXPECT_EQ(held.use_count(), 3);
    }
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(held.use_count(), 1) << "the queued jobs were not destroyed with the pool";
}

TEST(ThreadPool, SecondJoinAllReturnsAtOnce) {
    tests::SystemCalls calls;
    ThreadPool pool(3);
    pool.joinAll(true);
    EXPECT_EQ(calls.m_joins, 3U);
    pool.joinAll(true);
    pool.joinAll(false);
    EXPECT_EQ(calls.m_joins, 3U);
}

TEST(ThreadPool, DestructionRunsEveryQueuedJob) {
    int runs = 0;
    {
        std::latch opened(1);
        ThreadPool pool(1);
        add(pool, [&opened](unsigned int) { opened.wait(); });
        for (int i = 0; i < 20; ++i)
            add(pool, [&runs](unsigned int) { ++runs; });
        opened.count_down();
    }
    EXPECT_EQ(runs, 20);
}

TEST(ThreadPool, WithoutThreadsConstructsAndDestroysWhenNoJobIsAdded) {
    tests::SystemCalls calls;
    {
        ThreadPool pool(0);
        EXPECT_EQ(pool.runningThreads(), 0U);
        pool.waitAll();
    }
    EXPECT_EQ(calls.m_creates, 0U);
    EXPECT_EQ(calls.m_joins, 0U);
}

TEST(ThreadPool, RunningThreadsCountsTheStartedWorkers) {
    EXPECT_EQ(ThreadPool(1).runningThreads(), 1U);
    EXPECT_EQ(ThreadPool(5).runningThreads(), 5U);
}

} // namespace

} // namespace Vostrel::libthread
