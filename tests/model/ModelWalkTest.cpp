#include "tests/model/ModelWalk.h"
#include "tests/model/BitText.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

/// Blocks of eight bits: the value, of which 0xEE stands for a damaged block.
class ByteCodec : public IModelBlockCodec {
public:
    explicit ByteCodec(bool lengths) : m_bLengths(lengths) {}

    std::optional<ModelLength> ReadLength(ModelBits& bits) override {
        if (!m_bLengths)
            return std::nullopt;
        return ModelLength{bits.Read(8), 8};
    }

    void DecodeBlock(ModelBits& bits, int left, int top) override {
        const int value = bits.Read(8);
        if (value == 0xEE)
            throw ModelError("StreamError");
        m_vBlocks.push_back({left, top, value});
    }

    std::vector<std::array<int, 3>> m_vBlocks;

private:
    bool m_bLengths;
};

constexpr ModelWalkRules Wide{16, false};
constexpr ModelWalkRules Narrow{14, false};
constexpr ModelWalkRules Pool{16, true};
constexpr ModelRectangle TwoByTwo{3, 5, 32, 32};
const std::string End16 = "11 1111111111111111";
const std::string End14 = "11 11111111111111";

struct Walked {
    std::vector<std::array<int, 3>> blocks;
    uint64_t changed = 0;
    std::string error;
    size_t consumedBytes = 0;
    int heldBits = 0;
};

Walked WalkText(const std::string& text, const ModelWalkRules& rules,
                const ModelRectangle& area = TwoByTwo, bool lengths = false) {
    ModelStream stream(BytesOf(text), 1000);
    ModelBits bits(stream);
    ByteCodec codec(lengths);
    Walked walked;
    try {
        walked.changed = WalkBlocks(bits, area, rules, codec).changedRectangle;
    } catch (const ModelError& error) {
        walked.error = error.what();
    }
    walked.blocks = codec.m_vBlocks;
    walked.consumedBytes = stream.Consumed();
    walked.heldBits = bits.HeldBits();
    return walked;
}

using Blocks = std::vector<std::array<int, 3>>;

TEST(ModelWalk, EndMarkerFirstCodesNothing) {
    for (const auto& [text, rules] : {std::pair(End16, Wide), {End14, Narrow}}) {
        const Walked walked = WalkText(text, rules);
        EXPECT_EQ(walked.blocks, Blocks{});
        EXPECT_EQ(walked.changed, 0u);
        EXPECT_EQ(walked.error, "");
    }
}

TEST(ModelWalk, OneBlockThenTheEndMarker) {
    const Walked walked = WalkText("0 00000111" + End16, Wide);
    EXPECT_EQ(walked.blocks, (Blocks{{0, 0, 7}}));
    EXPECT_EQ(walked.changed, 0x0003'0005'0013'0015u);
}

TEST(ModelWalk, CountsSkipBlocksInRowOrder) {
    EXPECT_EQ(WalkText("10 000001 00000111" + End16, Wide).blocks, (Blocks{{16, 0, 7}}));
    EXPECT_EQ(WalkText("10 000010 00000111" + End16, Wide).blocks, (Blocks{{0, 16, 7}}));
    EXPECT_EQ(WalkText("11 0000000000000011 00000111 0", Wide).blocks, (Blocks{{16, 16, 7}}));
    EXPECT_EQ(WalkText("11 00000000000011 00000111 0", Narrow).blocks, (Blocks{{16, 16, 7}}));
    EXPECT_EQ(WalkText("10 000000 00000111" + End16, Wide).blocks, (Blocks{{0, 0, 7}}));
}

TEST(ModelWalk, ChangedRectangleKeepsItsSums) {
    // Blocks (16, 0) and (16, 16): the edges carry the position and lack the smallest offset.
    const Walked walked = WalkText("10 000001 00000111  10 000001 00000111  0", Wide);
    EXPECT_EQ(walked.blocks, (Blocks{{16, 0, 7}, {16, 16, 7}}));
    EXPECT_EQ(walked.changed, 0x0013'0005'0013'0025u);
}

TEST(ModelWalk, OneMoreSkipCodeFollowsACodedLastBlock) {
    const ModelRectangle one{0, 0, 16, 16};
    const Walked coded = WalkText("0 00000111 10 000000", Wide, one);
    EXPECT_EQ(coded.consumedBytes * 8 - static_cast<size_t>(coded.heldBits), 17u);
    const Walked skipped = WalkText("10 000001 00000111 0", Wide, one);
    EXPECT_EQ(skipped.consumedBytes * 8 - static_cast<size_t>(skipped.heldBits), 8u);
}

TEST(ModelWalk, AnEmptyRectangleReadsOneSkipCode) {
    const Walked walked = WalkText("10 000101 11111111", Wide, {3, 5, 0, 16});
    EXPECT_EQ(walked.consumedBytes, 1u);
    EXPECT_EQ(walked.changed, 0u);
}

TEST(ModelWalk, PartBlocksCountAsBlocks) {
    const Walked walked = WalkText("0 00000001 0 00000010 0 00000011 0", Wide, {0, 0, 40, 16});
    EXPECT_EQ(walked.blocks, (Blocks{{0, 0, 1}, {16, 0, 2}, {32, 0, 3}}));
}

TEST(ModelWalk, LengthsAreIgnoredWithoutAPool) {
    const Walked walked = WalkText("0 11111111 00000111" + End16, Wide, TwoByTwo, true);
    EXPECT_EQ(walked.blocks, (Blocks{{0, 0, 7}}));
    EXPECT_EQ(walked.error, "");
}

TEST(ModelWalk, AfterARecordTheNextSkipCodeStartsAtAByte) {
    // Skip code 1 bit, length 8 bits, value 8 bits, 15 bits of filling: 4 bytes.
    const Walked walked =
        WalkText("0 00000100 00000111 111111111111111" + End16, Pool, TwoByTwo, true);
    EXPECT_EQ(walked.blocks, (Blocks{{0, 0, 7}}));
    EXPECT_EQ(walked.error, "");
}

TEST(ModelWalk, LengthCountsFromTheSkipCodeOfSkippedBlocks) {
    const Walked walked = WalkText("10 000001 00000011 00000111" + End16, Pool, TwoByTwo, true);
    EXPECT_EQ(walked.blocks, (Blocks{{16, 0, 7}}));
    EXPECT_EQ(walked.error, "");
}

TEST(ModelWalk, LengthZeroDecodesInPlace) {
    const Walked walked = WalkText("0 00000000 00000111" + End16, Pool, TwoByTwo, true);
    EXPECT_EQ(walked.blocks, (Blocks{{0, 0, 7}}));
    EXPECT_EQ(walked.error, "");
}

TEST(ModelWalk, ARecordShorterThanItsFieldsIsAnError) {
    // 8 bits of skip code and 8 of length are two bytes already.
    EXPECT_EQ(WalkText("10 000000 00000001 00000111" + End16, Pool, TwoByTwo, true).error,
              "StreamError");
}

TEST(ModelWalk, ARecordBehindTheStreamsEndIsAnError) {
    EXPECT_EQ(WalkText("10 000000 00000100 00000111", Pool, TwoByTwo, true).error,
              "Stream has no more bytes!");
}

TEST(ModelWalk, BytesBehindARecordReadAsZero) {
    // The record ends after its length field: the block's byte comes out of the filling.
    const Walked walked = WalkText("10 000000 00000010" + End16, Pool, TwoByTwo, true);
    EXPECT_EQ(walked.blocks, (Blocks{{0, 0, 0}}));
    EXPECT_EQ(walked.error, "");
}

TEST(ModelWalk, TheFirstFailureInBlockOrderCounts) {
    // The first block's job fails with StreamError, the second record is cut short.
    EXPECT_EQ(
        WalkText("10 000000 00000011 11101110  10 000000 00001000", Pool, TwoByTwo, true).error,
        "StreamError");
}

TEST(ModelWalk, JobsAfterAFailedOneStillRun) {
    const Walked walked = WalkText("10 000000 00000011 11101110"
                                   "10 000000 00000011 00000111" +
                                       End16,
                                   Pool, TwoByTwo, true);
    EXPECT_EQ(walked.error, "StreamError");
    EXPECT_EQ(walked.blocks, (Blocks{{16, 0, 7}}));
}

} // namespace

} // namespace Vostrel::model
