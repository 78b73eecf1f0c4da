#include "tools/rctool/Interruption.h"

#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>

namespace Vostrel::rctool {
namespace {

std::atomic<int> s_iSignal;
std::atomic<int64_t> s_iNoted; ///< milliseconds of the monotonic clock
static_assert(std::atomic<int64_t>::is_always_lock_free, "A signal handler cannot wait");

/// System calls that wait are not restarted.
void Handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(signal, &action, nullptr);
}

int64_t Milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{1000} * now.tv_sec + now.tv_nsec / 1'000'000;
}

/// A signal that comes just before a system call does not interrupt it. So after the first one, a
/// timer sends signals until the program ends.
void InterruptSystemCalls() {
    constexpr timeval Often{0, 50'000};
    const itimerval timer{Often, Often};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

/// Calls nothing but system calls: a handler may come amid anything.
void OnSignal(int signal) {
    constexpr int64_t Together = 500;
    int none = 0;
    if (s_iSignal.compare_exchange_strong(none, signal)) {
        s_iNoted = Milliseconds();
        InterruptSystemCalls();
        return;
    }
    if (signal == SIGPIPE || Milliseconds() - s_iNoted <= Together)
        return;
    Handle(signal, SIG_DFL);
    raise(signal); // It comes when this handler returns.
}

} // namespace

void NoteSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        struct sigaction inherited {};
        sigaction(signal, nullptr, &inherited);
        if (inherited.sa_handler != SIG_IGN)
            Handle(signal, OnSignal);
    }
    Handle(SIGALRM, [](int) {});
}

int GetNotedSignal() {
    return s_iSignal;
}

void CheckForInterruption() {
    if (GetNotedSignal() != 0)
        throw Interrupted();
}

void SleepUntil(std::chrono::steady_clock::time_point end) {
    constexpr std::chrono::milliseconds Slice(50);
    for (auto now = std::chrono::steady_clock::now(); now < end;
         now = std::chrono::steady_clock::now()) {
        CheckForInterruption();
        std::this_thread::sleep_until(std::min(now + Slice, end));
    }
}

} // namespace Vostrel::rctool
