#pragma once

namespace Vostrel::libimagedecoder {

/// Sink of the library's diagnostic lines.
///
/// Thread safety: none is needed. Only the thread that drives a decoder logs; pool workers never
/// do.
class ILogger {
public:
    virtual ~ILogger() = default;

    /// Receives one finished, NUL-terminated line of at most 2047 characters. The pointer is valid
    /// for the duration of the call only.
    virtual void LogInternal(const char* message) = 0;

    /// Formats like printf and hands the line, cut to 2047 characters, to LogInternal once.
    void Log(const char* format, ...) __attribute__((format(printf, 2, 3)));
};

} // namespace Vostrel::libimagedecoder
