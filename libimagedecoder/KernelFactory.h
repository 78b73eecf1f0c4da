#pragma once

#include "libimagedecoder/ILogger.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <span>

namespace Vostrel::libimagedecoder {

/// The arithmetic of a kernel. Portable and accelerated transforms differ for coefficients whose
/// sums leave 16 bits, and colour conversions by a unit or two in a channel.
enum class KernelArithmetic { Portable, Accelerated };

/// A row of a kernel family's table. Kernel is what the family's users hold: a shared pointer to an
/// interface, or a pointer to a function. Null means that there is none.
template <typename Kernel>
struct KernelVariant {
    const char* m_pName;           ///< Lower case; the same in all families for the same flags.
    const char* m_pReportedName;   ///< In the messages of failures.
    std::uint32_t m_uiNeededFlags; ///< InstrSetArchExt bits; 0 for the portable variant.
    KernelArithmetic m_Arithmetic;
    Kernel (*m_pMake)(ILogger*); ///< May throw anything.

    /// Whether a processor with these InstrSetArchExt bits may get this variant. Without accelerate
    /// only portable arithmetic counts.
    constexpr bool IsEligible(std::uint32_t processorFlags, bool accelerate) const {
        return (processorFlags & m_uiNeededFlags) == m_uiNeededFlags &&
               (accelerate || m_Arithmetic == KernelArithmetic::Portable);
    }
};

/// All variants of a kernel family in the order of preference.
template <typename Kernel>
using KernelVariants = std::span<const KernelVariant<Kernel>>;

/// Maker of a variant that is a class: object and reference count in one allocation.
template <typename Interface, typename Variant>
std::shared_ptr<Interface> MakeKernel(ILogger* logger) {
    return std::make_shared<Variant>(logger);
}

/// Logs from a handler. A logger that fails in its turn, without memory say, must not end the
/// search for a variant.
template <typename Write>
void LogQuietly(Write write) {
    try {
        write();
    } catch (...) {
        return;
    }
}

/// Makes one variant. A failure is logged and gives null.
template <typename Kernel>
Kernel TryToMakeKernel(const KernelVariant<Kernel>& variant, ILogger* logger) {
    try {
        return variant.m_pMake(logger);
    } catch (const std::exception& exception) {
        LogQuietly([&] {
            logger->Log("Creating %s failed: '%s'!", variant.m_pReportedName, exception.what());
        });
    } catch (...) {
        LogQuietly([&] { logger->Log("Creating %s failed!", variant.m_pReportedName); });
    }
    return nullptr;
}

/// The selection rule of all kernel families: the first eligible variant, in the order of the
/// table, whose construction succeeds. Returns null if none could be created.
template <typename Kernel>
Kernel CreateFirstWorkingKernel(KernelVariants<Kernel> variants, std::uint32_t processorFlags,
                                bool accelerate, ILogger* logger) {
    for (const KernelVariant<Kernel>& variant : variants) {
        if (!variant.IsEligible(processorFlags, accelerate))
            continue;
        if (Kernel kernel = TryToMakeKernel(variant, logger))
            return kernel;
    }
    return nullptr;
}

} // namespace Vostrel::libimagedecoder
