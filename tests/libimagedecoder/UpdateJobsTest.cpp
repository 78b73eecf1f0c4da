#include "libimagedecoder/UpdateJobs.h"

#include "libthread/ThreadPool.h"
#include "tests/libthread/SystemCalls.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

constexpr unsigned int InPlaceWorker = 77;

void Pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

/// Jobs of which each calls a function of its own.
class Jobs {
public:
    using Decode = std::function<void(unsigned int)>;

    explicit Jobs(unsigned long threads)
        : m_Jobs(std::make_unique<libthread::ThreadPool>(threads), InPlaceWorker),
          m_vDecodes(MostJobs) {}

    UpdateJobs* operator->() { return &m_Jobs; }

    MacroblockJob& Add(Decode decode) {
        MacroblockJob& record = m_Jobs.NewRecord();
        record.m_uiHeldBytes = m_uiAdded;
        m_vDecodes[m_uiAdded++] = std::move(decode);
        m_Jobs.AddRecord();
        return record;
    }

    template <class Walk>
    void Run(Walk walk) {
        m_uiAdded = 0;
        m_Jobs.Run(walk, [this](MacroblockBatch& batch) -> UpdateJobs::Function {
            return [this, &batch](unsigned int worker) {
                m_Jobs.DecodeBatch(batch, [&](MacroblockJob& record) {
                    m_vDecodes[record.m_uiHeldBytes](worker);
                });
            };
        });
    }

    /// A job that waits a little and then fails with a text.
    void AddFailing(const std::string& text, bool late = false) {
        Add([text, late](unsigned int) {
            if (late)
                Pause();
            throw std::runtime_error(text);
        });
    }

    template <class Walk>
    std::string Failure(Walk walk) {
        try {
            Run(walk);
            return "none";
        } catch (const std::exception& exception) {
            return exception.what();
        }
    }

private:
    static constexpr size_t MostJobs = 6000;

    UpdateJobs m_Jobs;
    std::vector<Decode> m_vDecodes; ///< never grows: workers look into it
    size_t m_uiAdded = 0;
};

void Nothing(unsigned int) {}

constexpr size_t BatchSize = MacroblockBatch::Capacity;

TEST(UpdateJobs, WithoutAPoolTheWalkRunsAlone) {
    UpdateJobs jobs(nullptr, 0);
    EXPECT_FALSE(jobs.HasPool());
    bool walked = false;
    const UpdateJobs::Schedule never = [](MacroblockBatch&) -> UpdateJobs::Function {
        ADD_FAILURE() << "there is nothing to schedule";
        return {};
    };
    jobs.Run([&] { walked = true; }, never);
    EXPECT_TRUE(walked);
    EXPECT_THROW(jobs.Run([] { throw std::runtime_error("walk"); }, never), std::runtime_error);
}

TEST(UpdateJobs, RunReturnsWhenEveryJobHasFinished) {
    for (const size_t count : {size_t{1}, BatchSize - 1, BatchSize, BatchSize + 1, 3 * BatchSize}) {
        Jobs jobs(3);
        EXPECT_TRUE(jobs->HasPool());
        std::atomic<size_t> finished = 0;
        jobs.Run([&] {
            for (size_t i = 0; i < count; ++i)
                jobs.Add([&](unsigned int) {
                    std::this_thread::sleep_for(std::chrono::microseconds(300));
                    ++finished;
                });
        });
        EXPECT_EQ(finished, count);
    }
}

TEST(UpdateJobs, AThrowingWalkLeavesOnlyWhenEveryJobHasFinished) {
    for (const size_t count : {size_t{6}, BatchSize, BatchSize + 6}) {
        Jobs jobs(2);
        std::atomic<size_t> finished = 0;
        EXPECT_EQ(jobs.Failure([&] {
            for (size_t i = 0; i < count; ++i)
                jobs.Add([&](unsigned int) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                    ++finished;
                });
            throw std::runtime_error("walk");
        }),
                  "walk");
        EXPECT_EQ(finished, count);
    }
}

TEST(UpdateJobs, ARecordThatWasNotAddedDoesNotCount) {
    Jobs jobs(1);
    int decoded = 0;
    EXPECT_EQ(jobs.Failure([&] {
        jobs.Add([&](unsigned int) { ++decoded; });
        jobs->NewRecord().m_uiHeldBytes = 0;
        throw std::runtime_error("walk");
    }),
              "walk");
    EXPECT_EQ(decoded, 1);
}

TEST(UpdateJobs, TheFirstFailureInMacroblockOrderWins) {
    Jobs jobs(4);
    for (const size_t between : {size_t{0}, BatchSize - 2, BatchSize, 5 * BatchSize}) {
        EXPECT_EQ(jobs.Failure([&] {
            jobs.Add(Nothing);
            jobs.AddFailing("second", true);
            for (size_t i = 0; i < between; ++i)
                jobs.Add(Nothing);
            jobs.AddFailing("third");
            jobs.AddFailing("fourth");
        }),
                  "second");
    }
}

TEST(UpdateJobs, AFailedJobDoesNotKeepItsNeighboursFromRunning) {
    Jobs jobs(1);
    std::atomic<int> decoded = 0;
    EXPECT_EQ(jobs.Failure([&] {
        jobs.Add([&](unsigned int) { ++decoded; });
        jobs.AddFailing("job");
        jobs.Add([&](unsigned int) { ++decoded; });
    }),
              "job");
    EXPECT_EQ(decoded, 2);
}

TEST(UpdateJobs, AJobsFailureComesBeforeTheWalksOwn) {
    Jobs jobs(2);
    EXPECT_EQ(jobs.Failure([&] {
        jobs.AddFailing("job", true);
        throw std::runtime_error("walk");
    }),
              "job");
}

TEST(UpdateJobs, TheTypeOfTheFailureIsKept) {
    Jobs jobs(1);
    EXPECT_THROW(jobs.Run([&] { jobs.Add([](unsigned int) { throw std::out_of_range("x"); }); }),
                 std::out_of_range);
    EXPECT_THROW(jobs.Run([&] { jobs.Add([](unsigned int) { throw 5; }); }), int);
}

TEST(UpdateJobs, AFailureIsToldOnce) {
    Jobs jobs(2);
    EXPECT_EQ(jobs.Failure([&] {
        jobs.AddFailing("first");
        jobs.AddFailing("second");
        throw std::runtime_error("walk");
    }),
              "first");
    EXPECT_EQ(jobs.Failure([] {}), "none");
    EXPECT_EQ(jobs.Failure([&] {
        jobs.Add(Nothing);
        jobs.Add(Nothing);
        jobs.AddFailing("third");
    }),
              "third");
    EXPECT_EQ(jobs.Failure([&] { jobs.Add(Nothing); }), "none");
}

TEST(UpdateJobs, RecordsStayWhereTheyAreAndAreUsedAgain) {
    Jobs jobs(1);
    const auto addMany = [&] {
        std::vector<MacroblockJob*> records;
        jobs.Run([&] {
            for (size_t i = 0; i < 5000; ++i)
                records.push_back(&jobs.Add(Nothing));
        });
        return records;
    };
    const std::vector<MacroblockJob*> first = addMany();
    EXPECT_EQ(std::set<MacroblockJob*>(first.begin(), first.end()).size(), 5000u);
    EXPECT_EQ(addMany(), first);
}

TEST(UpdateJobs, AFinishedJobHasFreedTheSegmentItOwned) {
    Jobs jobs(1);
    MacroblockJob* record = nullptr;
    for (const bool failing : {false, true}) {
        jobs.Failure([&] {
            jobs->NewRecord().m_puiOwned = std::make_unique<uint8_t[]>(100);
            record = &jobs.Add([failing](unsigned int) {
                if (failing)
                    throw std::runtime_error("x");
            });
        });
        EXPECT_EQ(record->m_puiOwned, nullptr);
    }
}

TEST(UpdateJobs, WorkersHaveTheIndexesOfThePool) {
    Jobs jobs(3);
    std::atomic<bool> inRange = true;
    jobs.Run([&] {
        for (size_t i = 0; i < 10 * BatchSize; ++i)
            jobs.Add([&](unsigned int worker) {
                if (worker >= 3)
                    inRange = false;
            });
    });
    EXPECT_TRUE(inRange);
}

TEST(UpdateJobs, WithoutARunningWorkerJobsRunOnTheDrivingThread) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    for (const unsigned long threads : {0ul, 1ul, 4ul}) {
        Jobs jobs(threads);
        EXPECT_TRUE(jobs->HasPool());
        unsigned int worker = 0;
        std::thread::id thread;
        jobs.Run([&] {
            jobs.Add([&](unsigned int index) {
                worker = index;
                thread = std::this_thread::get_id();
            });
        });
        EXPECT_EQ(worker, InPlaceWorker);
        EXPECT_EQ(thread, std::this_thread::get_id());
        EXPECT_EQ(jobs.Failure([&] {
            jobs.AddFailing("first");
            jobs.AddFailing("second");
        }),
                  "first");
    }
}

TEST(UpdateJobs, OneRunningWorkerOfManyIsEnough) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    calls.m_createFailures = 3;
    Jobs jobs(4);
    std::atomic<unsigned int> worker = InPlaceWorker;
    jobs.Run([&] { jobs.Add([&](unsigned int index) { worker = index; }); });
    EXPECT_EQ(worker, 3u);
}

} // namespace

} // namespace Vostrel::libimagedecoder
