#include "libthread/ThreadPool.h"
#include "tests/libthread/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

namespace Vostrel::libthread {

namespace {

using Job = std::function<void(unsigned int)>;
using tests::SystemCalls;

TEST(ThreadPoolFailure, PoolWhoseWorkersAllFailToStartConstructsAndDestroys) {
    SystemCalls calls;
    calls.m_createCode = EAGAIN;
    {
        ThreadPool pool(4);
        EXPECT_EQ(pool.runningThreads(), 0U);
        pool.waitAll();
    }
    EXPECT_EQ(calls.m_joins, 0U);
}

TEST(ThreadPoolFailure, RemainingWorkersRunEveryJob) {
    SystemCalls calls;
    calls.m_createCode = EAGAIN;
    calls.m_createFailures = 2;
    std::vector<int> runs(30, 0);
    {
        ThreadPool pool(3);
        EXPECT_EQ(pool.runningThreads(), 1U);
        for (int& run : runs) {
            Job job = [&run](unsigned int index) { run = index == 2 ? 1 : -1; };
            pool.addJob(job);
        }
        pool.waitAll();
    }
    EXPECT_EQ(runs, std::vector<int>(30, 1)) << "1 is a run by worker 2, -1 one by a failed worker";
    EXPECT_EQ(calls.m_joins, 1U);
}

TEST(ThreadPoolFailure, AddJobWithoutMemoryChangesNothing) {
    SystemCalls calls;
    ThreadPool pool(1);
    int runs = 0;
    Job job = [&runs](unsigned int) { ++runs; };
    calls.m_allocationsBeforeFailure = 0;
    EXPECT_THROW(pool.addJob(job), std::bad_alloc);
    calls.m_allocationsBeforeFailure.reset();
    EXPECT_TRUE(job) << "the job left its owner";
    pool.waitAll();
    EXPECT_EQ(runs, 0);
    pool.addJob(job);
    pool.waitAll();
    EXPECT_EQ(runs, 1);
}

TEST(ThreadPoolFailure, ConstructionWithoutMemoryJoinsTheWorkersStartedSoFar) {
    SystemCalls calls;
    unsigned worstStart = 0;
    bool constructed = false;
    for (unsigned allocations = 0; !constructed; ++allocations) {
        calls.m_creates = calls.m_joins = 0;
        calls.m_allocationsBeforeFailure = allocations;
        std::unique_ptr<ThreadPool> pool;
        try {
            pool = std::make_unique<ThreadPool>(3);
            constructed = true;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(calls.m_joins, calls.m_creates) << allocations << " allocations";
            worstStart = std::max(worstStart, calls.m_creates);
        }
        calls.m_allocationsBeforeFailure.reset();
    }
    EXPECT_EQ(worstStart, 2U) << "no allocation of the last worker was made to fail";
}

TEST(ThreadPoolFailure, UnreachableThreadCountThrowsBeforeAnyThreadStarts) {
    SystemCalls calls;
    EXPECT_THROW(ThreadPool(~0UL), std::length_error);
    EXPECT_EQ(calls.m_creates, 0U);
}

TEST(ThreadPoolDeathTest, JobThatThrowsEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            ThreadPool pool(1);
            Job job = [](unsigned int) { throw std::runtime_error("job failed"); };
            pool.addJob(job);
            pool.waitAll();
        },
        testing::KilledBySignal(SIGABRT), "job failed");
}

} // namespace

} // namespace Vostrel::libthread
