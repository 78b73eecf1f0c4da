#include "libimagedecoder/LbePlaneKernelFactory.h"

#include "libimagedecoder/CpuArch.h"

namespace Vostrel::libimagedecoder {

namespace {

template <LbePlaneKernel Kernel>
LbePlaneKernel GetFunction(ILogger* /*logger*/) {
    return Kernel;
}

constexpr KernelVariant<LbePlaneKernel> Variants[] = {
    {"ssse3", "DecodeLbePlaneSsse3", InstrSetArchExt::Ssse3, KernelArithmetic::Accelerated,
     GetFunction<DecodeLbePlaneSsse3>},
    {"portable", "DecodeLbePlaneNative", 0, KernelArithmetic::Portable,
     GetFunction<DecodeLbePlaneNative>},
};

} // namespace

KernelVariants<LbePlaneKernel> LbePlaneKernelFactory::GetVariants() {
    return Variants;
}

LbePlaneKernel LbePlaneKernelFactory::CreateLbePlaneKernel(ILogger* logger, bool accelerate) {
    return CreateFirstWorkingKernel(GetVariants(), CpuArch::GetInstrSetArchExtFlags(logger),
                                    accelerate, logger);
}

} // namespace Vostrel::libimagedecoder
