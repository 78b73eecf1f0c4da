#include "tools/ChangedRectangle.h"

#include <gtest/gtest.h>

namespace Vostrel::streamencoder {
namespace {

using libimagedecoder::UpdateRectangle;

constexpr UpdateRectangle Whole{0, 0, 20, 10};

void ExpectRectangle(const std::optional<UpdateRectangle>& found, const UpdateRectangle& expected) {
    ASSERT_TRUE(found);
    EXPECT_EQ(found->m_uiX, expected.m_uiX);
    EXPECT_EQ(found->m_uiY, expected.m_uiY);
    EXPECT_EQ(found->m_uiWidth, expected.m_uiWidth);
    EXPECT_EQ(found->m_uiHeight, expected.m_uiHeight);
}

TEST(ChangedRectangle, HoldsAllPixelsThatDifferAndNoOtherRowOrColumn) {
    const Picture before(20, 10);
    Picture after = before;
    EXPECT_FALSE(ChangedRectangle(after, before, Whole));
    after.At(7, 3) = {0, 0, 1};
    ExpectRectangle(ChangedRectangle(after, before, Whole), {7, 3, 1, 1});
    after.At(2, 8) = {1, 0, 0};
    ExpectRectangle(ChangedRectangle(after, before, Whole), {2, 3, 6, 6});
    after.At(19, 9) = after.At(0, 0) = {0, 1, 0};
    ExpectRectangle(ChangedRectangle(after, before, Whole), {0, 0, 20, 10});
}

TEST(ChangedRectangle, LooksOnlyInsideTheRectangleAndThePictures) {
    const Picture before(20, 10);
    Picture after = before;
    after.At(7, 3) = after.At(12, 6) = {9, 9, 9};
    ExpectRectangle(ChangedRectangle(after, before, {8, 0, 16, 16}), {12, 6, 1, 1});
    ExpectRectangle(ChangedRectangle(after, before, {7, 3, 1, 1}), {7, 3, 1, 1});
    EXPECT_FALSE(ChangedRectangle(after, before, {13, 0, 7, 10}));
    EXPECT_FALSE(ChangedRectangle(after, before, {30, 30, 7, 10}));
}

} // namespace
} // namespace Vostrel::streamencoder
