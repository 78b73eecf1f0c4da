#pragma once

#include <chrono>
#include <exception>

/// How signals end the program: a handler notes them, long loops ask, and destructors clean up.
namespace Vostrel::rctool {

/// That the program is to end.
class Interrupted : public std::exception {
public:
    const char* what() const noexcept override { return "Interrupted"; }
};

/// From now on INT, TERM, HUP and PIPE are noted, unless the parent had them ignored. System calls
/// that wait then fail with EINTR. A second INT, TERM or HUP that comes more than half a second
/// later ends the program at once; some programs send two in a row.
void NoteSignals();

/// The signal that is to end the program; 0 without one.
int GetNotedSignal();

/// Throws Interrupted once a signal was noted. Call it once for every piece of work that takes up
/// to a tenth of a second.
void CheckForInterruption();

/// Waits, and throws Interrupted within a tenth of a second after a signal.
void SleepUntil(std::chrono::steady_clock::time_point end);

} // namespace Vostrel::rctool
