#include "libimagedecoder/InverseTransform/InverseIctFactory.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctAvx2.h"
#include "libimagedecoder/InverseTransform/InverseIctNative.h"
#include "libimagedecoder/InverseTransform/InverseIctSse2.h"
#include "libimagedecoder/KernelFactory.h"

namespace Vostrel::libimagedecoder::InverseTransform::InverseIct {

namespace {

// The portable variant reports its failure under the name of the colour conversion's; those who
// search logs know the line like that.
constexpr KernelAttempt<IInverseIct> Attempts[] = {
    {InstrSetArchExt::Avx2, "InverseIctAvx2", MakeKernel<IInverseIct, InverseIctAvx2>},
    {InstrSetArchExt::Sse2, "InverseIctSse2", MakeKernel<IInverseIct, InverseIctSse2>},
    {0, "YCbCr4xxToArgb32Native", MakeKernel<IInverseIct, InverseIctNative>},
};

} // namespace

std::shared_ptr<IInverseIct> InverseIctFactory::CreateInverseIct(ILogger* logger, bool accelerate) {
    return CreateFirstWorkingKernel(Attempts, CpuArch::GetInstrSetArchExtFlags(logger), accelerate,
                                    logger);
}

} // namespace Vostrel::libimagedecoder::InverseTransform::InverseIct
