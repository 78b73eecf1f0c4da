#include "libimagedecoder/InverseTransform/IInverseIct.h"
#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

// The order of virtual functions is part of the kernels' interfaces: what is added comes last.

namespace Vostrel::libimagedecoder {
namespace {

/// Slot of a virtual function, by the C++ ABI of x86-64: a pointer to it is 1 plus its offset in
/// the table. The two destructors have the slots 0 and 1.
template <typename Function>
std::size_t SlotOf(Function function) {
    std::size_t first = 0;
    static_assert(sizeof function == 2 * sizeof first);
    std::memcpy(&first, &function, sizeof first);
    EXPECT_EQ(first % sizeof(void*), 1U) << "not virtual";
    return first / sizeof(void*);
}

TEST(VirtualSlots, OfTheInverseTransformKeepTheirOrder) {
    using Kernel = InverseTransform::InverseIct::IInverseIct;
    EXPECT_EQ(SlotOf(&Kernel::TransformTile), 2U);
    EXPECT_EQ(SlotOf(&Kernel::IsAccelerated), 3U);
    EXPECT_EQ(SlotOf(&Kernel::GetTileIndexPermutation), 4U);
    EXPECT_EQ(SlotOf(&Kernel::GetNormalizationFactors), 5U);
    EXPECT_EQ(SlotOf(&Kernel::GetDataAlignmentBytes), 6U);
    EXPECT_EQ(SlotOf(&Kernel::GetScalingAsShift), 7U);
    EXPECT_GT(SlotOf(&Kernel::TransformLowTile), 7U);
}

TEST(VirtualSlots, OfTheColourConversionKeepTheirOrder) {
    using Kernel = YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
    EXPECT_EQ(SlotOf(&Kernel::GetDataAlignmentBytes), 2U);
    EXPECT_EQ(SlotOf(&Kernel::Convert420), 3U);
    EXPECT_EQ(SlotOf(&Kernel::Convert422), 4U);
    EXPECT_EQ(SlotOf(&Kernel::Convert444), 5U);
    EXPECT_GT(SlotOf(&Kernel::IsReentrant), 5U);
    EXPECT_GT(SlotOf(&Kernel::ConvertQuantized420), 5U);
    EXPECT_GT(SlotOf(&Kernel::ConvertQuantized422), 5U);
    EXPECT_GT(SlotOf(&Kernel::ConvertQuantized444), 5U);
}

} // namespace
} // namespace Vostrel::libimagedecoder
