#pragma once

#include "libimagedecoder/ILogger.h"

#include <pthread.h>

#include "fuzz/FuzzCheck.h"

namespace Vostrel::fuzz {

/// Drops every line, and insists on hearing them on the thread that made it.
class SilentLogger : public libimagedecoder::ILogger {
public:
    void LogInternal(const char*) override {
        Check(pthread_equal(m_Owner, pthread_self()) != 0, "a worker logs");
    }

private:
    pthread_t m_Owner = pthread_self();
};

} // namespace Vostrel::fuzz
