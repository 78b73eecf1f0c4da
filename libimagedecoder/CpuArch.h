#pragma once

#include <cstdint>

namespace Vostrel::libimagedecoder {

class ILogger;

/// Executes CPUID with EAX = leaf and ECX = subleaf and stores the four result registers.
void cpuid(unsigned int leaf, unsigned int subleaf, unsigned int& eax, unsigned int& ebx,
           unsigned int& ecx, unsigned int& edx);

/// Bits of CpuArch::GetInstrSetArchExtFlags. Avx and Avx2 mean that the operating system saves the
/// wide registers as well.
struct InstrSetArchExt {
    static constexpr std::uint32_t Mmx = 0x001;
    static constexpr std::uint32_t Sse = 0x008;
    static constexpr std::uint32_t Sse2 = 0x010;
    static constexpr std::uint32_t Sse3 = 0x040;
    static constexpr std::uint32_t Ssse3 = 0x080;
    static constexpr std::uint32_t Sse41 = 0x100;
    static constexpr std::uint32_t Sse42 = 0x200;
    static constexpr std::uint32_t Avx = 0x400;
    static constexpr std::uint32_t Avx2 = 0x800;
};

/// Instruction sets as template arguments of the kernels that are written for them.
namespace InstructionSet {

struct Sse2 {
    static constexpr const char* Name = "SSE2"; ///< in announcements
    static constexpr std::uint16_t RegisterBytes = 16;
};

struct Avx2 {
    static constexpr const char* Name = "AVX2";
    static constexpr std::uint16_t RegisterBytes = 32;
};

} // namespace InstructionSet

/// The two instructions that the detection asks, so that a test can play any processor.
class ICpuProbe {
public:
    virtual ~ICpuProbe() = default;

    /// See the free function cpuid.
    virtual void Cpuid(unsigned int leaf, unsigned int subleaf, unsigned int& eax,
                       unsigned int& ebx, unsigned int& ecx, unsigned int& edx) const = 0;

    /// The extended control register XCR0. Asked only when the processor reports OSXSAVE; the
    /// instruction faults otherwise.
    virtual std::uint64_t Xcr0() const = 0;
};

/// Finds out which instruction-set extensions the kernels may use. Reentrant; nothing is cached.
class CpuArch {
public:
    /// The InstrSetArchExt bits of the processor that runs this; 0 if it reports no basic leaf.
    /// Logs nothing.
    static std::uint32_t GetInstrSetArchExtFlags(ILogger* logger);

    /// The same rule over any source of register values.
    static std::uint32_t DetectInstrSetArchExtFlags(const ICpuProbe& probe);
};

} // namespace Vostrel::libimagedecoder
