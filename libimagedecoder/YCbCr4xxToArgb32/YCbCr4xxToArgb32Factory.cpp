#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/KernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Avx2.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Sse2.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

using Kernel = IYCbCr4xxToArgb32;

constexpr KernelAttempt<Kernel> Attempts[] = {
    {InstrSetArchExt::Avx2, "YCbCr4xxToArgb32Avx2", MakeKernel<Kernel, YCbCr4xxToArgb32Avx2>},
    {InstrSetArchExt::Sse2, "YCbCr4xxToArgb32Sse2", MakeKernel<Kernel, YCbCr4xxToArgb32Sse2>},
    {0, "YCbCr4xxToArgb32Native", MakeKernel<Kernel, YCbCr4xxToArgb32Native>},
};

} // namespace

std::shared_ptr<IYCbCr4xxToArgb32>
YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(ILogger* logger, bool accelerate) {
    return CreateFirstWorkingKernel(Attempts, CpuArch::GetInstrSetArchExtFlags(logger), accelerate,
                                    logger);
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
