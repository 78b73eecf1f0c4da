#pragma once

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctAvx2.h"
#include "libimagedecoder/InverseTransform/InverseIctNative.h"
#include "libimagedecoder/InverseTransform/InverseIctSse2.h"
#include "libimagedecoder/LbePlaneKernel.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.h"
#include "tests/model/ModelKernelRule.h"

#include <memory>

namespace Vostrel::fuzz {

/// The kernel variants by number: 0 portable, 1 SSE2, 2 AVX2, or SSE2 where there is no AVX2.
constexpr unsigned KernelVariants = 3;

inline model::KernelRule RuleOf(unsigned variant) {
    return variant == 0 ? model::KernelRule::Portable : model::KernelRule::Accelerated;
}

inline bool HasAvx2() {
    using namespace libimagedecoder;
    static const bool has =
        (CpuArch::GetInstrSetArchExtFlags(nullptr) & InstrSetArchExt::Avx2) != 0;
    return has;
}

inline std::shared_ptr<libimagedecoder::InverseTransform::InverseIct::IInverseIct>
MakeTransform(unsigned variant, libimagedecoder::ILogger* logger) {
    using namespace libimagedecoder::InverseTransform::InverseIct;
    if (variant == 0)
        return std::make_shared<InverseIctNative>(logger);
    if (variant == 1 || !HasAvx2())
        return std::make_shared<InverseIctSse2>(logger);
    return std::make_shared<InverseIctAvx2>(logger);
}

inline std::shared_ptr<libimagedecoder::YCbCr4xxToArgb32::IYCbCr4xxToArgb32>
MakeConverter(unsigned variant, libimagedecoder::ILogger* logger) {
    using namespace libimagedecoder::YCbCr4xxToArgb32;
    if (variant == 0)
        return std::make_shared<YCbCr4xxToArgb32Native>(logger);
    if (variant == 1 || !HasAvx2())
        return std::make_shared<YCbCr4xxToArgb32Sse2>(logger);
    return std::make_shared<YCbCr4xxToArgb32Avx2>(logger);
}

/// The kernel of LBE's planes; there are two of them, of which an old processor has one.
inline libimagedecoder::LbePlaneKernel PlaneKernel(unsigned variant) {
    using namespace libimagedecoder;
    static const LbePlaneKernel fastest =
        ChooseLbePlaneKernel(CpuArch::GetInstrSetArchExtFlags(nullptr));
    return variant == 0 ? DecodeLbePlaneNative : fastest;
}

} // namespace Vostrel::fuzz
