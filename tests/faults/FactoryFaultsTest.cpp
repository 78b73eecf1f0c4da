#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/faults/AllocationFaults.h"
#include "tests/libimagedecoder/KernelTables.h"

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

/// The variants that this processor can run, the fastest first. start, end: of announcements.
/// portableAllocations: all others take one.
template <typename Kernel>
std::vector<Variant> Usable(KernelVariants<Kernel> table, const std::string& start,
                            const std::string& end, size_t portableAllocations) {
    std::vector<Variant> variants;
    for (const KernelVariant<Kernel>& row : RunnableVariants(table))
        variants.insert(variants.begin(), {row.m_pReportedName, start + AnnouncedName(row) + end,
                                           IsPortable(row) ? portableAllocations : 1});
    return variants;
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
void ExpectAll(const std::vector<Variant>& variants, Create create) {
    ExpectFallback(variants, create);
    ExpectNothing(variants, create);
    ExpectNothingPortable(variants.back(), create);
}

TEST(FactoryFaults, InverseIctFallsBackAndLogs) {
    using InverseTransform::InverseIct::InverseIctFactory;
    ExpectAll(Usable(InverseIctFactory::GetVariants(), "Inverse ICT is ", " accelerated", 2),
              InverseIctFactory::CreateInverseIct);
}

TEST(FactoryFaults, ColourConversionFallsBackAndLogs) {
    using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;
    ExpectAll(Usable(YCbCr4xxToArgb32Factory::GetVariants(), "YCbCr420 to ARGB conversion is ",
                     " accelerated.", 1),
              YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32);
}

} // namespace
} // namespace Vostrel::libimagedecoder
