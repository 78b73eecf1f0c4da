#include "tests/model/BitText.h"
#include "tests/model/ModelLbe.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

constexpr ModelRunCoding Luma{256, 16, 4, 8};
const std::string LeftToEnd = "1 11 1111";
const std::string AboveToEnd = "1 01 1111";

std::vector<int64_t> Decode(const std::string& text, const ModelRunCoding& coding = Luma) {
    ModelStream stream(BytesOf(text), 1000);
    ModelBits bits(stream);
    return DecodeRuns(bits, coding);
}

TEST(ModelRuns, ARunFromAboveTheFirstRowIsZero) {
    EXPECT_EQ(Decode(AboveToEnd), std::vector<int64_t>(256, 0));
}

TEST(ModelRuns, ARunFromTheLeftOfTheFirstEntryIsZero) {
    EXPECT_EQ(Decode(LeftToEnd), std::vector<int64_t>(256, 0));
}

TEST(ModelRuns, ShortRunsCopyOneOrTwoEntries) {
    // Entries 0 to 4 are literals, then one entry from the left, two from the left, one from above.
    const auto entries =
        Decode("00001 00010 00011 00100 01111  1 10 0  00110  1 10 1  1 00 0" + AboveToEnd);
    const std::vector<int64_t> begin{1, 2, 3, 4, 15, 15, 6, 6, 6, 0};
    EXPECT_TRUE(std::equal(begin.begin(), begin.end(), entries.begin()));
}

TEST(ModelRuns, LongRunsHoldThreeToSixteen) {
    EXPECT_EQ(Decode("01001 1 11 0000" + AboveToEnd)[3], 9);
    EXPECT_EQ(Decode("01001 1 11 0000 00000" + AboveToEnd)[4], 0);
    EXPECT_EQ(Decode("01001 1 11 1101 00001" + AboveToEnd)[16], 9);
    EXPECT_EQ(Decode("01001 1 11 1101 00001" + AboveToEnd)[17], 1);
}

TEST(ModelRuns, CountedRunsStopAtThePlanesEnd) {
    EXPECT_EQ(Decode("00111 1 11 1110 11111111"), std::vector<int64_t>(256, 7));
}

TEST(ModelRuns, TheNarrowCountHasSixBits) {
    const ModelRunCoding chroma{64, 8, 6, 6};
    // 1 + 61 + 3 entries are more than there are.
    EXPECT_EQ(Decode("0000101 1 11 1110 111101", chroma), std::vector<int64_t>(64, 5));
    const auto entries = Decode("0000101 1 11 1110 000001 0001111" + LeftToEnd, chroma);
    EXPECT_EQ(entries[4], 5);
    EXPECT_EQ(entries[5], 15);
}

TEST(ModelRuns, AboveIsOneRowWidthBack) {
    std::string literals;
    for (int i = 0; i < 8; ++i)
        literals +=
            "0 000" + std::to_string(i / 4 % 2) + std::to_string(i / 2 % 2) + std::to_string(i % 2);
    const auto entries = Decode(literals + AboveToEnd, {64, 8, 6, 8});
    for (size_t i = 0; i < 64; ++i)
        EXPECT_EQ(entries[i], static_cast<int64_t>(i % 8));
}

TEST(ModelRuns, QualitiesTwoToElevenHaveDepths) {
    EXPECT_FALSE(LbeDepths(1, 1));
    EXPECT_FALSE(LbeDepths(12, 1));
    EXPECT_EQ(LbeDepths(12, 0)->lumaBits, 3); // masked to 4
    EXPECT_EQ(LbeDepths(12, 0)->chromaBits, 3);
    EXPECT_EQ(LbeDepths(0xF0 + 11, 2)->lumaBits, 6);
    EXPECT_EQ(LbeDepths(0xF0 + 11, 2)->chromaBits, 5);
    EXPECT_FALSE(LbeDepths(8, 0)); // masked to 0
}

} // namespace

} // namespace Vostrel::model
