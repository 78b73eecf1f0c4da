#include "libimagedecoder/KernelLevels.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"

#include <algorithm>
#include <bit>

namespace Vostrel::libimagedecoder {

using InverseTransform::InverseIct::IInverseIct;
using InverseTransform::InverseIct::InverseIctFactory;
using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

namespace {

template <typename Kernel>
void AddLevels(KernelVariants<Kernel> variants, std::vector<KernelLevel>& levels) {
    for (const KernelVariant<Kernel>& variant : variants) {
        const bool known = std::ranges::any_of(levels, [&](const KernelLevel& level) {
            return level.m_uiNeededFlags == variant.m_uiNeededFlags;
        });
        if (!known)
            levels.push_back({variant.m_pName, variant.m_uiNeededFlags, variant.m_Arithmetic});
    }
}

template <typename Kernel>
Kernel CreateKernelOf(const KernelLevel& level, KernelVariants<Kernel> variants, ILogger* logger) {
    const std::uint32_t flags = level.VisibleFlags(CpuArch::GetInstrSetArchExtFlags(logger));
    return CreateFirstWorkingKernel(variants, flags, true, logger);
}

} // namespace

std::uint32_t KernelLevel::VisibleFlags(std::uint32_t processorFlags) const {
    return processorFlags & ((std::uint32_t{1} << std::bit_width(m_uiNeededFlags)) - 1);
}

bool KernelLevel::CanRunOn(std::uint32_t processorFlags) const {
    return (processorFlags & m_uiNeededFlags) == m_uiNeededFlags;
}

std::vector<KernelLevel> ListKernelLevels() {
    std::vector<KernelLevel> levels;
    AddLevels(InverseIctFactory::GetVariants(), levels);
    AddLevels(YCbCr4xxToArgb32Factory::GetVariants(), levels);
    AddLevels(LbePlaneKernelFactory::GetVariants(), levels);
    std::ranges::sort(levels, {}, &KernelLevel::m_uiNeededFlags);
    return levels;
}

std::vector<KernelLevel> ListKernelLevelsOfThisProcessor() {
    const std::uint32_t flags = CpuArch::GetInstrSetArchExtFlags(nullptr);
    std::vector<KernelLevel> levels = ListKernelLevels();
    std::erase_if(levels, [flags](const KernelLevel& level) { return !level.CanRunOn(flags); });
    return levels;
}

std::shared_ptr<IInverseIct> CreateInverseIctOf(const KernelLevel& level, ILogger* logger) {
    return CreateKernelOf(level, InverseIctFactory::GetVariants(), logger);
}

std::shared_ptr<IYCbCr4xxToArgb32> CreateYCbCr4xxToArgb32Of(const KernelLevel& level,
                                                            ILogger* logger) {
    return CreateKernelOf(level, YCbCr4xxToArgb32Factory::GetVariants(), logger);
}

LbePlaneKernel CreateLbePlaneKernelOf(const KernelLevel& level, ILogger* logger) {
    return CreateKernelOf(level, LbePlaneKernelFactory::GetVariants(), logger);
}

} // namespace Vostrel::libimagedecoder
