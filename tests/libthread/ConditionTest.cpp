#include "libthread/Condition.h"
#include "tests/libthread/SystemCalls.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

namespace Vostrel::libthread {

namespace {

void expectDeadline(const timespec& deadline, long seconds, long nanoseconds) {
    EXPECT_EQ(deadline.tv_sec, seconds);
    EXPECT_EQ(deadline.tv_nsec, nanoseconds);
}

timespec monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

bool isBefore(const timespec& left, const timespec& right) {
    return left.tv_sec != right.tv_sec ? left.tv_sec < right.tv_sec : left.tv_nsec < right.tv_nsec;
}

TEST(ConditionDeadline, AddsSecondsAndNanoseconds) {
    expectDeadline(Condition::deadlineAfter({7, 100}, 3, 999'999'899), 10, 999'999'999);
}

TEST(ConditionDeadline, SumOfExactlyOneSecondIsNotCarried) {
    expectDeadline(Condition::deadlineAfter({5, 1}, 0, 999'999'999), 5, 1'000'000'000);
}

TEST(ConditionDeadline, SumOneAboveASecondIsCarried) {
    expectDeadline(Condition::deadlineAfter({5, 2}, 0, 999'999'999), 6, 1);
}

TEST(ConditionDeadline, OneAndAHalfSecondsOfNanosecondsAreCarried) {
    expectDeadline(Condition::deadlineAfter({5, 0}, 0, 1'500'000'000), 6, 500'000'000);
    expectDeadline(Condition::deadlineAfter({5, 600'000'000}, 1, 1'500'000'000), 8, 100'000'000);
}

TEST(ConditionDeadline, WholeSecondsOfNanosecondsLeaveNoRemainder) {
    expectDeadline(Condition::deadlineAfter({5, 0}, 0, 3'000'000'000), 8, 0);
}

TEST(ConditionDeadline, NanosecondsBeyondTheSignedRangeTurnNegative) {
    constexpr unsigned long Most = std::numeric_limits<unsigned long>::max();
    expectDeadline(Condition::deadlineAfter({5, 0}, 0, Most), 5, -1);
}

TEST(ConditionTimedwait, ExactlyOneSecondOfNanosecondsReturnsEinval) {
    tests::SystemCalls calls;
    calls.m_now = timespec{5, 1};
    Condition condition;
    ErrorCheckingMutex mutex;
    std::lock_guard lock(mutex);
    EXPECT_EQ(condition.timedwait(mutex, 0, 999'999'999), EINVAL);
}

TEST(ConditionTimedwait, RelativeWaitEndsAfterItsTime) {
    Condition condition;
    ErrorCheckingMutex mutex;
    std::lock_guard lock(mutex);
    const timespec deadline = Condition::deadlineAfter(monotonicNow(), 0, 10'000'000);
    int code = 0;
    while (code == 0)
        code = condition.timedwait(mutex, 0, 10'000'000);
    EXPECT_EQ(code, ETIMEDOUT);
    EXPECT_FALSE(isBefore(monotonicNow(), deadline));
}

TEST(ConditionTimedwait, AbsoluteTimeIsOnTheMonotonicClock) {
    Condition condition;
    ErrorCheckingMutex mutex;
    std::lock_guard lock(mutex);
    const timespec deadline = Condition::deadlineAfter(monotonicNow(), 0, 20'000'000);
    int code = 0;
    while (code == 0)
        code = condition.timedwait(mutex, deadline);
    EXPECT_EQ(code, ETIMEDOUT);
    EXPECT_FALSE(isBefore(monotonicNow(), deadline));
}

class WaitingThreads {
public:
    explicit WaitingThreads(int count) {
        for (int i = 0; i < count; ++i)
            m_threads.emplace_back([this] { waitForTicket(); });
    }

    ~WaitingThreads() {
        for (std::thread& thread : m_threads)
            thread.join();
    }

    Condition m_condition;
    ErrorCheckingMutex m_mutex;
    int m_tickets = 0;

private:
    void waitForTicket() {
        std::lock_guard lock(m_mutex);
        while (m_tickets == 0)
            EXPECT_EQ(m_condition.wait(m_mutex), 0);
        --m_tickets;
    }

    std::vector<std::thread> m_threads;
};

TEST(Condition, SignalWakesAWaiter) {
    WaitingThreads waiting(1);
    std::lock_guard lock(waiting.m_mutex);
    waiting.m_tickets = 1;
    EXPECT_EQ(waiting.m_condition.signal(), 0);
}

TEST(Condition, BroadcastWakesEveryWaiter) {
    WaitingThreads waiting(3);
    std::lock_guard lock(waiting.m_mutex);
    waiting.m_tickets = 3;
    EXPECT_EQ(waiting.m_condition.broadcast(), 0);
}

TEST(Condition, WaitHoldsTheMutexAgainWhenItReturns) {
    Condition condition;
    ErrorCheckingMutex mutex;
    ASSERT_EQ(mutex.lock(), 0);
    const timespec past{0, 0};
    EXPECT_EQ(condition.timedwait(mutex, past), ETIMEDOUT);
    EXPECT_EQ(mutex.lock(), EDEADLK);
    EXPECT_EQ(mutex.unlock(), 0);
}

} // namespace

} // namespace Vostrel::libthread
