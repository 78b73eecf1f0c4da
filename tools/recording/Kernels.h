#pragma once

#include "libimagedecoder/KernelLevels.h"
#include "tools/recording/Recording.h"

#include <optional>

namespace Vostrel::recording {

using libimagedecoder::KernelLevel;

KernelRule RuleOf(const KernelLevel& level);

/// The level that is wanted, or else the fastest of a rule that this processor can run. Throws
/// std::invalid_argument for a level that it cannot run.
KernelLevel ChooseKernels(const std::optional<KernelLevel>& wanted, KernelRule rule);

} // namespace Vostrel::recording
