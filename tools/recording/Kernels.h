#pragma once

#include "libimagedecoder/InverseTransform/IInverseIct.h"
#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"
#include "tools/recording/Recording.h"

#include <memory>

namespace Vostrel::recording {

/// The variants of the library's kernels.
enum class KernelVariant { Portable, Sse2, Avx2 };

constexpr KernelRule RuleOf(KernelVariant variant) {
    return variant == KernelVariant::Portable ? KernelRule::Portable : KernelRule::Accelerated;
}

/// The fastest variant of a rule that this processor can run.
KernelVariant FastestKernels(KernelRule rule);

/// The logger is not owned. Throws std::invalid_argument for a variant that this processor lacks.
std::shared_ptr<libimagedecoder::InverseTransform::InverseIct::IInverseIct>
MakeTransform(KernelVariant variant, libimagedecoder::ILogger* logger);
std::shared_ptr<libimagedecoder::YCbCr4xxToArgb32::IYCbCr4xxToArgb32>
MakeConverter(KernelVariant variant, libimagedecoder::ILogger* logger);

} // namespace Vostrel::recording
