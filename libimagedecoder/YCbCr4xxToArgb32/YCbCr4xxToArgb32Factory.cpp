#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Accelerated.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

constexpr KernelVariant<std::shared_ptr<IYCbCr4xxToArgb32>> Variants[] = {
    {"avx2", "YCbCr4xxToArgb32Avx2", InstrSetArchExt::Avx2, KernelArithmetic::Accelerated,
     MakeKernel<IYCbCr4xxToArgb32, YCbCr4xxToArgb32Avx2>},
    {"sse2", "YCbCr4xxToArgb32Sse2", InstrSetArchExt::Sse2, KernelArithmetic::Accelerated,
     MakeKernel<IYCbCr4xxToArgb32, YCbCr4xxToArgb32Sse2>},
    {"portable", "YCbCr4xxToArgb32Native", 0, KernelArithmetic::Portable,
     MakeKernel<IYCbCr4xxToArgb32, YCbCr4xxToArgb32Native>},
};

} // namespace

KernelVariants<std::shared_ptr<IYCbCr4xxToArgb32>> YCbCr4xxToArgb32Factory::GetVariants() {
    return Variants;
}

std::shared_ptr<IYCbCr4xxToArgb32>
YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(ILogger* logger, bool accelerate) {
    return CreateFirstWorkingKernel(GetVariants(), CpuArch::GetInstrSetArchExtFlags(logger),
                                    accelerate, logger);
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
