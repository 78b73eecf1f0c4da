#include "libimagedecoder/InverseTransform/InverseIctFactory.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctAccelerated.h"
#include "libimagedecoder/InverseTransform/InverseIctNative.h"

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

// The portable variant reports its failure under the name of the colour conversion's; those who
// search logs know the line like that.
constexpr KernelVariant<std::shared_ptr<IInverseIct>> Variants[] = {
    {"avx2", "InverseIctAvx2", InstrSetArchExt::Avx2, KernelArithmetic::Accelerated,
     MakeKernel<IInverseIct, InverseIctAvx2>},
    {"sse2", "InverseIctSse2", InstrSetArchExt::Sse2, KernelArithmetic::Accelerated,
     MakeKernel<IInverseIct, InverseIctSse2>},
    {"portable", "YCbCr4xxToArgb32Native", 0, KernelArithmetic::Portable,
     MakeKernel<IInverseIct, InverseIctNative>},
};

} // namespace

KernelVariants<std::shared_ptr<IInverseIct>> InverseIctFactory::GetVariants() {
    return Variants;
}

std::shared_ptr<IInverseIct> InverseIctFactory::CreateInverseIct(ILogger* logger, bool accelerate) {
    return CreateFirstWorkingKernel(GetVariants(), CpuArch::GetInstrSetArchExtFlags(logger),
                                    accelerate, logger);
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
