#include "tools/recording/Kernels.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/InverseTransform/InverseIctAvx2.h"
#include "libimagedecoder/InverseTransform/InverseIctNative.h"
#include "libimagedecoder/InverseTransform/InverseIctSse2.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.h"

#include <stdexcept>

namespace Vostrel::recording {

using libimagedecoder::CpuArch;
using libimagedecoder::ILogger;
using libimagedecoder::InstrSetArchExt;

namespace {

bool HasAvx2() {
    return (CpuArch::GetInstrSetArchExtFlags(nullptr) & InstrSetArchExt::Avx2) != 0;
}

template <class Interface, class Portable, class Sse2, class Avx2>
std::shared_ptr<Interface> MakeKernel(KernelVariant variant, ILogger* logger) {
    switch (variant) {
    case KernelVariant::Portable:
        return std::make_shared<Portable>(logger);
    case KernelVariant::Sse2:
        return std::make_shared<Sse2>(logger);
    case KernelVariant::Avx2:
        break;
    }
    if (!HasAvx2())
        throw std::invalid_argument("This processor has no AVX2");
    return std::make_shared<Avx2>(logger);
}

} // namespace

KernelVariant FastestKernels(KernelRule rule) {
    if (rule == KernelRule::Portable)
        return KernelVariant::Portable;
    return HasAvx2() ? KernelVariant::Avx2 : KernelVariant::Sse2;
}

std::shared_ptr<libimagedecoder::InverseTransform::InverseIct::IInverseIct>
MakeTransform(KernelVariant variant, ILogger* logger) {
    using namespace libimagedecoder::InverseTransform::InverseIct;
    return MakeKernel<IInverseIct, InverseIctNative, InverseIctSse2, InverseIctAvx2>(variant,
                                                                                     logger);
}

std::shared_ptr<libimagedecoder::YCbCr4xxToArgb32::IYCbCr4xxToArgb32>
MakeConverter(KernelVariant variant, ILogger* logger) {
    using namespace libimagedecoder::YCbCr4xxToArgb32;
    return MakeKernel<IYCbCr4xxToArgb32, YCbCr4xxToArgb32Native, YCbCr4xxToArgb32Sse2,
                      YCbCr4xxToArgb32Avx2>(variant, logger);
}

} // namespace Vostrel::recording
