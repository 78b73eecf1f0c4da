#include "tools/ChangedBlocks.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Vostrel::streamencoder {
namespace {

std::vector<size_t> IndexesOf(const std::vector<bool>& marks) {
    std::vector<size_t> indexes;
    for (size_t i = 0; i < marks.size(); ++i) {
        if (marks[i])
            indexes.push_back(i);
    }
    return indexes;
}

TEST(ChangedBlocks, EqualPicturesHaveNone) {
    const Picture picture(40, 20, {1, 2, 3});
    EXPECT_EQ(ChangedBlocks(picture, picture, {0, 0, 40, 20}), std::vector<bool>(6, false));
}

TEST(ChangedBlocks, OnePixelOfOneChannelChangesItsBlock) {
    const Picture before(40, 20, {1, 2, 3});
    Picture after = before;
    after.At(39, 19)[2] = 4; // in the overhanging block in the corner
    after.At(15, 0)[0] = 0;
    EXPECT_EQ(IndexesOf(ChangedBlocks(after, before, {0, 0, 40, 20})), (std::vector<size_t>{0, 5}));
}

TEST(ChangedBlocks, BlocksAreCutFromTheRectanglesCorner) {
    const Picture before(64, 64);
    Picture after = before;
    after.At(26, 24)[1] = 9;
    EXPECT_EQ(IndexesOf(ChangedBlocks(after, before, {10, 8, 32, 32})), std::vector<size_t>{3});
    EXPECT_TRUE(IndexesOf(ChangedBlocks(after, before, {27, 8, 32, 32})).empty());
}

TEST(ChangedBlocks, BlocksBesideThePictureDoNotChange) {
    const Picture before(20, 20);
    const Picture after(20, 20, {9, 9, 9});
    EXPECT_EQ(IndexesOf(ChangedBlocks(after, before, {16, 16, 32, 32})), std::vector<size_t>{0});
}

TEST(ChangedBlocks, PicturesMustHaveOneSize) {
    EXPECT_THROW(ChangedBlocks(Picture(16, 32), Picture(32, 16), {0, 0, 16, 16}),
                 std::invalid_argument);
}

TEST(BridgeLongGaps, LeavesGapsThatOneSkipCodeSpans) {
    std::vector<bool> marks(12);
    marks[3] = marks[7] = true; // three unchanged blocks before each
    BridgeLongGaps(marks, 3);
    EXPECT_EQ(IndexesOf(marks), (std::vector<size_t>{3, 7}));
}

TEST(BridgeLongGaps, PutsBlocksIntoLongerGaps) {
    std::vector<bool> marks(30);
    marks[4] = marks[13] = true;
    BridgeLongGaps(marks, 3);
    EXPECT_EQ(IndexesOf(marks), (std::vector<size_t>{3, 4, 8, 12, 13}));
}

} // namespace
} // namespace Vostrel::streamencoder
