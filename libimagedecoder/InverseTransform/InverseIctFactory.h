#pragma once

#include "libimagedecoder/InverseTransform/IInverseIct.h"
#include "libimagedecoder/KernelFactory.h"

#include <memory>

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

class InverseIctFactory {
public:
    /// Creates the fastest variant that this processor supports, or the portable one if accelerate
    /// is false. Never throws: a variant that fails is logged and the next one tried. Empty only
    /// if even the portable variant failed. The kernel keeps the logger, which must outlive it.
    static std::shared_ptr<IInverseIct> CreateInverseIct(ILogger* logger, bool accelerate);

    /// The family's table.
    static KernelVariants<std::shared_ptr<IInverseIct>> GetVariants();
};

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
