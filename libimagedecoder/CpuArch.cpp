#include "libimagedecoder/CpuArch.h"

#include <cpuid.h>

namespace Vostrel::libimagedecoder {

void cpuid(unsigned int leaf, unsigned int subleaf, unsigned int& eax, unsigned int& ebx,
           unsigned int& ecx, unsigned int& edx) {
    __cpuid_count(leaf, subleaf, eax, ebx, ecx, edx);
}

namespace {

class HardwareProbe final : public ICpuProbe {
public:
    void Cpuid(unsigned int leaf, unsigned int subleaf, unsigned int& eax, unsigned int& ebx,
               unsigned int& ecx, unsigned int& edx) const override {
        cpuid(leaf, subleaf, eax, ebx, ecx, edx);
    }

    // Inline assembly: the intrinsic would want -mxsave for the whole file.
    std::uint64_t Xcr0() const override {
        std::uint32_t low = 0;
        std::uint32_t high = 0;
        __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        return (std::uint64_t{high} << 32) | low;
    }
};

struct Registers {
    unsigned int eax = 0;
    unsigned int ebx = 0;
    unsigned int ecx = 0;
    unsigned int edx = 0;
};

Registers AskLeaf(const ICpuProbe& probe, unsigned int leaf) {
    Registers registers;
    probe.Cpuid(leaf, 0, registers.eax, registers.ebx, registers.ecx, registers.edx);
    return registers;
}

constexpr bool HasBit(unsigned int value, unsigned int bit) {
    return ((value >> bit) & 1) != 0;
}

constexpr std::uint32_t FlagIf(bool present, std::uint32_t flag) {
    return present ? flag : 0;
}

// The extensions up to SSE4.2 need nothing of the operating system that x86-64 does not imply.
std::uint32_t NarrowFlags(const Registers& leaf1) {
    return FlagIf(HasBit(leaf1.edx, 23), InstrSetArchExt::Mmx) |
           FlagIf(HasBit(leaf1.edx, 25), InstrSetArchExt::Sse) |
           FlagIf(HasBit(leaf1.edx, 26), InstrSetArchExt::Sse2) |
           FlagIf(HasBit(leaf1.ecx, 0), InstrSetArchExt::Sse3) |
           FlagIf(HasBit(leaf1.ecx, 9), InstrSetArchExt::Ssse3) |
           FlagIf(HasBit(leaf1.ecx, 19), InstrSetArchExt::Sse41) |
           FlagIf(HasBit(leaf1.ecx, 20), InstrSetArchExt::Sse42);
}

// XCR0 bit 1 is the SSE state and bit 2 the upper halves of the AVX registers.
bool SystemSavesWideRegisters(const ICpuProbe& probe, const Registers& leaf1) {
    constexpr unsigned int OsXsaveBit = 27;
    constexpr std::uint64_t SseAndAvxState = 0x6;
    return HasBit(leaf1.ecx, OsXsaveBit) && (probe.Xcr0() & SseAndAvxState) == SseAndAvxState;
}

} // namespace

std::uint32_t CpuArch::GetInstrSetArchExtFlags(ILogger* /*logger*/) {
    return DetectInstrSetArchExtFlags(HardwareProbe());
}

std::uint32_t CpuArch::DetectInstrSetArchExtFlags(const ICpuProbe& probe) {
    const unsigned int highestLeaf = AskLeaf(probe, 0).eax;
    if (highestLeaf == 0)
        return 0;

    const Registers leaf1 = AskLeaf(probe, 1);
    const bool wide = SystemSavesWideRegisters(probe, leaf1);
    std::uint32_t flags = NarrowFlags(leaf1);
    flags |= FlagIf(wide && HasBit(leaf1.ecx, 28), InstrSetArchExt::Avx);

    // AVX2 goes by its own bit alone: hypervisors exist that hide the AVX bit of leaf 1.
    if (highestLeaf >= 7)
        flags |= FlagIf(wide && HasBit(AskLeaf(probe, 7).ebx, 5), InstrSetArchExt::Avx2);
    return flags;
}

} // namespace Vostrel::libimagedecoder
