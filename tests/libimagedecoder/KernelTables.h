#pragma once

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/KernelFactory.h"
#include "tests/model/ModelKernelRule.h"

#include <algorithm>
#include <cctype>
#include <ostream>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

/// The rows of a family's table that this processor can run, the portable one first.
template <typename Kernel>
std::vector<KernelVariant<Kernel>> RunnableVariants(KernelVariants<Kernel> table) {
    const std::uint32_t flags = CpuArch::GetInstrSetArchExtFlags(nullptr);
    std::vector<KernelVariant<Kernel>> variants;
    std::copy_if(table.rbegin(), table.rend(), std::back_inserter(variants),
                 [flags](const auto& variant) { return variant.IsEligible(flags, true); });
    return variants;
}

template <typename Kernel>
bool IsPortable(const KernelVariant<Kernel>& variant) {
    return variant.m_Arithmetic == KernelArithmetic::Portable;
}

template <typename Kernel>
model::KernelRule RuleOf(const KernelVariant<Kernel>& variant) {
    return IsPortable(variant) ? model::KernelRule::Portable : model::KernelRule::Accelerated;
}

/// "not", or the instruction set as announcements write it.
template <typename Kernel>
std::string AnnouncedName(const KernelVariant<Kernel>& variant) {
    std::string name = IsPortable(variant) ? "not" : variant.m_pName;
    if (!IsPortable(variant))
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
    return name;
}

/// Bytes: the width of the variant's registers, of which no plane needs more than 32.
template <typename Kernel>
int ExpectedAlignment(const KernelVariant<Kernel>& variant) {
    return IsPortable(variant) ? 8 : variant.m_uiNeededFlags == InstrSetArchExt::Sse2 ? 16 : 32;
}

/// Names the instances of tests that have a variant as parameter.
inline const auto VariantTestName = [](const auto& test) {
    return std::string(test.param.m_pName);
};

template <typename Kernel>
void PrintTo(const KernelVariant<Kernel>& variant, std::ostream* out) {
    *out << variant.m_pName;
}

} // namespace Vostrel::libimagedecoder
