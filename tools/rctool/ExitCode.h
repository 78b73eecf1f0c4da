#pragma once

namespace Vostrel::rctool {

/// How the program ends.
enum ExitCode {
    Done = 0,
    WrongUsage = 1,
    FileFailed = 2,    ///< unreadable, unwritable, no recording, no picture
    UpdateFailed = 3,  ///< and had not failed when it was recorded
    NotVerified = 4,   ///< a checksum or a result differs
    RecordingEnds = 5, ///< amid a record: what came before it was done
    BySignal = 128,    ///< plus the number of the signal
};

} // namespace Vostrel::rctool
