#include "libthread/ErrorCheckingMutex.h"
#include "libthread/FastErrorProneMutex.h"
#include "libthread/RecursiveMutex.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

// These tests misuse mutexes on purpose, which ThreadSanitizer would report. Its library looks for
// this function in the program.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options();
const char* __tsan_default_options() {
    return "report_mutex_bugs=0";
}

namespace Vostrel::libthread {

namespace {

template <typename Mutex>
struct Opened : Mutex {
    int kind() const { return this->m_mutex.__data.__kind; }
};

TEST(ErrorCheckingMutex, HasTheErrorCheckingKind) {
    EXPECT_EQ(Opened<ErrorCheckingMutex>().kind(), 2);
}

TEST(ErrorCheckingMutex, RelockByTheOwnerReturnsEdeadlk) {
    ErrorCheckingMutex mutex;
    EXPECT_EQ(mutex.lock(), 0);
    EXPECT_EQ(mutex.lock(), EDEADLK);
    EXPECT_EQ(mutex.unlock(), 0);
}

TEST(ErrorCheckingMutex, UnlockOfAFreeMutexReturnsEperm) {
    ErrorCheckingMutex mutex;
    EXPECT_EQ(mutex.unlock(), EPERM);
}

TEST(ErrorCheckingMutex, UnlockByAnotherThreadReturnsEpermAndLeavesItLocked) {
    ErrorCheckingMutex mutex;
    ASSERT_EQ(mutex.lock(), 0);
    std::thread([&mutex] { EXPECT_EQ(mutex.unlock(), EPERM); }).join();
    EXPECT_EQ(mutex.lock(), EDEADLK);
    EXPECT_EQ(mutex.unlock(), 0);
}

TEST(RecursiveMutex, HasTheRecursiveKind) {
    EXPECT_EQ(Opened<RecursiveMutex>().kind(), 1);
}

TEST(RecursiveMutex, IsFreeAfterAsManyUnlocksAsLocks) {
    RecursiveMutex mutex;
    EXPECT_EQ(mutex.lock(), 0);
    EXPECT_EQ(mutex.lock(), 0);
    EXPECT_EQ(mutex.unlock(), 0);
    EXPECT_EQ(mutex.unlock(), 0);
    EXPECT_EQ(mutex.unlock(), EPERM);
}

TEST(FastErrorProneMutex, HasTheNormalKind) {
    EXPECT_EQ(Opened<FastErrorProneMutex>().kind(), 0);
}

template <typename Mutex>
class EveryMutex : public testing::Test {};

using MutexKinds = testing::Types<ErrorCheckingMutex, RecursiveMutex, FastErrorProneMutex>;
TYPED_TEST_SUITE(EveryMutex, MutexKinds);

TYPED_TEST(EveryMutex, LetsOneThreadInAtATime) {
    constexpr int Threads = 4;
    constexpr int Additions = 5000;
    TypeParam mutex;
    int sum = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i)
        threads.emplace_back([&mutex, &sum] {
            for (int addition = 0; addition < Additions; ++addition) {
                std::lock_guard lock(mutex);
                ++sum;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, Threads * Additions);
}

} // namespace

} // namespace Vostrel::libthread
