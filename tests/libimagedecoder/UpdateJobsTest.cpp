#include "libimagedecoder/UpdateJobs.h"

#include "libthread/ThreadPool.h"
#include "tests/libthread/SystemCalls.h"

#include <array>
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

/// Records of which each calls a function of its own.
class Jobs {
public:
    using Decode = std::function<void(unsigned int)>;

    explicit Jobs(unsigned long threads)
        : m_Jobs(std::make_unique<libthread::ThreadPool>(threads), InPlaceWorker),
          m_vDecodes(MostJobs) {}

    UpdateJobs* operator->() { return &m_Jobs; }

    MacroblockRecord& Add(Decode decode) {
        if (m_vBatches.empty() || m_Jobs.NextBeginsBatch())
            m_vBatches.push_back(0);
        ++m_vBatches.back();
        MacroblockRecord& record = m_Jobs.NewRecord();
        record.m_Macroblock.m_uiLeft = m_uiAdded;
        m_vDecodes[m_uiAdded++] = std::move(decode);
        m_Jobs.AddRecord();
        return record;
    }

    /// macroblocks: so many that batches are as large as they can be.
    template <class Walk>
    void Run(Walk walk, size_t macroblocks = 1u << 20) {
        m_uiAdded = 0;
        m_vBatches.clear();
        m_Jobs.Run(macroblocks, walk, [this](MacroblockRecord& record, unsigned int worker) {
            m_vDecodes[record.m_Macroblock.m_uiLeft](worker);
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

    /// Of the last run: how many records each batch had.
    const std::vector<size_t>& Batches() const { return m_vBatches; }

private:
    static constexpr size_t MostJobs = 6000;

    UpdateJobs m_Jobs;
    std::vector<Decode> m_vDecodes; ///< never grows: workers look into it
    size_t m_uiAdded = 0;
    std::vector<size_t> m_vBatches;
};

void Nothing(unsigned int) {}

constexpr size_t BatchSize = RecordBatch::Capacity;

TEST(UpdateJobs, WithoutAPoolTheWalkRunsAlone) {
    UpdateJobs jobs(nullptr, 0);
    EXPECT_FALSE(jobs.HasPool());
    bool walked = false;
    const UpdateJobs::DecodeRecord never = [](MacroblockRecord&, unsigned int) {
        ADD_FAILURE() << "there is nothing to decode";
    };
    jobs.Run(
        10, [&] { walked = true; }, never);
    EXPECT_TRUE(walked);
    EXPECT_THROW(jobs.Run(
                     10, [] { throw std::runtime_error("walk"); }, never),
                 std::runtime_error);
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
        jobs->NewRecord().m_Macroblock.m_uiLeft = 0;
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
        std::vector<MacroblockRecord*> records;
        jobs.Run([&] {
            for (size_t i = 0; i < 5000; ++i)
                records.push_back(&jobs.Add(Nothing));
        });
        return records;
    };
    const std::vector<MacroblockRecord*> first = addMany();
    EXPECT_EQ(std::set<MacroblockRecord*>(first.begin(), first.end()).size(), 5000u);
    EXPECT_EQ(addMany(), first);
}

TEST(UpdateJobs, AFinishedJobHasFreedTheSegmentItOwned) {
    Jobs jobs(1);
    MacroblockRecord* record = nullptr;
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

TEST(UpdateJobs, BatchesAreLargeForLargeUpdatesAndManyForEveryWorker) {
    struct Case {
        unsigned long threads;
        size_t macroblocks;
        std::vector<size_t> batches;
    };
    const Case cases[] = {
        {1, 40, {32, 8}},         // no batch is smaller than 32 but the last
        {1, 512, {32, 32}},       // 16 batches for the worker
        {1, 1024, {64, 64}},      //
        {1, 1 << 20, {128, 128}}, // no batch is larger than 128
        {2, 2048, {64, 64}},      // 16 batches for each
        {4, 4096 + 64, {65, 65}},
    };
    for (const Case& test : cases) {
        Jobs jobs(test.threads);
        size_t count = 0;
        for (const size_t batch : test.batches)
            count += batch;
        jobs.Run(
            [&] {
                for (size_t i = 0; i < count; ++i)
                    jobs.Add(Nothing);
            },
            test.macroblocks);
        EXPECT_EQ(jobs.Batches(), test.batches) << test.threads << " " << test.macroblocks;
    }
}

TEST(UpdateJobs, EveryPartIsSharedOutOnce) {
    for (const unsigned long threads : {1ul, 4ul}) {
        Jobs jobs(threads);
        for (const size_t parts : {size_t{0}, size_t{1}, size_t{2}, size_t{100}}) {
            std::vector<std::atomic<int>> calls(parts);
            jobs->Share(parts, [&](size_t part) {
                std::this_thread::sleep_for(std::chrono::microseconds(100));
                ++calls[part];
            });
            for (const std::atomic<int>& count : calls)
                EXPECT_EQ(count, 1);
        }
        // And jobs go on as before.
        EXPECT_EQ(jobs.Failure([&] { jobs.AddFailing("job"); }), "job");
    }
}

TEST(UpdateJobs, AFailedPartIsToldWhenAllPartsHaveRun) {
    Jobs jobs(2);
    std::atomic<int> calls = 0;
    const auto callFailing = [&](size_t part) {
        ++calls;
        if (part % 4 == 1)
            throw std::out_of_range("part");
    };
    EXPECT_THROW(jobs->Share(100, callFailing), std::out_of_range);
    EXPECT_EQ(calls, 100);
}

TEST(UpdateJobs, WorkersAndTheDrivingThreadTakeParts) {
    Jobs jobs(1);
    std::atomic<int> arrived = 0;
    std::array<std::thread::id, 2> threads;
    // Neither part ends before the other has begun, so one thread alone would not do.
    jobs->Share(2, [&](size_t part) {
        threads[part] = std::this_thread::get_id();
        for (++arrived; arrived < 2;)
            std::this_thread::yield();
    });
    EXPECT_NE(threads[0], threads[1]);
    EXPECT_TRUE(threads[0] == std::this_thread::get_id() ||
                threads[1] == std::this_thread::get_id());
}

TEST(UpdateJobs, WithoutAWorkerTheDrivingThreadTakesAllParts) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    Jobs noWorker(2);
    UpdateJobs noPool(nullptr, 0);
    for (UpdateJobs* jobs : {noWorker.operator->(), &noPool}) {
        std::vector<size_t> parts;
        jobs->Share(3, [&](size_t part) { parts.push_back(part); });
        EXPECT_EQ(parts, (std::vector<size_t>{0, 1, 2}));
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder
