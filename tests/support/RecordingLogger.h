#pragma once

#include "libimagedecoder/ILogger.h"

#include <string>
#include <vector>

namespace Vostrel::tests {

/// Keeps every line that the code under test logs.
class RecordingLogger : public libimagedecoder::ILogger {
public:
    void LogInternal(const char* message) override { m_vLines.emplace_back(message); }

    std::vector<std::string> m_vLines;
};

} // namespace Vostrel::tests
