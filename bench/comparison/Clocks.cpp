#include "bench/comparison/Clocks.h"

#include <ctime>
#include <initializer_list>
#include <sched.h>
#include <stdexcept>
#include <string>

namespace Vostrel::bench {

namespace {

void Pin(int threadId, std::initializer_list<int> cores) {
    cpu_set_t set;
    CPU_ZERO(&set);
    for (const int core : cores)
        CPU_SET(static_cast<size_t>(core), &set);
    if (sched_setaffinity(threadId, sizeof set, &set) != 0)
        throw std::runtime_error("Cannot pin to core " + std::to_string(*cores.begin()));
}

clockid_t IdOf(Clock clock) {
    switch (clock) {
    case Clock::ProcessTime:
        return CLOCK_PROCESS_CPUTIME_ID;
    case Clock::WallTime:
        return CLOCK_MONOTONIC;
    case Clock::ThreadTime:
        break;
    }
    return CLOCK_THREAD_CPUTIME_ID;
}

} // namespace

int64_t Now(Clock clock) {
    timespec time{};
    clock_gettime(IdOf(clock), &time);
    return int64_t{1'000'000'000} * time.tv_sec + time.tv_nsec;
}

void PinThread(int threadId, int core) {
    Pin(threadId, {core});
}

void PinCallingThread(int core) {
    Pin(0, {core});
}

void PinCallingThread(int firstCore, int secondCore) {
    Pin(0, {firstCore, secondCore});
}

void RunCycleChain() {
    constexpr int Multiplications = 8;
    constexpr int CyclesOfEach = 3;
    uint64_t value = 3;
    for (int cycles = 0; cycles < CyclesInChain; cycles += Multiplications * CyclesOfEach) {
        asm volatile("imul %0, %0\n\timul %0, %0\n\timul %0, %0\n\timul %0, %0\n\t"
                     "imul %0, %0\n\timul %0, %0\n\timul %0, %0\n\timul %0, %0"
                     : "+r"(value));
    }
}

} // namespace Vostrel::bench
