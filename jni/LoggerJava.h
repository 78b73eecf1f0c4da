#pragma once

#include "libimagedecoder/ILogger.h"
#include "libjni/GlobalRef.h"

namespace Vostrel::jni {

/// Hands log lines to the method `void print(String)` of a Java object, which it keeps reachable.
///
/// ILogger stays the first base: the object's handle is used as an ILogger*.
class LoggerJava : public libimagedecoder::ILogger, private libjni::GlobalRef {
public:
    explicit LoggerJava(jobject logger) : libjni::GlobalRef(logger) {}
    LoggerJava(const LoggerJava&) = delete;
    LoggerJava& operator=(const LoggerJava&) = delete;

    /// The text is modified UTF-8. Throws std::logic_error for null. A Java object without print
    /// loses the line.
    void LogInternal(const char* text) override;
};

} // namespace Vostrel::jni
