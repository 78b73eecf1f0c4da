#pragma once

#include <cstdint>

namespace Vostrel::bench {

/// What a measurement counts, in nanoseconds.
enum class Clock {
    ThreadTime,  ///< processor time of the calling thread: other programs do not count
    ProcessTime, ///< processor time of all threads of the process
    WallTime,    ///< time that passes, for work that several cores share
};

int64_t Now(Clock clock);

/// Keeps a thread on one core. Throws std::runtime_error when the core is not there.
void PinThread(int threadId, int core);

/// The same for the calling thread, and back to any of two cores.
void PinCallingThread(int core);
void PinCallingThread(int firstCore, int secondCore);

/// Clock cycles that RunCycleChain takes on any processor of the last decade.
constexpr int CyclesInChain = 24'000;

/// A yardstick for cycles: a chain of multiplications, each of which waits 3 cycles for the one
/// before it. (A chain of additions would not do: some processors add constants for nothing when
/// they rename registers.)
void RunCycleChain();

} // namespace Vostrel::bench
