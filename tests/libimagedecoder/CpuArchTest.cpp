#include "libimagedecoder/CpuArch.h"
#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>
#include <vector>

namespace Vostrel::libimagedecoder {
namespace {

constexpr unsigned int Avx1Bit = 1U << 28;    // leaf 1 ECX
constexpr unsigned int OsXsaveBit = 1U << 27; // leaf 1 ECX
constexpr unsigned int Avx2Bit = 1U << 5;     // leaf 7 EBX
constexpr unsigned int Sse2Bit = 1U << 26;    // leaf 1 EDX
constexpr std::uint64_t SseState = 2;
constexpr std::uint64_t AvxState = 4;

/// A processor made up by a test. Registers that the detection has no business with are all ones.
class PretendedProcessor : public ICpuProbe {
public:
    void Cpuid(unsigned int leaf, unsigned int subleaf, unsigned int& eax, unsigned int& ebx,
               unsigned int& ecx, unsigned int& edx) const override {
        EXPECT_EQ(subleaf, 0U);
        m_vAskedLeaves.push_back(leaf);
        eax = leaf == 0 ? m_uiHighestLeaf : ~0U;
        ebx = leaf == 7 ? m_uiLeaf7Ebx : ~0U;
        ecx = leaf == 1 ? m_uiLeaf1Ecx : ~0U;
        edx = leaf == 1 ? m_uiLeaf1Edx : ~0U;
    }
    std::uint64_t Xcr0() const override {
        m_bXcr0Asked = true;
        return m_uiXcr0;
    }

    std::uint32_t Flags() const { return CpuArch::DetectInstrSetArchExtFlags(*this); }

    unsigned int m_uiHighestLeaf = 7;
    unsigned int m_uiLeaf1Ecx = 0;
    unsigned int m_uiLeaf1Edx = 0;
    unsigned int m_uiLeaf7Ebx = 0;
    std::uint64_t m_uiXcr0 = 0;
    mutable std::vector<unsigned int> m_vAskedLeaves;
    mutable bool m_bXcr0Asked = false;
};

PretendedProcessor Avx2Processor() {
    PretendedProcessor processor;
    processor.m_uiLeaf1Ecx = OsXsaveBit | Avx1Bit;
    processor.m_uiLeaf1Edx = Sse2Bit;
    processor.m_uiLeaf7Ebx = Avx2Bit;
    processor.m_uiXcr0 = SseState | AvxState;
    return processor;
}

TEST(CpuArch, ProcessorWithoutBasicLeavesHasNothing) {
    PretendedProcessor processor = Avx2Processor();
    processor.m_uiHighestLeaf = 0;
    EXPECT_EQ(processor.Flags(), 0U);
    EXPECT_EQ(processor.m_vAskedLeaves, std::vector<unsigned int>{0});
}

TEST(CpuArch, EachNarrowExtensionHasItsBit) {
    struct Expectation {
        unsigned int ecx, edx;
        std::uint32_t flags;
    };
    for (const Expectation& e : {Expectation{0, 1U << 23, 0x001},
                                 {0, 1U << 25, 0x008},
                                 {0, 1U << 26, 0x010},
                                 {1U << 0, 0, 0x040},
                                 {1U << 9, 0, 0x080},
                                 {1U << 19, 0, 0x100},
                                 {1U << 20, 0, 0x200}}) {
        PretendedProcessor processor;
        processor.m_uiLeaf1Ecx = e.ecx;
        processor.m_uiLeaf1Edx = e.edx;
        EXPECT_EQ(processor.Flags(), e.flags);
    }
}

TEST(CpuArch, FlagNamesHaveTheirValues) {
    EXPECT_EQ(InstrSetArchExt::Mmx, 0x001U);
    EXPECT_EQ(InstrSetArchExt::Sse, 0x008U);
    EXPECT_EQ(InstrSetArchExt::Sse2, 0x010U);
    EXPECT_EQ(InstrSetArchExt::Sse3, 0x040U);
    EXPECT_EQ(InstrSetArchExt::Ssse3, 0x080U);
    EXPECT_EQ(InstrSetArchExt::Sse41, 0x100U);
    EXPECT_EQ(InstrSetArchExt::Sse42, 0x200U);
    EXPECT_EQ(InstrSetArchExt::Avx, 0x400U);
    EXPECT_EQ(InstrSetArchExt::Avx2, 0x800U);
}

TEST(CpuArch, ProcessorWithEveryBitSetsNoUnnamedFlag) {
    PretendedProcessor processor;
    processor.m_uiHighestLeaf = ~0U;
    processor.m_uiLeaf1Ecx = processor.m_uiLeaf1Edx = processor.m_uiLeaf7Ebx = ~0U;
    processor.m_uiXcr0 = ~std::uint64_t{0};
    EXPECT_EQ(processor.Flags(), 0xFD9U);
}

TEST(CpuArch, NoOtherBitOfTheRegistersCounts) {
    PretendedProcessor processor;
    processor.m_uiLeaf1Ecx = ~(1U << 0 | 1U << 9 | 1U << 19 | 1U << 20 | OsXsaveBit | Avx1Bit);
    processor.m_uiLeaf1Edx = ~(1U << 23 | 1U << 25 | 1U << 26);
    processor.m_uiLeaf7Ebx = ~Avx2Bit;
    processor.m_uiXcr0 = ~std::uint64_t{0};
    EXPECT_EQ(processor.Flags(), 0U);
}

TEST(CpuArch, Avx2ProcessorAndSystemGiveBothWideFlags) {
    EXPECT_EQ(Avx2Processor().Flags(), 0xC10U);
}

TEST(CpuArch, SystemThatDoesNotSaveTheWideHalvesLeavesSse2) {
    for (const std::uint64_t xcr0 : {std::uint64_t{0}, SseState, AvxState}) {
        PretendedProcessor processor = Avx2Processor();
        processor.m_uiXcr0 = xcr0;
        EXPECT_EQ(processor.Flags(), InstrSetArchExt::Sse2) << xcr0;
    }
}

TEST(CpuArch, WithoutOsXsaveTheControlRegisterIsNotAsked) {
    PretendedProcessor processor = Avx2Processor();
    processor.m_uiLeaf1Ecx &= ~OsXsaveBit;
    EXPECT_EQ(processor.Flags(), InstrSetArchExt::Sse2);
    EXPECT_FALSE(processor.m_bXcr0Asked);
}

TEST(CpuArch, HighestLeafBelowSevenNeverGivesAvx2) {
    PretendedProcessor processor = Avx2Processor();
    processor.m_uiHighestLeaf = 6;
    EXPECT_EQ(processor.Flags(), InstrSetArchExt::Sse2 | InstrSetArchExt::Avx);
    EXPECT_EQ(processor.m_vAskedLeaves, (std::vector<unsigned int>{0, 1}));
}

TEST(CpuArch, Avx2DoesNotDependOnTheAvxBit) {
    PretendedProcessor processor = Avx2Processor();
    processor.m_uiLeaf1Ecx &= ~Avx1Bit;
    EXPECT_EQ(processor.Flags(), InstrSetArchExt::Sse2 | InstrSetArchExt::Avx2);
}

TEST(CpuArch, AvxAloneDoesNotGiveAvx2) {
    PretendedProcessor processor = Avx2Processor();
    processor.m_uiLeaf7Ebx = 0;
    EXPECT_EQ(processor.Flags(), InstrSetArchExt::Sse2 | InstrSetArchExt::Avx);
}

TEST(CpuArch, ThisProcessorAgreesWithTheCompilersDetection) {
    __builtin_cpu_init();
    tests::RecordingLogger logger;
    const std::uint32_t flags = CpuArch::GetInstrSetArchExtFlags(&logger);
    const auto has = [flags](std::uint32_t flag) { return (flags & flag) != 0; };
    EXPECT_EQ(has(InstrSetArchExt::Mmx), __builtin_cpu_supports("mmx") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Sse), __builtin_cpu_supports("sse") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Sse2), __builtin_cpu_supports("sse2") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Sse3), __builtin_cpu_supports("sse3") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Ssse3), __builtin_cpu_supports("ssse3") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Sse41), __builtin_cpu_supports("sse4.1") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Sse42), __builtin_cpu_supports("sse4.2") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Avx), __builtin_cpu_supports("avx") != 0);
    EXPECT_EQ(has(InstrSetArchExt::Avx2), __builtin_cpu_supports("avx2") != 0);
}

TEST(CpuArch, DetectionLogsNothing) {
    tests::RecordingLogger logger;
    CpuArch::GetInstrSetArchExtFlags(&logger);
    EXPECT_TRUE(logger.m_vLines.empty());
}

TEST(CpuArch, CpuidGivesTheRegistersInOrder) {
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    cpuid(1, 0, eax, ebx, ecx, edx);
    EXPECT_NE(edx & Sse2Bit, 0U) << "every x86-64 processor has SSE2";
    cpuid(0, 0, eax, ebx, ecx, edx);
    EXPECT_GE(eax, 1U);
    for (const unsigned int vendorText : {ebx, edx, ecx})
        for (int byte = 0; byte < 4; ++byte)
            EXPECT_GE((vendorText >> (8 * byte)) & 0xFF, 0x20U);
}

} // namespace
} // namespace Vostrel::libimagedecoder
