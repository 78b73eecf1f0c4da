#include "libthread/Thread.h"
#include "libthread/JoinableThread.h"
#include "tests/libthread/SystemCalls.h"

#include <array>
#include <cerrno>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/prctl.h>

namespace Vostrel::libthread {

namespace {

using tests::SystemCalls;

std::string currentThreadName() {
    std::array<char, 16> name{};
    prctl(PR_GET_NAME, name.data());
    return name.data();
}

TEST(Thread, RunsACopyOfItsBody) {
    int runs = 0;
    std::function<void()> body = [&runs] { ++runs; };
    Thread thread(body, "worker", true);
    body = nullptr;
    EXPECT_EQ(thread.start(), 0);
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(runs, 1);
}

TEST(Thread, DoesNotRunBeforeStart) {
    int runs = 0;
    const std::function<void()> body = [&runs] { ++runs; };
    { Thread thread(body, "worker", true); }
    EXPECT_EQ(runs, 0);
}

TEST(Thread, CanBeStartedAgainAfterJoin) {
    int runs = 0;
    const std::function<void()> body = [&runs] { ++runs; };
    Thread thread(body, "worker", true);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(thread.start(), 0);
        EXPECT_EQ(thread.join(), 0);
    }
    EXPECT_EQ(runs, 2);
}

TEST(Thread, JoinBeforeStartReturnsZeroWithoutJoining) {
    SystemCalls calls;
    JoinableThread thread([] {}, "worker");
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(calls.m_joins, 0U);
}

TEST(Thread, SecondJoinReturnsZeroWithoutJoining) {
    SystemCalls calls;
    JoinableThread thread([] {}, "worker");
    ASSERT_EQ(thread.start(), 0);
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(calls.m_joins, 1U);
}

TEST(Thread, JoinReturnsTheCodeOfTheSystemAndTheThreadCountsAsJoined) {
    static std::promise<void> s_end; // Outlives the thread, which nobody joins.
    static Thread s_thread([] { s_end.get_future().wait(); }, "detached", false);
    ASSERT_EQ(s_thread.start(), 0);
    EXPECT_EQ(s_thread.join(), EINVAL) << "a detached thread cannot be joined";
    EXPECT_EQ(s_thread.join(), 0);
    s_end.set_value();
}

TEST(Thread, NameIsCutTo63CharactersInTheStartBlockAndTo15ByTheKernel) {
    SystemCalls calls;
    const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    const std::string name = (letters + letters).substr(0, 70);
    std::string nameInKernel;
    JoinableThread thread([&nameInKernel] { nameInKernel = currentThreadName(); }, name);
    ASSERT_EQ(thread.start(), 0);
    ASSERT_EQ(thread.join(), 0);
    EXPECT_EQ(std::string(calls.m_lastThreadName.data()), name.substr(0, 63));
    EXPECT_EQ(nameInKernel, "abcdefghijklmno");
}

TEST(Thread, PercentSignsInTheNameAreKept) {
    std::string nameInKernel;
    JoinableThread thread([&nameInKernel] { nameInKernel = currentThreadName(); }, "100%s %n");
    ASSERT_EQ(thread.start(), 0);
    ASSERT_EQ(thread.join(), 0);
    EXPECT_EQ(nameInKernel, "100%s %n");
}

TEST(Thread, JoinableThreadHasOneMebibyteOfStackAndIsNotDetached) {
    SystemCalls calls;
    const std::shared_ptr<Thread> thread(new JoinableThread([] {}, "worker"));
    ASSERT_EQ(thread->start(), 0);
    ASSERT_EQ(thread->join(), 0);
    EXPECT_EQ(calls.m_lastStackSize, std::size_t{1} << 20);
    EXPECT_EQ(calls.m_lastDetachState, PTHREAD_CREATE_JOINABLE);
}

TEST(Thread, ThreadThatIsNotJoinableRunsDetached) {
    static std::promise<int> s_detachState; // Outlives the thread, which nobody joins.
    static Thread s_thread(
        [] {
            pthread_attr_t attributes;
            int state = -1;
            if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
                pthread_attr_getdetachstate(&attributes, &state);
                pthread_attr_destroy(&attributes);
            }
            s_detachState.set_value(state);
        },
        "detached", false);
    ASSERT_EQ(s_thread.start(), 0);
    EXPECT_EQ(s_detachState.get_future().get(), PTHREAD_CREATE_DETACHED);
}

TEST(Thread, EntryRunsTheBodyAndReturnsNull) {
    int runs = 0;
    JoinableThread thread([&runs] { ++runs; }, "worker");
    EXPECT_EQ(Thread::thread_start(&thread), nullptr);
    EXPECT_EQ(runs, 1);
}

TEST(Thread, EntryThrowsOnAnEmptyBody) {
    JoinableThread thread(nullptr, "worker");
    EXPECT_THROW(Thread::thread_start(&thread), std::bad_function_call);
}

/// Expects that start() hands on `code`, leaves it in errno, and does not count as started.
void expectStartFails(bool joinable, int code) {
    Thread thread([] { ADD_FAILURE() << "the body ran"; }, "worker", joinable);
    errno = 0;
    const int returned = thread.start();
    const int left = errno;
    EXPECT_EQ(returned, code);
    EXPECT_EQ(left, code);
    EXPECT_EQ(thread.join(), 0);
}

TEST(ThreadStartFailure, CreateCodeIsReturnedAndTheStartBlockFreed) {
    SystemCalls calls;
    calls.m_createCode = EAGAIN;
    expectStartFails(true, EAGAIN);
    EXPECT_NE(calls.m_lastBlock, nullptr);
    EXPECT_TRUE(calls.m_lastBlockFreed);
    EXPECT_EQ(calls.m_joins, 0U);
}

TEST(ThreadStartFailure, AttributeInitialisationCodeIsReturned) {
    SystemCalls calls;
    calls.m_attrInitCode = ENOMEM;
    expectStartFails(true, ENOMEM);
    EXPECT_EQ(calls.m_lastBlock, nullptr);
}

TEST(ThreadStartFailure, DetachStateCodeIsReturned) {
    SystemCalls calls;
    calls.m_setDetachStateCode = EINVAL;
    expectStartFails(false, EINVAL);
    EXPECT_EQ(calls.m_lastBlock, nullptr);
}

TEST(ThreadStartFailure, DetachStateIsNotSetForAJoinableThread) {
    SystemCalls calls;
    calls.m_setDetachStateCode = EINVAL;
    JoinableThread thread([] {}, "worker");
    EXPECT_EQ(thread.start(), 0);
    EXPECT_EQ(thread.join(), 0);
}

TEST(ThreadStartFailure, StackSizeCodeIsReturned) {
    SystemCalls calls;
    calls.m_setStackSizeCode = EINVAL;
    expectStartFails(true, EINVAL);
    EXPECT_EQ(calls.m_lastBlock, nullptr);
}

TEST(ThreadStartFailure, ExhaustedMemoryReturnsEnomem) {
    SystemCalls calls;
    calls.m_mallocFails = true;
    JoinableThread thread([] {}, "worker");
    const int code = thread.start();
    calls.m_mallocFails = false;
    EXPECT_EQ(code, ENOMEM);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(calls.m_creates, 0U);
}

TEST(ThreadStartFailure, ThreadCanBeStartedLater) {
    SystemCalls calls;
    int runs = 0;
    JoinableThread thread([&runs] { ++runs; }, "worker");
    calls.m_createCode = EAGAIN;
    EXPECT_EQ(thread.start(), EAGAIN);
    calls.m_createCode = 0;
    EXPECT_EQ(thread.start(), 0);
    EXPECT_EQ(thread.join(), 0);
    EXPECT_EQ(runs, 1);
}

} // namespace

} // namespace Vostrel::libthread
