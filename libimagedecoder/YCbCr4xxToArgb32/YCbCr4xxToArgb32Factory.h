#pragma once

#include "libimagedecoder/KernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

#include <memory>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

class YCbCr4xxToArgb32Factory {
public:
    /// Creates the fastest variant that this processor supports, or the portable one if accelerate
    /// is false. Never throws: a variant that fails is logged and the next one tried. Empty only
    /// if even the portable variant failed. The kernel keeps the logger, which must outlive it.
    static std::shared_ptr<IYCbCr4xxToArgb32> CreateYCbCr4xxToArgb32(ILogger* logger,
                                                                     bool accelerate);

    /// The family's table.
    static KernelVariants<std::shared_ptr<IYCbCr4xxToArgb32>> GetVariants();
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
