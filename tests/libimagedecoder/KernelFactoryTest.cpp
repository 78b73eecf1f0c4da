#include "libimagedecoder/KernelFactory.h"

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {
namespace {

using Lines = std::vector<std::string>;

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
    const KernelAttempt<Kernel> attempts[] = {
        {InstrSetArchExt::Avx2, "Wide", MakeKernel<Kernel, First>},
        {InstrSetArchExt::Sse2, "Narrow", MakeKernel<Kernel, Second>},
        {0, "Plain", MakeKernel<Kernel, Third>},
    };
    const auto kernel = CreateFirstWorkingKernel(attempts, flags, accelerate, &logger);
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

/// What the log of a factory shows when its first failures variants cannot be made.
Lines LogOfFactory(const std::vector<std::string>& names, const Lines& announcements,
                   std::size_t failures, const std::string& end) {
    Lines lines;
    for (std::size_t n = 0; n < failures; ++n)
        lines.push_back("Creating " + names[n] + " failed" + end);
    if (failures < announcements.size())
        lines.push_back(announcements[failures]);
    return lines;
}

/// Names and announcements of the variants that this processor can run, the widest first.
struct Family {
    std::vector<std::string> names;
    Lines announcements;

    Family FromThisProcessor() const {
        const std::uint32_t flags = CpuArch::GetInstrSetArchExtFlags(nullptr);
        const std::ptrdiff_t unusable = (flags & InstrSetArchExt::Avx2) != 0   ? 0
                                        : (flags & InstrSetArchExt::Sse2) != 0 ? 1
                                                                               : 2;
        return {{names.begin() + unusable, names.end()},
                {announcements.begin() + unusable, announcements.end()}};
    }
};

const Family InverseIctFamily{{"InverseIctAvx2", "InverseIctSse2", "YCbCr4xxToArgb32Native"},
                              {"Inverse ICT is AVX2 accelerated", "Inverse ICT is SSE2 accelerated",
                               "Inverse ICT is not accelerated"}};
const Family ColourFamily{
    {"YCbCr4xxToArgb32Avx2", "YCbCr4xxToArgb32Sse2", "YCbCr4xxToArgb32Native"},
    {"YCbCr420 to ARGB conversion is AVX2 accelerated.",
     "YCbCr420 to ARGB conversion is SSE2 accelerated.",
     "YCbCr420 to ARGB conversion is not accelerated."}};

/// Lets the variants of a factory fail one after the other, from none to all.
template <typename Create>
void ExpectFallbacks(const Family& family, const Create& create) {
    const auto [names, announcements] = family.FromThisProcessor();
    for (std::size_t failures = 0; failures <= names.size(); ++failures) {
        for (const Throw kind : {Throw::Text, Throw::Number}) {
            RefusingLogger logger(static_cast<int>(failures), kind);
            const auto kernel = create(&logger, true);
            EXPECT_EQ(kernel != nullptr, failures < names.size());
            EXPECT_EQ(logger.m_vLines, LogOfFactory(names, announcements, failures,
                                                    kind == Throw::Text ? ": 'refused'!" : "!"));
        }
    }
}

TEST(InverseIctFactory, FallsBackVariantByVariantAndLogsEachFailure) {
    ExpectFallbacks(InverseIctFamily,
                    InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct);
}

TEST(YCbCr4xxToArgb32Factory, FallsBackVariantByVariantAndLogsEachFailure) {
    ExpectFallbacks(ColourFamily,
                    YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32);
}

TEST(InverseIctFactory, PortableFailureIsReportedUnderTheColourConversionsName) {
    using InverseTransform::InverseIct::InverseIctFactory;
    RefusingLogger withText(1, Throw::Text);
    EXPECT_EQ(InverseIctFactory::CreateInverseIct(&withText, false), nullptr);
    EXPECT_EQ(withText.m_vLines, Lines{"Creating YCbCr4xxToArgb32Native failed: 'refused'!"});

    RefusingLogger withoutText(1, Throw::Number);
    EXPECT_EQ(InverseIctFactory::CreateInverseIct(&withoutText, false), nullptr);
    EXPECT_EQ(withoutText.m_vLines, Lines{"Creating YCbCr4xxToArgb32Native failed!"});
}

TEST(InverseIctFactory, WithoutAccelerationMakesThePortableVariant) {
    tests::RecordingLogger logger;
    const auto kernel =
        InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct(&logger, false);
    EXPECT_FALSE(kernel->IsAccelerated());
    EXPECT_EQ(logger.m_vLines, Lines{"Inverse ICT is not accelerated"});
}

TEST(YCbCr4xxToArgb32Factory, WithoutAccelerationMakesThePortableVariant) {
    tests::RecordingLogger logger;
    const auto kernel =
        YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, false);
    EXPECT_EQ(kernel->GetDataAlignmentBytes(), 8);
    EXPECT_EQ(logger.m_vLines, Lines{"YCbCr420 to ARGB conversion is not accelerated."});
}

} // namespace
} // namespace Vostrel::libimagedecoder
