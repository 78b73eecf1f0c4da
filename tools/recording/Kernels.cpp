#include "tools/recording/Kernels.h"

#include "libimagedecoder/CpuArch.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace Vostrel::recording {

namespace {

KernelLevel FastestKernels(KernelRule rule) {
    std::vector<KernelLevel> levels = libimagedecoder::ListKernelLevelsOfThisProcessor();
    std::erase_if(levels, [rule](const KernelLevel& level) { return RuleOf(level) != rule; });
    return levels.back();
}

} // namespace

KernelRule RuleOf(const KernelLevel& level) {
    return level.m_Arithmetic == libimagedecoder::KernelArithmetic::Portable
               ? KernelRule::Portable
               : KernelRule::Accelerated;
}

KernelLevel ChooseKernels(const std::optional<KernelLevel>& wanted, KernelRule rule) {
    if (!wanted)
        return FastestKernels(rule);
    if (!wanted->CanRunOn(libimagedecoder::CpuArch::GetInstrSetArchExtFlags(nullptr)))
        throw std::invalid_argument(std::string("This processor cannot run ") + wanted->m_pName +
                                    " kernels");
    return *wanted;
}

} // namespace Vostrel::recording
