#include "tests/model/CaseFile.h"

#include <gtest/gtest.h>
#include <numeric>

namespace Vostrel::model {

namespace {

/// A whole case file: LBE, one update of 16x16 with two bytes of data and the error "E".
std::vector<uint8_t> SmallCase() {
    return {'R', 'C', 'V', '1', 1,   2,   0,   4,   50, 1, 0,  3, 16, 0, 32, 0, 1,    0,    0, 0,
            5,   0,   0,   0,   1,   0,   2,   0,   16, 0, 16, 0, 2,  0, 0,  0, 0xAA, 0xBB, 1, 'E',
            255, 255, 255, 255, 255, 255, 255, 255, 7,  0, 0,  0, 1,  0, 0,  0, 2,    0,    0, 0};
}

TEST(CaseFile, EveryFieldIsRead) {
    const CaseLife life = ParseCase(SmallCase());
    EXPECT_EQ(life.codec, 1);
    EXPECT_EQ(life.version, 2);
    EXPECT_EQ(life.chroma, 0);
    EXPECT_EQ(life.threads, 4);
    EXPECT_EQ(life.contrast, 50);
    EXPECT_TRUE(life.postproc);
    EXPECT_EQ(life.sink, 0);
    EXPECT_EQ(life.chunkExponent, 3);
    EXPECT_EQ(life.fbWidth, 16);
    EXPECT_EQ(life.fbHeight, 32);
    ASSERT_EQ(life.updates.size(), 1u);
    const CaseUpdate& update = life.updates[0];
    EXPECT_EQ(update.quality, 5u);
    EXPECT_EQ(update.x, 1);
    EXPECT_EQ(update.y, 2);
    EXPECT_EQ(update.w, 16);
    EXPECT_EQ(update.h, 16);
    EXPECT_EQ(update.stream, (std::vector<uint8_t>{0xAA, 0xBB}));
    EXPECT_EQ(update.error, "E");
    EXPECT_EQ(update.result, -1);
    EXPECT_EQ(update.consumed, 7u);
    EXPECT_EQ(update.crcAccelerated, 1u);
    EXPECT_EQ(update.crcPortable, 2u);
    EXPECT_EQ(life.PieceCapacity(update), 4u);
}

TEST(CaseFile, EveryShorterFileIsRefused) {
    const std::vector<uint8_t> whole = SmallCase();
    for (size_t size = 0; size < whole.size(); ++size) {
        const std::vector<uint8_t> cut(whole.begin(),
                                       whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_THROW(ParseCase(cut), std::runtime_error) << size << " bytes";
    }
}

TEST(CaseFile, ALongerFileIsRefused) {
    std::vector<uint8_t> longer = SmallCase();
    longer.push_back(0);
    EXPECT_THROW(ParseCase(longer), std::runtime_error);
}

TEST(CaseFile, FieldsOutOfRangeAreRefused) {
    for (const size_t offset : {0u, 4u, 5u, 6u, 8u, 9u, 10u, 11u}) {
        std::vector<uint8_t> bad = SmallCase();
        bad[offset] = 200;
        EXPECT_THROW(ParseCase(bad), std::runtime_error) << "offset " << offset;
    }
}

TEST(CaseFile, AllEightyOneFilesAreThere) {
    EXPECT_EQ(ListCaseFiles().size(), 81u);
}

TEST(CaseFile, CrcIsTheOneOfItsCheckValue) {
    const std::string digits = "123456789";
    const std::vector<uint8_t> bytes(digits.begin(), digits.end());
    EXPECT_EQ(Crc32(bytes), 0xCBF43926u);
}

} // namespace

} // namespace Vostrel::model
