#include "libthread/ThreadPool.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace Vostrel::libthread {

namespace {

constexpr unsigned int Workers = 4;

/// Plain memory, written by jobs and read by the owner as a decoder's planes and scratch blocks
/// are: the pool alone has to order the accesses, which ThreadSanitizer checks.
struct Scratch {
    std::vector<std::uint32_t> slots;
    std::array<std::uint64_t, Workers> jobsOfWorker{};

    std::uint64_t jobsRun() const {
        return std::accumulate(jobsOfWorker.begin(), jobsOfWorker.end(), std::uint64_t{0});
    }
};

void addJobs(ThreadPool& pool, Scratch& scratch, std::uint32_t mark) {
    for (std::uint32_t& slot : scratch.slots) {
        std::function<void(unsigned int)> job = [&slot, &scratch, mark](unsigned int index) {
            slot = mark;
            ++scratch.jobsOfWorker.at(index);
        };
        pool.addJob(job);
    }
}

TEST(ThreadPoolStress, ManyUpdatesEachRunEveryJobBeforeTheWaitEnds) {
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Scratch scratch;
    std::uint64_t jobsAdded = 0;
    ThreadPool pool(Workers);
    for (std::uint32_t update = 1; update <= 500; ++update) {
        scratch.slots.assign(random() % 60, 0);
        addJobs(pool, scratch, update);
        jobsAdded += scratch.slots.size();
        pool.waitAll();
        ASSERT_EQ(scratch.slots, std::vector<std::uint32_t>(scratch.slots.size(), update));
        ASSERT_EQ(scratch.jobsRun(), jobsAdded);
    }
}

TEST(ThreadPoolStress, ManyPoolsDestroyedWithQueuedJobsRunThemAll) {
    for (std::uint32_t round = 1; round <= 100; ++round) {
        Scratch scratch;
        scratch.slots.assign(40, 0);
        {
            ThreadPool pool(Workers);
            addJobs(pool, scratch, round);
        }
        ASSERT_EQ(scratch.slots, std::vector<std::uint32_t>(40, round));
    }
}

TEST(ThreadPoolStress, ManyPoolsStoppedWithQueuedJobsRunEachAtMostOnce) {
    for (std::uint32_t round = 1; round <= 100; ++round) {
        Scratch scratch;
        scratch.slots.assign(40, 0);
        {
            ThreadPool pool(Workers);
            addJobs(pool, scratch, round);
            pool.joinAll(false);
        }
        std::uint64_t marked = 0;
        for (const std::uint32_t slot : scratch.slots)
            marked += slot == round;
        ASSERT_EQ(scratch.jobsRun(), marked);
    }
}

} // namespace

} // namespace Vostrel::libthread
