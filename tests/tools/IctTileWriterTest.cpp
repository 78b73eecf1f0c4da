#include "tools/IctTileWriter.h"
#include "tests/model/ModelTile.h"
#include "tests/tools/BitString.h"

#include <gtest/gtest.h>

#include <random>

namespace Vostrel::streamencoder {
namespace {

std::string Tile(const IctLevels& levels, const IctComponentCode& code, int predictor = 0) {
    BitWriter bits;
    WriteIctTile(levels, code, predictor, bits);
    return BitStringOf(bits);
}

// Codes by hand, from ITU-T T.81 tables K.3 to K.6.
TEST(WriteIctTile, AnEmptyTileIsNoDifferenceAndEndOfBlock) {
    EXPECT_EQ(Tile({}, IctComponentCode::Luma()), WithoutBlanks("00 1010"));
    EXPECT_EQ(Tile({}, IctComponentCode::Chroma()), WithoutBlanks("00 00"));
}

TEST(WriteIctTile, DcIsCodedAsTheDifferenceFromThePredictor) {
    IctLevels levels{};
    levels[0] = 5;
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma()), WithoutBlanks("100 101 1010"));
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma(), 10), WithoutBlanks("100 010 1010"));
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma(), 5), WithoutBlanks("00 1010"));
    EXPECT_EQ(Tile(levels, IctComponentCode::Chroma()), WithoutBlanks("110 101 00"));
}

TEST(WriteIctTile, TheDcLevelBecomesThePredictor) {
    IctLevels levels{};
    levels[0] = -7;
    int predictor = 100;
    BitWriter bits;
    WriteIctTile(levels, IctComponentCode::Luma(), predictor, bits);
    EXPECT_EQ(predictor, -7);
}

TEST(WriteIctTile, TheWidestDcDifferenceHasElevenBits) {
    IctLevels levels{};
    levels[0] = 1023;
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma(), -1023),
              WithoutBlanks("111111110 11111111110 1010"));
    EXPECT_EQ(Tile(levels, IctComponentCode::Chroma(), -1023),
              WithoutBlanks("11111111110 11111111110 00"));
}

TEST(WriteIctTile, AcLevelsFollowTheZigZag) {
    IctLevels levels{};
    levels[1] = 1;   // first in the zigzag: run 0, size 1
    levels[16] = -2; // third: run 1, size 2
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma()), WithoutBlanks("00 00 1 11011 01 1010"));
}

TEST(WriteIctTile, SixteenZerosAreAZeroRun) {
    IctLevels levels{};
    levels[19] = 1; // zigzag position 17: sixteen zeros before it
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma()), WithoutBlanks("00 11111111001 00 1 1010"));
}

TEST(WriteIctTile, FifteenZerosAreNone) {
    IctLevels levels{};
    levels[12] = 1; // zigzag position 16; run 15, size 1 is 1111111111110101
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma()), WithoutBlanks("00 1111111111110101 1 1010"));
}

TEST(WriteIctTile, ATileThatFillsItsLastPositionStillEndsInEndOfBlock) {
    IctLevels levels{};
    levels[63] = -1; // 62 zeros: three zero runs and 14
    EXPECT_EQ(Tile(levels, IctComponentCode::Luma()),
              WithoutBlanks("00 11111111001 11111111001 11111111001 1111111111101011 0 1010"));
}

TEST(WriteIctTile, TheDecoderReadsEveryLevelBack) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    model::TileTable identity;
    identity.fill(1024);

    for (const bool luma : {true, false}) {
        BitWriter bits;
        std::vector<IctLevels> tiles(200);
        int predictor = 0;
        for (IctLevels& levels : tiles) {
            for (int& level : levels) {
                const unsigned range = 1U << random() % 11;
                if (random() % 4 == 0)
                    level =
                        static_cast<int>(random() % (2 * range - 1)) - static_cast<int>(range - 1);
            }
            WriteIctTile(levels, luma ? IctComponentCode::Luma() : IctComponentCode::Chroma(),
                         predictor, bits);
        }

        model::ModelStream stream(bits.GetBytes(), bits.GetBytes().size());
        model::ModelBits reader(stream);
        const model::TileCoding coding{luma ? &model::DcLuminance() : &model::DcChrominance(),
                                       luma ? &model::AcLuminance() : &model::AcChrominance(),
                                       &identity};
        int64_t decoderPredictor = 0;
        for (const IctLevels& levels : tiles) {
            const model::TileTable decoded = model::DecodeTile(reader, coding, decoderPredictor);
            ASSERT_TRUE(std::equal(levels.begin(), levels.end(), decoded.begin()));
        }
    }
}

} // namespace
} // namespace Vostrel::streamencoder
