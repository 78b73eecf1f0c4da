#include "libimagedecoder/KernelLevels.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace Vostrel::libimagedecoder {
namespace {

using InverseTransform::InverseIct::InverseIctFactory;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

template <typename Kernel>
void ExpectRowsAmongLevels(KernelVariants<Kernel> table) {
    const std::vector<KernelLevel> levels = ListKernelLevels();
    for (const KernelVariant<Kernel>& variant : table) {
        EXPECT_EQ(std::ranges::count_if(levels,
                                        [&](const KernelLevel& level) {
                                            return level.m_pName == std::string(variant.m_pName) &&
                                                   level.m_uiNeededFlags ==
                                                       variant.m_uiNeededFlags &&
                                                   level.m_Arithmetic == variant.m_Arithmetic;
                                        }),
                  1)
            << variant.m_pName;
    }
}

TEST(KernelLevels, HaveEveryVariantOfEveryFamilyOnceAndTheOldestFirst) {
    ExpectRowsAmongLevels(InverseIctFactory::GetVariants());
    ExpectRowsAmongLevels(YCbCr4xxToArgb32Factory::GetVariants());
    ExpectRowsAmongLevels(LbePlaneKernelFactory::GetVariants());
    const std::vector<KernelLevel> levels = ListKernelLevels();
    std::set<std::string> names;
    for (const KernelLevel& level : levels)
        EXPECT_TRUE(names.insert(level.m_pName).second) << level.m_pName;
    EXPECT_TRUE(std::ranges::is_sorted(levels, {}, &KernelLevel::m_uiNeededFlags));
    EXPECT_EQ(levels.front().m_pName, std::string("portable"));
}

TEST(KernelLevels, HideWhatIsNewerThanTheyAre) {
    constexpr std::uint32_t Everything = ~std::uint32_t{0};
    for (const KernelLevel& level : ListKernelLevels()) {
        const std::uint32_t visible = level.VisibleFlags(Everything);
        EXPECT_EQ(visible & level.m_uiNeededFlags, level.m_uiNeededFlags);
        EXPECT_LE(visible, 2 * level.m_uiNeededFlags);
        EXPECT_EQ(level.VisibleFlags(0), 0U);
        EXPECT_TRUE(level.CanRunOn(Everything));
        EXPECT_EQ(level.CanRunOn(0), level.m_uiNeededFlags == 0);
    }
    EXPECT_EQ((KernelLevel{"", InstrSetArchExt::Ssse3, {}}.VisibleFlags(Everything)), 0x0FFU);
}

TEST(KernelLevels, OfThisProcessorAreThoseItCanRun) {
    const std::uint32_t flags = CpuArch::GetInstrSetArchExtFlags(nullptr);
    const auto all = ListKernelLevels();
    const auto own = ListKernelLevelsOfThisProcessor();
    EXPECT_EQ(static_cast<std::ptrdiff_t>(own.size()),
              std::ranges::count_if(all, [&](const auto& level) { return level.CanRunOn(flags); }));
    for (const KernelLevel& level : own)
        EXPECT_TRUE(level.CanRunOn(flags)) << level.m_pName;
}

TEST(KernelLevels, ThePortableOneHasThePortableKernelOfEveryFamily) {
    tests::RecordingLogger logger;
    const KernelLevel portable = ListKernelLevels().front();
    EXPECT_FALSE(CreateInverseIctOf(portable, &logger)->IsAccelerated());
    EXPECT_EQ(CreateYCbCr4xxToArgb32Of(portable, &logger)->GetDataAlignmentBytes(), 8);
    EXPECT_EQ(CreateLbePlaneKernelOf(portable, &logger), DecodeLbePlaneNative);
    EXPECT_EQ(logger.m_vLines,
              (std::vector<std::string>{"Inverse ICT is not accelerated",
                                        "YCbCr420 to ARGB conversion is not accelerated."}));
}

TEST(KernelLevels, TheFastestOneHasWhatTheFactoriesChoose) {
    tests::RecordingLogger ofLevel;
    const KernelLevel fastest = ListKernelLevelsOfThisProcessor().back();
    const auto transform = CreateInverseIctOf(fastest, &ofLevel);
    const auto converter = CreateYCbCr4xxToArgb32Of(fastest, &ofLevel);
    tests::RecordingLogger ofFactories;
    InverseIctFactory::CreateInverseIct(&ofFactories, true);
    YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&ofFactories, true);
    EXPECT_EQ(ofLevel.m_vLines, ofFactories.m_vLines);
    EXPECT_EQ(CreateLbePlaneKernelOf(fastest, &ofLevel),
              LbePlaneKernelFactory::CreateLbePlaneKernel(&ofFactories, true));
}

/// Families without a kernel of the level run their best older one, of the level's arithmetic.
TEST(KernelLevels, EveryKernelOfALevelHasItsArithmetic) {
    tests::RecordingLogger logger;
    for (const KernelLevel& level : ListKernelLevelsOfThisProcessor()) {
        const bool accelerated = level.m_Arithmetic == KernelArithmetic::Accelerated;
        EXPECT_EQ(CreateInverseIctOf(level, &logger)->IsAccelerated(), accelerated);
        EXPECT_EQ(CreateYCbCr4xxToArgb32Of(level, &logger)->IsReentrant(), accelerated);
    }
}

} // namespace
} // namespace Vostrel::libimagedecoder
