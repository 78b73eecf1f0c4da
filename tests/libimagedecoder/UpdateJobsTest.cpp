#include "libimagedecoder/UpdateJobs.h"

#include "libthread/ThreadPool.h"
#include "tests/libthread/SystemCalls.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

namespace Vostrel::libimagedecoder {

namespace {

constexpr unsigned int InPlaceWorker = 77;

UpdateJobs WithPool(unsigned long threads) {
    return UpdateJobs(std::make_unique<libthread::ThreadPool>(threads), InPlaceWorker);
}

void Pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

/// Adds a job with a record of its own that calls decode.
template <class Decode>
void AddGuarded(UpdateJobs& jobs, Decode decode) {
    MacroblockJob& record = jobs.NewRecord();
    jobs.Add([&jobs, &record, decode](unsigned int) { jobs.Guarded(record, decode); });
}

/// A job that waits a little and then fails with a text.
void AddFailing(UpdateJobs& jobs, const std::string& text, bool late = false) {
    AddGuarded(jobs, [text, late] {
        if (late)
            Pause();
        throw std::runtime_error(text);
    });
}

template <class Walk>
std::string Failure(UpdateJobs& jobs, Walk walk) {
    try {
        jobs.Run(walk);
        return "none";
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

TEST(UpdateJobs, WithoutAPoolTheWalkRunsAlone) {
    UpdateJobs jobs(nullptr, 0);
    EXPECT_FALSE(jobs.HasPool());
    bool walked = false;
    jobs.Run([&] { walked = true; });
    EXPECT_TRUE(walked);
    EXPECT_EQ(Failure(jobs, [] { throw std::runtime_error("walk"); }), "walk");
    EXPECT_EQ(Failure(jobs, [] {}), "none");
}

TEST(UpdateJobs, RunReturnsWhenEveryJobHasFinished) {
    UpdateJobs jobs = WithPool(3);
    EXPECT_TRUE(jobs.HasPool());
    std::atomic<int> finished = 0;
    jobs.Run([&] {
        for (int i = 0; i < 10; ++i)
            AddGuarded(jobs, [&] {
                Pause();
                ++finished;
            });
    });
    EXPECT_EQ(finished, 10);
}

TEST(UpdateJobs, AThrowingWalkLeavesOnlyWhenEveryJobHasFinished) {
    UpdateJobs jobs = WithPool(2);
    std::atomic<int> finished = 0;
    EXPECT_EQ(Failure(jobs,
                      [&] {
                          for (int i = 0; i < 6; ++i)
                              AddGuarded(jobs, [&] {
                                  Pause();
                                  ++finished;
                              });
                          throw std::runtime_error("walk");
                      }),
              "walk");
    EXPECT_EQ(finished, 6);
}

TEST(UpdateJobs, TheFirstFailureInMacroblockOrderWins) {
    UpdateJobs jobs = WithPool(4);
    for (int run = 0; run < 20; ++run) {
        EXPECT_EQ(Failure(jobs,
                          [&] {
                              AddGuarded(jobs, [] {});
                              AddFailing(jobs, "second", true);
                              AddFailing(jobs, "third");
                              AddFailing(jobs, "fourth");
                          }),
                  "second");
    }
}

TEST(UpdateJobs, AJobsFailureComesBeforeTheWalksOwn) {
    UpdateJobs jobs = WithPool(2);
    EXPECT_EQ(Failure(jobs,
                      [&] {
                          AddFailing(jobs, "job", true);
                          throw std::runtime_error("walk");
                      }),
              "job");
}

TEST(UpdateJobs, TheTypeOfTheFailureIsKept) {
    UpdateJobs jobs = WithPool(1);
    EXPECT_THROW(jobs.Run([&] { AddGuarded(jobs, [] { throw std::out_of_range("x"); }); }),
                 std::out_of_range);
    EXPECT_THROW(jobs.Run([&] { AddGuarded(jobs, [] { throw 5; }); }), int);
}

TEST(UpdateJobs, AFailureIsToldOnce) {
    UpdateJobs jobs = WithPool(2);
    EXPECT_EQ(Failure(jobs,
                      [&] {
                          AddFailing(jobs, "first");
                          AddFailing(jobs, "second");
                          throw std::runtime_error("walk");
                      }),
              "first");
    EXPECT_EQ(Failure(jobs, [] {}), "none");
    EXPECT_EQ(Failure(jobs,
                      [&] {
                          AddGuarded(jobs, [] {});
                          AddGuarded(jobs, [] {});
                          AddFailing(jobs, "third");
                      }),
              "third");
    EXPECT_EQ(Failure(jobs, [&] { AddGuarded(jobs, [] {}); }), "none");
}

TEST(UpdateJobs, RecordsStayWhereTheyAreAndAreUsedAgain) {
    UpdateJobs jobs = WithPool(1);
    std::set<MacroblockJob*> records;
    MacroblockJob* first = nullptr;
    jobs.Run([&] {
        first = &jobs.NewRecord();
        records.insert(first);
        for (size_t i = 0; i < 4999; ++i)
            records.insert(&jobs.NewRecord());
        first->m_uiSegmentBytes = 1;
    });
    EXPECT_EQ(records.size(), 5000u);
    jobs.Run([&] {
        EXPECT_EQ(&jobs.NewRecord(), first);
        for (size_t i = 0; i < 4999; ++i)
            EXPECT_TRUE(records.contains(&jobs.NewRecord()));
    });
}

TEST(UpdateJobs, AFinishedJobHasFreedTheSegmentItOwned) {
    UpdateJobs jobs = WithPool(1);
    MacroblockJob* record = nullptr;
    for (const bool failing : {false, true}) {
        Failure(jobs, [&] {
            record = &jobs.NewRecord();
            record->m_puiOwned = std::make_unique<uint8_t[]>(100);
            jobs.Add([&, failing](unsigned int) {
                jobs.Guarded(*record, [failing] {
                    if (failing)
                        throw std::runtime_error("x");
                });
            });
        });
        EXPECT_EQ(record->m_puiOwned, nullptr);
    }
}

TEST(UpdateJobs, WorkersHaveTheIndexesOfThePool) {
    UpdateJobs jobs = WithPool(3);
    std::atomic<bool> inRange = true;
    jobs.Run([&] {
        for (int i = 0; i < 50; ++i)
            jobs.Add([&](unsigned int worker) {
                if (worker >= 3)
                    inRange = false;
            });
    });
    EXPECT_TRUE(inRange);
}

TEST(UpdateJobs, WithoutARunningWorkerJobsRunAtOnceOnTheDrivingThread) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    for (const unsigned long threads : {0ul, 1ul, 4ul}) {
        UpdateJobs jobs = WithPool(threads);
        EXPECT_TRUE(jobs.HasPool());
        unsigned int worker = 0;
        std::thread::id thread;
        jobs.Run([&] {
            jobs.Add([&](unsigned int index) {
                worker = index;
                thread = std::this_thread::get_id();
            });
            EXPECT_EQ(worker, InPlaceWorker);
        });
        EXPECT_EQ(thread, std::this_thread::get_id());
        EXPECT_EQ(Failure(jobs,
                          [&] {
                              AddFailing(jobs, "first");
                              AddFailing(jobs, "second");
                          }),
                  "first");
    }
}

TEST(UpdateJobs, OneRunningWorkerOfManyIsEnough) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    calls.m_createFailures = 3;
    UpdateJobs jobs = WithPool(4);
    std::atomic<unsigned int> worker = InPlaceWorker;
    jobs.Run([&] { jobs.Add([&](unsigned int index) { worker = index; }); });
    EXPECT_EQ(worker, 3u);
}

} // namespace

} // namespace Vostrel::libimagedecoder
