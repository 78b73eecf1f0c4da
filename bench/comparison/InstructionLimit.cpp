#include "bench/comparison/InstructionLimit.h"

#include "bench/DecodingScene.h"
#include "libimagedecoder/CpuArch.h"

#include <cstdint>
#include <stdexcept>

namespace Vostrel::bench {

using libimagedecoder::ILogger;
using libimagedecoder::InstrSetArchExt;

namespace {

constexpr uint32_t EveryFlag = ~uint32_t{0};
uint32_t s_uiVisibleFlags = EveryFlag;

uint32_t FlagsOf(Instructions instructions) {
    switch (instructions) {
    case Instructions::Sse2:
        return InstrSetArchExt::Mmx | InstrSetArchExt::Sse | InstrSetArchExt::Sse2;
    case Instructions::None:
        return 0;
    case Instructions::All:
        break;
    }
    return EveryFlag;
}

} // namespace

const char* Suffix(Instructions instructions) {
    switch (instructions) {
    case Instructions::Sse2:
        return ", SSE2 alone";
    case Instructions::None:
        return ", portable";
    case Instructions::All:
        break;
    }
    return "";
}

InstructionLimit::InstructionLimit(Instructions instructions) {
    s_uiVisibleFlags = FlagsOf(instructions);
}

InstructionLimit::~InstructionLimit() {
    s_uiVisibleFlags = EveryFlag;
}

// The colour kernels want planes aligned to the width of their registers.
void CheckKernels(const DecodingScene& scene, Instructions instructions) {
    const unsigned alignment = scene.Renderer().GetDataAlignmentBytes();
    if ((instructions == Instructions::Sse2 && alignment != 16) ||
        (instructions == Instructions::None && alignment != 8))
        throw std::logic_error("The decoder has kernels that it should not have");
}

// The linker leads every call of CpuArch::GetInstrSetArchExtFlags from another file here: see
// --wrap in CMakeLists.txt. The names are the ones that the compiler makes of it.
uint32_t RealFlags(ILogger* logger) asm(
    "__real__ZN7Vostrel15libimagedecoder7CpuArch23GetInstrSetArchExtFlagsEPNS0_7ILoggerE");
uint32_t VisibleFlags(ILogger* logger) asm(
    "__wrap__ZN7Vostrel15libimagedecoder7CpuArch23GetInstrSetArchExtFlagsEPNS0_7ILoggerE");

uint32_t VisibleFlags(ILogger* logger) {
    return RealFlags(logger) & s_uiVisibleFlags;
}

} // namespace Vostrel::bench
