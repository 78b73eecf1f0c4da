#include "libimagedecoder/CpuArch.h"

#include <cstdint>

// Asks the processor only once for its features. A virtual machine traps the question, and a
// harness that creates decoders for every input would spend a fifth of its time on it.

namespace Vostrel::fuzz {

using libimagedecoder::ILogger;

// The linker leads the calls of CpuArch::GetInstrSetArchExtFlags here: see --wrap in
// CMakeLists.txt. The names are the ones that the compiler makes of it.
uint32_t RealFlags(ILogger* logger) asm(
    "__real__ZN7Vostrel15libimagedecoder7CpuArch23GetInstrSetArchExtFlagsEPNS0_7ILoggerE");
uint32_t RememberedFlags(ILogger* logger) asm(
    "__wrap__ZN7Vostrel15libimagedecoder7CpuArch23GetInstrSetArchExtFlagsEPNS0_7ILoggerE");

uint32_t RememberedFlags(ILogger* logger) {
    static const uint32_t s_uiFlags = RealFlags(logger);
    return s_uiFlags;
}

} // namespace Vostrel::fuzz
