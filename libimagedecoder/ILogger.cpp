#include "libimagedecoder/ILogger.h"

#include <cstdarg>
#include <cstdio>

namespace Vostrel::libimagedecoder {

void ILogger::Log(const char* format, ...) {
    // A buffer per call instead of a shared one: two decoders on two threads may log at once.
    char line[2048];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (length < 0)
        line[0] = '\0';
    LogInternal(line);
}

} // namespace Vostrel::libimagedecoder
