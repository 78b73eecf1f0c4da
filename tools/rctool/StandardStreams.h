#pragma once

namespace Vostrel::rctool {

/// Keeps the numbers of standard streams that are closed from the files that will be opened, whose
/// content could otherwise be mixed with messages. Call it first.
void ReserveStandardStreams();

/// Writes out what the standard output holds. Throws std::runtime_error when that fails, or when
/// anything failed before.
void FinishStandardOutput();

} // namespace Vostrel::rctool
