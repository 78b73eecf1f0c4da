#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/faults/AllocationFaults.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {
namespace {

using tests::AllocationFaults;
using Lines = std::vector<std::string>;

/// Keeps lines in memory that never runs out.
class SpareLogger : public ILogger {
public:
    void LogInternal(const char* message) override {
        const AllocationFaults::Pause pause;
        m_vLines.emplace_back(message);
    }

    Lines m_vLines;
};

/// One variant of a kernel family: what its failure is reported under, what it announces, and how
/// many allocations it takes.
struct Variant {
    std::string name;
    std::string announcement;
    size_t allocations;
};

/// The variants that this processor can run, the widest first.
std::vector<Variant> Usable(std::vector<Variant> family) {
    const std::uint32_t flags = CpuArch::GetInstrSetArchExtFlags(nullptr);
    if ((flags & InstrSetArchExt::Avx2) == 0)
        family.erase(family.begin());
    return family;
}

std::string FailureOf(const Variant& variant) {
    return "Creating " + variant.name + " failed: 'std::bad_alloc'!";
}

/// One allocation fails: the log tells which variant wanted it, and the next one is made.
template <class Create>
void ExpectFallback(const std::vector<Variant>& variants, Create create) {
    for (size_t n = 1; n <= variants.front().allocations; ++n) {
        SpareLogger logger;
        {
            const AllocationFaults faults(n);
            EXPECT_NE(create(&logger, true), nullptr);
            EXPECT_TRUE(AllocationFaults::haveStruck());
        }
        EXPECT_EQ(logger.m_vLines, (Lines{FailureOf(variants[0]), variants[1].announcement}));
        EXPECT_EQ(AllocationFaults::live(), 0u);
    }
    SpareLogger logger;
    {
        const AllocationFaults faults(variants.front().allocations + 1);
        EXPECT_NE(create(&logger, true), nullptr);
        EXPECT_FALSE(AllocationFaults::haveStruck());
    }
    EXPECT_EQ(logger.m_vLines, Lines{variants[0].announcement});
}

/// Every allocation fails: each variant is tried and reported, and the result is empty.
template <class Create>
void ExpectNothing(const std::vector<Variant>& variants, Create create) {
    SpareLogger logger;
    Lines expected;
    for (const Variant& variant : variants)
        expected.push_back(FailureOf(variant));
    {
        const AllocationFaults faults(1, AllocationFaults::Every);
        EXPECT_EQ(create(&logger, true), nullptr);
    }
    EXPECT_EQ(logger.m_vLines, expected);
    EXPECT_EQ(AllocationFaults::live(), 0u);
}

/// Without acceleration the portable variant alone is tried.
template <class Create>
void ExpectNothingPortable(const Variant& portable, Create create) {
    for (size_t n = 1; n <= portable.allocations; ++n) {
        SpareLogger logger;
        {
            const AllocationFaults faults(n);
            EXPECT_EQ(create(&logger, false), nullptr);
        }
        EXPECT_EQ(logger.m_vLines, Lines{FailureOf(portable)});
        EXPECT_EQ(AllocationFaults::live(), 0u);
    }
}

template <class Create>
void ExpectAll(const std::vector<Variant>& family, Create create) {
    ExpectFallback(Usable(family), create);
    ExpectNothing(Usable(family), create);
    ExpectNothingPortable(family.back(), create);
}

TEST(FactoryFaults, InverseIctFallsBackAndLogs) {
    ExpectAll({{"InverseIctAvx2", "Inverse ICT is AVX2 accelerated", 1},
               {"InverseIctSse2", "Inverse ICT is SSE2 accelerated", 1},
               {"YCbCr4xxToArgb32Native", "Inverse ICT is not accelerated", 2}},
              InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct);
}

TEST(FactoryFaults, ColourConversionFallsBackAndLogs) {
    ExpectAll({{"YCbCr4xxToArgb32Avx2", "YCbCr420 to ARGB conversion is AVX2 accelerated.", 1},
               {"YCbCr4xxToArgb32Sse2", "YCbCr420 to ARGB conversion is SSE2 accelerated.", 1},
               {"YCbCr4xxToArgb32Native", "YCbCr420 to ARGB conversion is not accelerated.", 1}},
              YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32);
}

} // namespace
} // namespace Vostrel::libimagedecoder
