#include "libimagedecoder/KernelFactory.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {
namespace {

using InverseTransform::InverseIct::InverseIctFactory;
using Lines = std::vector<std::string>;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

constexpr std::uint32_t Both = InstrSetArchExt::Sse2 | InstrSetArchExt::Avx2;

/// A kernel family whose members only announce themselves.
struct Kernel {
    explicit Kernel(std::string name) : m_sName(std::move(name)) {}
    std::string m_sName;
};
struct Wide : Kernel {
    explicit Wide(ILogger* logger) : Kernel("wide") { logger->Log("wide made"); }
};
struct Narrow : Kernel {
    explicit Narrow(ILogger* logger) : Kernel("narrow") { logger->Log("narrow made"); }
};
struct Plain : Kernel {
    explicit Plain(ILogger* logger) : Kernel("plain") { logger->Log("plain made"); }
};
struct ThrowsText : Kernel {
    explicit ThrowsText(ILogger*) : Kernel("") { throw std::runtime_error("no memory"); }
};
struct ThrowsNumber : Kernel {
    explicit ThrowsNumber(ILogger*) : Kernel("") { throw 5; }
};

template <typename First, typename Second, typename Third>
std::string NameOfCreated(std::uint32_t flags, bool accelerate, ILogger& logger) {
    const KernelVariant<std::shared_ptr<Kernel>> variants[] = {
        {"wide", "Wide", InstrSetArchExt::Avx2, KernelArithmetic::Accelerated,
         MakeKernel<Kernel, First>},
        {"narrow", "Narrow", InstrSetArchExt::Sse2, KernelArithmetic::Accelerated,
         MakeKernel<Kernel, Second>},
        {"plain", "Plain", 0, KernelArithmetic::Portable, MakeKernel<Kernel, Third>},
    };
    const auto kernel =
        CreateFirstWorkingKernel<std::shared_ptr<Kernel>>(variants, flags, accelerate, &logger);
    return kernel ? kernel->m_sName : "none";
}

TEST(KernelSelection, TakesTheWidestThatTheProcessorHas) {
    tests::RecordingLogger logger;
    EXPECT_EQ((NameOfCreated<Wide, Narrow, Plain>(Both, true, logger)), "wide");
    EXPECT_EQ((NameOfCreated<Wide, Narrow, Plain>(InstrSetArchExt::Avx2, true, logger)), "wide");
    EXPECT_EQ((NameOfCreated<Wide, Narrow, Plain>(InstrSetArchExt::Sse2, true, logger)), "narrow");
    EXPECT_EQ((NameOfCreated<Wide, Narrow, Plain>(0, true, logger)), "plain");
    EXPECT_EQ((NameOfCreated<Wide, Narrow, Plain>(~Both, true, logger)), "plain");
    EXPECT_EQ(logger.m_vLines,
              (Lines{"wide made", "wide made", "narrow made", "plain made", "plain made"}));
}

TEST(KernelSelection, WithoutAccelerationOnlyThePlainVariantIsMade) {
    tests::RecordingLogger logger;
    EXPECT_EQ((NameOfCreated<Wide, Narrow, Plain>(~0U, false, logger)), "plain");
    EXPECT_EQ(logger.m_vLines, Lines{"plain made"});
}

TEST(KernelSelection, FailureIsLoggedBeforeTheNextVariantIsTried) {
    tests::RecordingLogger logger;
    EXPECT_EQ((NameOfCreated<ThrowsText, Narrow, Plain>(Both, true, logger)), "narrow");
    EXPECT_EQ(logger.m_vLines, (Lines{"Creating Wide failed: 'no memory'!", "narrow made"}));
}

TEST(KernelSelection, AFailedWideVariantDoesNotGrantTheNarrowOne) {
    tests::RecordingLogger logger;
    EXPECT_EQ((NameOfCreated<ThrowsText, Narrow, Plain>(InstrSetArchExt::Avx2, true, logger)),
              "plain");
}

TEST(KernelSelection, EveryFailureIsCaughtAndTheResultEmpty) {
    tests::RecordingLogger logger;
    EXPECT_EQ((NameOfCreated<ThrowsNumber, ThrowsText, ThrowsNumber>(Both, true, logger)), "none");
    EXPECT_EQ(logger.m_vLines,
              (Lines{"Creating Wide failed!", "Creating Narrow failed: 'no memory'!",
                     "Creating Plain failed!"}));
}

enum class Throw { Text, Number };

/// Makes constructors fail: throws on as many announcements as wished, keeps every other line.
class RefusingLogger : public ILogger {
public:
    RefusingLogger(int refusals, Throw kind) : m_iRefusals(refusals), m_Kind(kind) {}

    void LogInternal(const char* message) override {
        const std::string line = message;
        if (m_iRefusals == 0 || line.find("accelerated") == std::string::npos) {
            m_vLines.push_back(line);
            return;
        }
        --m_iRefusals;
        if (m_Kind == Throw::Text)
            throw std::runtime_error("refused");
        throw 5;
    }

    Lines m_vLines;

private:
    int m_iRefusals;
    Throw m_Kind;
};

/// What the log of a family shows when the first of its eligible variants cannot be made.
Lines LogOfFailures(const Lines& names, const Lines& announcements, std::size_t failures,
                    const std::string& end) {
    Lines lines;
    for (std::size_t n = 0; n < failures; ++n)
        lines.push_back("Creating " + names[n] + " failed" + end);
    if (failures < announcements.size())
        lines.push_back(announcements[failures]);
    return lines;
}

/// Lets the variants of a family fail one after the other, from none to all, on a processor with
/// these flags. names, announcements: of its variants, the fastest first.
template <typename Kernel>
void ExpectFallbacks(KernelVariants<Kernel> table, std::uint32_t flags, const Lines& names,
                     const Lines& announcements) {
    for (std::size_t failures = 0; failures <= names.size(); ++failures) {
        for (const Throw kind : {Throw::Text, Throw::Number}) {
            RefusingLogger logger(static_cast<int>(failures), kind);
            const Kernel kernel = CreateFirstWorkingKernel(table, flags, true, &logger);
            EXPECT_EQ(kernel != nullptr, failures < names.size());
            EXPECT_EQ(logger.m_vLines, LogOfFailures(names, announcements, failures,
                                                     kind == Throw::Text ? ": 'refused'!" : "!"));
        }
    }
}

TEST(InverseIctFactory, FallsBackVariantByVariantAndLogsEachFailure) {
    ExpectFallbacks(InverseIctFactory::GetVariants(), Both,
                    {"InverseIctAvx2", "InverseIctSse2", "YCbCr4xxToArgb32Native"},
                    {"Inverse ICT is AVX2 accelerated", "Inverse ICT is SSE2 accelerated",
                     "Inverse ICT is not accelerated"});
}

TEST(YCbCr4xxToArgb32Factory, FallsBackVariantByVariantAndLogsEachFailure) {
    ExpectFallbacks(YCbCr4xxToArgb32Factory::GetVariants(), Both,
                    {"YCbCr4xxToArgb32Avx2", "YCbCr4xxToArgb32Sse2", "YCbCr4xxToArgb32Native"},
                    {"YCbCr420 to ARGB conversion is AVX2 accelerated.",
                     "YCbCr420 to ARGB conversion is SSE2 accelerated.",
                     "YCbCr420 to ARGB conversion is not accelerated."});
}

/// The variant that a processor with these flags gets from a family's table.
template <typename Kernel>
std::string ChosenVariant(KernelVariants<Kernel> table, std::uint32_t flags,
                          bool accelerate = true) {
    tests::RecordingLogger logger;
    const Kernel kernel = CreateFirstWorkingKernel(table, flags, accelerate, &logger);
    const auto row = std::ranges::find_if(
        table, [&](const auto& variant) { return variant.IsEligible(flags, accelerate); });
    EXPECT_NE(kernel, nullptr);
    return row == table.end() ? "none" : row->m_pName;
}

TEST(KernelTables, MadeUpProcessorsGetTheFastestKernelsThatTheyCanRun) {
    struct Processor {
        std::uint32_t flags;
        std::string transform;
        std::string conversion;
        std::string plane;
    };
    // SSE2; with AVX; with AVX2, whether the AVX bit is hidden or not; nothing; everything but.
    for (const Processor& processor : {Processor{0x010, "sse2", "sse2", "portable"},
                                       {0x410, "sse2", "sse2", "portable"},
                                       {0xC10, "avx2", "avx2", "portable"},
                                       {0x810, "avx2", "avx2", "portable"},
                                       {0x000, "portable", "portable", "portable"},
                                       {0x090, "sse2", "sse2", "ssse3"},
                                       {0x7D9, "sse2", "sse2", "ssse3"},
                                       {0xFD9, "avx2", "avx2", "ssse3"},
                                       {0xF49, "avx2", "avx2", "portable"},
                                       {0x749, "portable", "portable", "portable"}}) {
        SCOPED_TRACE(processor.flags);
        EXPECT_EQ(ChosenVariant(InverseIctFactory::GetVariants(), processor.flags),
                  processor.transform);
        EXPECT_EQ(ChosenVariant(YCbCr4xxToArgb32Factory::GetVariants(), processor.flags),
                  processor.conversion);
        EXPECT_EQ(ChosenVariant(LbePlaneKernelFactory::GetVariants(), processor.flags),
                  processor.plane);
    }
}

/// The extension that code needs whose name ends like this.
std::uint32_t NeedOf(const std::string& reportedName) {
    for (const auto& [suffix, flag] : {std::pair<std::string, std::uint32_t>("Avx2", 0x800),
                                       {"Ssse3", 0x080},
                                       {"Sse2", 0x010},
                                       {"Native", 0}})
        if (reportedName.ends_with(suffix))
            return flag;
    ADD_FAILURE() << "say what " << reportedName << " needs";
    return 0;
}

/// Of every processor that can be made up of the named flags.
template <typename Kernel>
void ExpectThatNoProcessorGetsMoreThanItCanRun(KernelVariants<Kernel> table) {
    for (std::uint32_t flags = 0; flags < 0x1000; ++flags)
        for (const KernelVariant<Kernel>& variant : table)
            for (const bool accelerate : {false, true})
                if (variant.IsEligible(flags, accelerate)) {
                    const std::uint32_t need = NeedOf(variant.m_pReportedName);
                    ASSERT_EQ(flags & need, need) << variant.m_pReportedName << ' ' << flags;
                }
}

TEST(KernelTables, NoProcessorGetsAKernelThatItCannotRun) {
    ExpectThatNoProcessorGetsMoreThanItCanRun(InverseIctFactory::GetVariants());
    ExpectThatNoProcessorGetsMoreThanItCanRun(YCbCr4xxToArgb32Factory::GetVariants());
    ExpectThatNoProcessorGetsMoreThanItCanRun(LbePlaneKernelFactory::GetVariants());
}

TEST(KernelTables, WithoutAccelerationEveryFamilyIsPortable) {
    constexpr std::uint32_t Everything = ~std::uint32_t{0};
    EXPECT_EQ(ChosenVariant(InverseIctFactory::GetVariants(), Everything, false), "portable");
    EXPECT_EQ(ChosenVariant(YCbCr4xxToArgb32Factory::GetVariants(), Everything, false), "portable");
    EXPECT_EQ(ChosenVariant(LbePlaneKernelFactory::GetVariants(), Everything, false), "portable");
}

TEST(LbePlaneKernelFactory, RowsHoldTheFunctionsThatTheyName) {
    tests::RecordingLogger logger;
    EXPECT_EQ(CreateFirstWorkingKernel(LbePlaneKernelFactory::GetVariants(), InstrSetArchExt::Ssse3,
                                       true, &logger),
              DecodeLbePlaneSsse3);
    EXPECT_EQ(CreateFirstWorkingKernel(LbePlaneKernelFactory::GetVariants(), 0, true, &logger),
              DecodeLbePlaneNative);
    EXPECT_EQ(LbePlaneKernelFactory::CreateLbePlaneKernel(&logger, false), DecodeLbePlaneNative);
    EXPECT_TRUE(logger.m_vLines.empty());
}

TEST(InverseIctFactory, PortableFailureIsReportedUnderTheColourConversionsName) {
    RefusingLogger withText(1, Throw::Text);
    EXPECT_EQ(InverseIctFactory::CreateInverseIct(&withText, false), nullptr);
    EXPECT_EQ(withText.m_vLines, Lines{"Creating YCbCr4xxToArgb32Native failed: 'refused'!"});

    RefusingLogger withoutText(1, Throw::Number);
    EXPECT_EQ(InverseIctFactory::CreateInverseIct(&withoutText, false), nullptr);
    EXPECT_EQ(withoutText.m_vLines, Lines{"Creating YCbCr4xxToArgb32Native failed!"});
}

TEST(InverseIctFactory, WithoutAccelerationMakesThePortableVariant) {
    tests::RecordingLogger logger;
    const auto kernel = InverseIctFactory::CreateInverseIct(&logger, false);
    EXPECT_FALSE(kernel->IsAccelerated());
    EXPECT_EQ(logger.m_vLines, Lines{"Inverse ICT is not accelerated"});
}

TEST(YCbCr4xxToArgb32Factory, WithoutAccelerationMakesThePortableVariant) {
    tests::RecordingLogger logger;
    const auto kernel = YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, false);
    EXPECT_EQ(kernel->GetDataAlignmentBytes(), 8);
    EXPECT_EQ(logger.m_vLines, Lines{"YCbCr420 to ARGB conversion is not accelerated."});
}

} // namespace
} // namespace Vostrel::libimagedecoder
