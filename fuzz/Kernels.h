#pragma once

#include "libimagedecoder/KernelLevels.h"
#include "tests/model/ModelKernelRule.h"

#include <memory>
#include <vector>

namespace Vostrel::fuzz {

/// The library's kernel levels, of which a harness takes one by its number. The numbers are the
/// same on all processors; where one lacks a level's instructions, it runs the best older kernels.
inline const std::vector<libimagedecoder::KernelLevel>& KernelLevels() {
    static const std::vector<libimagedecoder::KernelLevel> levels =
        libimagedecoder::ListKernelLevels();
    return levels;
}

inline unsigned KernelVariants() {
    return static_cast<unsigned>(KernelLevels().size());
}

inline model::KernelRule RuleOf(unsigned variant) {
    using libimagedecoder::KernelArithmetic;
    return KernelLevels()[variant].m_Arithmetic == KernelArithmetic::Portable
               ? model::KernelRule::Portable
               : model::KernelRule::Accelerated;
}

inline std::shared_ptr<libimagedecoder::InverseTransform::InverseIct::IInverseIct>
MakeTransform(unsigned variant, libimagedecoder::ILogger* logger) {
    return CreateInverseIctOf(KernelLevels()[variant], logger);
}

inline std::shared_ptr<libimagedecoder::YCbCr4xxToArgb32::IYCbCr4xxToArgb32>
MakeConverter(unsigned variant, libimagedecoder::ILogger* logger) {
    return CreateYCbCr4xxToArgb32Of(KernelLevels()[variant], logger);
}

/// The kernel of LBE's planes, by the number of its level.
inline libimagedecoder::LbePlaneKernel PlaneKernel(unsigned variant) {
    static const std::vector<libimagedecoder::LbePlaneKernel> kernels = [] {
        std::vector<libimagedecoder::LbePlaneKernel> all;
        for (const libimagedecoder::KernelLevel& level : KernelLevels())
            all.push_back(CreateLbePlaneKernelOf(level, nullptr));
        return all;
    }();
    return kernels[variant];
}

} // namespace Vostrel::fuzz
