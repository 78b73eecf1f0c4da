#pragma once

#include "libimagedecoder/InverseTransform/IInverseIct.h"
#include "libimagedecoder/KernelFactory.h"
#include "libimagedecoder/LbePlaneKernel.h"
#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Vostrel::libimagedecoder {

/// An instruction set that a kernel of some family is written for, or none. At such a level every
/// family has the kernel that its factory would choose if the processor had nothing newer: what
/// tools, tests and benchmarks choose from.
struct KernelLevel {
    const char* m_pName; ///< of the variants: "portable", "sse2", ...
    std::uint32_t m_uiNeededFlags;
    KernelArithmetic m_Arithmetic; ///< of the transform and the colour conversion

    /// The InstrSetArchExt bits that are left of a processor's at this level. Newer extensions have
    /// greater bits.
    std::uint32_t VisibleFlags(std::uint32_t processorFlags) const;
    bool CanRunOn(std::uint32_t processorFlags) const;
};

/// All levels of the families' tables, the oldest first.
std::vector<KernelLevel> ListKernelLevels();

/// Those that this processor can run.
std::vector<KernelLevel> ListKernelLevelsOfThisProcessor();

/// The kernels of a level, or the best older ones if this processor cannot run them.
std::shared_ptr<InverseTransform::InverseIct::IInverseIct>
CreateInverseIctOf(const KernelLevel& level, ILogger* logger);
std::shared_ptr<YCbCr4xxToArgb32::IYCbCr4xxToArgb32>
CreateYCbCr4xxToArgb32Of(const KernelLevel& level, ILogger* logger);
LbePlaneKernel CreateLbePlaneKernelOf(const KernelLevel& level, ILogger* logger);

} // namespace Vostrel::libimagedecoder
