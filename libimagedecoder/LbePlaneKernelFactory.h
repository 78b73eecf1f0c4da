#pragma once

#include "libimagedecoder/KernelFactory.h"
#include "libimagedecoder/LbePlaneKernel.h"

namespace Vostrel::libimagedecoder {

/// All variants of this family decode the same samples. Kernels are functions without state, which
/// announce nothing: what an LBE decoder logs when it is created is its threading mode alone.
class LbePlaneKernelFactory {
public:
    /// The fastest variant that this processor supports, or the portable one if accelerate is
    /// false. Never throws.
    static LbePlaneKernel CreateLbePlaneKernel(ILogger* logger, bool accelerate);

    /// The family's table.
    static KernelVariants<LbePlaneKernel> GetVariants();
};

} // namespace Vostrel::libimagedecoder
