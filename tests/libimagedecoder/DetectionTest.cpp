#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

namespace Vostrel::libimagedecoder {

// The linker leads the calls of CpuArch::GetInstrSetArchExtFlags here: see --wrap in
// CMakeLists.txt. The names are the ones that the compiler makes of it.
uint32_t RealFlags(ILogger* logger) asm(
    "__real__ZN7Vostrel15libimagedecoder7CpuArch23GetInstrSetArchExtFlagsEPNS0_7ILoggerE");
uint32_t CountedFlags(ILogger* logger) asm(
    "__wrap__ZN7Vostrel15libimagedecoder7CpuArch23GetInstrSetArchExtFlagsEPNS0_7ILoggerE");

static int s_iDetections = 0;

uint32_t CountedFlags(ILogger* logger) {
    ++s_iDetections;
    return RealFlags(logger);
}

namespace {

TEST(Detection, IsMadeAfreshForEveryKernel) {
    tests::RecordingLogger logger;
    for (const bool accelerate : {true, false, true}) {
        s_iDetections = 0;
        InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct(&logger, accelerate);
        EXPECT_EQ(s_iDetections, 1);
        YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, accelerate);
        EXPECT_EQ(s_iDetections, 2);
        LbePlaneKernelFactory::CreateLbePlaneKernel(&logger, accelerate);
        EXPECT_EQ(s_iDetections, 3);
    }
}

} // namespace
} // namespace Vostrel::libimagedecoder
