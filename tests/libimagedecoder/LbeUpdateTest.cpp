#include "tests/libimagedecoder/DecoderVariants.h"
#include "tests/libthread/SystemCalls.h"
#include "tests/model/ModelColour.h"

#include <cerrno>
#include <stdexcept>

namespace Vostrel::libimagedecoder {

namespace {

using model::ModelCodec;
using model::ModelOutcome;
using model::ModelSettings;
using model::ModelSink;
using tests::Bits;
using tests::EndOfUpdate;
using tests::NoSkip;
using tests::PlainBlock;
using tests::Repeated;
using tests::ShortSkip;

constexpr uint64_t Rejected = ~uint64_t{0};

ModelSettings Settings(unsigned version, unsigned chroma = 0, unsigned threads = 0) {
    return {ModelCodec::Lbe, version, chroma, threads, model::KernelRule::Accelerated};
}

uint32_t ColourOf(unsigned quality, unsigned luma, unsigned chromaValue) {
    const tests::LbeDepths depths = tests::DepthsOf(quality);
    return model::ReducedDepthToArgb(luma, chromaValue, depths.luma, depths.chroma);
}

/// Every variant of the LBE decoder.
class LbeUpdate : public DecoderVariant {
protected:
    void SetUp() override { m_Pair.SetFramebuffer(ModelSink::Argb, 64, 48); }
    DecoderUnderTest& Subject() { return m_Pair.Subject(); }

    /// A block behind a skip code, with the fields that the variant wants.
    std::string Coded(const std::string& block, const std::string& skip = NoSkip) const {
        return HasPool()        ? tests::LbeRecord(skip, block)
               : Version() == 2 ? skip + Bits(1, 1) + Bits(1000, 10) + block
                                : skip + block;
    }
};

TEST_P(LbeUpdate, OneBlockIsDrawnInItsColour) {
    const ModelOutcome outcome =
        Subject().Update(7, {16, 32, 48, 16}, Coded(PlainBlock(7, 13, 0x5C)) + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, uint64_t{16} << 48 | uint64_t{32} << 32 | 32 << 16 | 48);
    for (size_t y = 0; y < 48; ++y)
        for (size_t x = 0; x < 64; ++x)
            ASSERT_EQ(Subject().Pixel(y * 64 + x),
                      x >= 16 && x < 32 && y >= 32 ? ColourOf(7, 13, 0x5C) : 0);
}

TEST_P(LbeUpdate, TheResultAddsTheUpdatesPositionToItsLastFields) {
    const std::string block = PlainBlock(4, 1, 1);
    const ModelOutcome outcome = Subject().Update(
        4, {5, 7, 48, 32}, Coded(block, ShortSkip(1)) + Coded(block, ShortSkip(2)) + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, uint64_t{5 + 16} << 48 | uint64_t{7 + 0} << 32 |
                                  uint64_t{5 + 16 + 16 - 16} << 16 | (7 + 16 + 16 - 0));
}

TEST_P(LbeUpdate, QualityTwelveIsFourInVersion0AndOutsideTheTableInTheOthers) {
    const ModelOutcome outcome =
        Subject().Update(12, {0, 0, 16, 16}, Coded(PlainBlock(4, 5, 0x15)) + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result == Rejected, Version() != 0);
    EXPECT_EQ(Subject().Pixel(0), Version() == 0 ? ColourOf(4, 5, 0x15) : 0);
}

TEST_P(LbeUpdate, QualitiesOutsideTheTableReadAndDrawNothing) {
    for (unsigned quality = 0; quality < 64; ++quality) {
        const unsigned index = quality & (Version() == 0 ? 7 : 15);
        if (index >= 2 && index <= 11)
            continue;
        const ModelOutcome outcome =
            Subject().Update(quality, {0, 0, 65535, 65535}, Coded(PlainBlock(4, 5, 0x15)) + End());
        EXPECT_EQ(outcome.error, "") << quality;
        EXPECT_EQ(outcome.result, Rejected) << quality;
        EXPECT_EQ(outcome.consumedBytes, 0u) << quality;
    }
    EXPECT_EQ(Subject().Memory(), std::vector<uint8_t>(64 * 48 * 4, 0));
    ExpectNextUpdateDecodes();
}

TEST_P(LbeUpdate, EveryQualityHasTheDepthsOfTheTable) {
    for (unsigned quality = 2; quality <= (Version() == 0 ? 7u : 11u); ++quality) {
        for (const unsigned high : {0u, 0x10u, 0xFFFFFFF0u}) {
            const ModelOutcome outcome = m_Pair.Update(quality | high, {0, 0, 16, 16},
                                                       Coded(PlainBlock(quality, 3, 0x2A)) + End());
            EXPECT_EQ(outcome.error, "");
            EXPECT_EQ(Subject().Pixel(0), ColourOf(quality, 3, 0x2A)) << quality;
            ASSERT_FALSE(HasFailure()) << quality;
        }
    }
}

TEST_P(LbeUpdate, TheDepthMayChangeFromUpdateToUpdate) {
    for (int run = 0; run < 40; ++run) {
        ExpectNextUpdateDecodes();
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
}

TEST_P(LbeUpdate, AWidthOf40HasThreeWholeBlocksInARow) {
    const ModelOutcome outcome =
        m_Pair.Update(4, {0, 0, 40, 16},
                      Coded(PlainBlock(4, 1, 0)) + Coded(PlainBlock(4, 2, 0)) +
                          Coded(PlainBlock(4, 3, 0)) + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, uint64_t{48} << 16 | 16);
    EXPECT_EQ(Subject().Pixel(15 * 64 + 15), ColourOf(4, 1, 0));
    EXPECT_EQ(Subject().Pixel(15 * 64 + 16), ColourOf(4, 2, 0));
    EXPECT_EQ(Subject().Pixel(15 * 64 + 39), ColourOf(4, 3, 0));
    EXPECT_EQ(Subject().Pixel(15 * 64 + 40), 0u);
}

TEST_P(LbeUpdate, ANarrowRectangleLowerThanWholeBlocksDrawsItsRowsAlone) {
    const std::string blocks = Coded(PlainBlock(4, 1, 0)) + Coded(PlainBlock(4, 2, 0)) +
                               Coded(PlainBlock(4, 3, 0)) + Coded(PlainBlock(4, 4, 0)) +
                               Coded(PlainBlock(4, 5, 0)) + Coded(PlainBlock(4, 6, 0));
    const ModelOutcome outcome = m_Pair.Update(4, {8, 8, 40, 24}, blocks + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(Subject().Pixel((8 + 23) * 64 + 8 + 39), ColourOf(4, 6, 0));
    EXPECT_EQ(Subject().Pixel((8 + 24) * 64 + 8), 0u);
}

TEST_P(LbeUpdate, ARunPastThePlaneStopsAtItsEnd) {
    const std::string luma = Bits(0, 1) + Bits(3, 3) + " 1 11 1110 11111111 ";
    const int runBits = Version() == 0 ? 6 : 8;
    const std::string chroma =
        Bits(0, 1) + Bits(0x11, 6) +
        Repeated(" 1 11 1110 " + Bits(0xFF, runBits), Version() == 0 ? (64u << Chroma()) / 64 : 1);
    const ModelOutcome outcome = m_Pair.Update(4, {0, 0, 16, 16}, Coded(luma + chroma) + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(Subject().Pixel(0), ColourOf(4, 3, 0x11));
    EXPECT_EQ(Subject().Pixel(15 * 64 + 15), ColourOf(4, 3, 0x11));
}

TEST_P(LbeUpdate, ChromaLevelsAreCbAboveCr) {
    // Cb 3 of 3 bits is 255, Cr 4 is 0.
    m_Pair.Update(4, {0, 0, 16, 16}, Coded(PlainBlock(4, 4, 3 << 3 | 4)) + End());
    EXPECT_EQ(Subject().Pixel(0), model::ToArgb(146, 255, 0, model::KernelRule::Portable));
}

TEST_P(LbeUpdate, APlaneFramebufferGetsNothing) {
    m_Pair.SetFramebuffer(ModelSink::Planes, 64, 48);
    const ModelOutcome outcome =
        m_Pair.Update(7, {0, 0, 16, 16}, Coded(PlainBlock(7, 13, 0x5C)) + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(Subject().Memory(), m_Pair.Model().Renderer().Memory());
}

INSTANTIATE_TEST_SUITE_P(, LbeUpdate, testing::ValuesIn(AllVariants(ModelCodec::Lbe)), VariantName);

TEST(LbeVersion2, BothLengthFormsCutTheSameRecord) {
    for (const bool longLength : {false, true}) {
        DecoderPair pair(Settings(2, 0, 2));
        pair.SetFramebuffer(ModelSink::Argb, 32, 16);
        const std::string record = tests::LbeRecord(NoSkip, PlainBlock(5, 3, 0x42), longLength);
        const ModelOutcome outcome =
            pair.Update(5, {0, 0, 32, 16}, record + record + EndOfUpdate(2) + "11111111");
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(outcome.consumedBytes, tests::BytesOf(record + record + EndOfUpdate(2)).size());
        EXPECT_EQ(pair.Subject().Pixel(31), ColourOf(5, 3, 0x42));
    }
}

TEST(LbeVersion2, ALengthOfZeroInEitherFormIsDecodedInPlaceUnderAPool) {
    for (const std::string& length : {std::string(8, '0'), "1" + std::string(10, '0')}) {
        DecoderPair pair(Settings(2, 1, 3));
        pair.SetFramebuffer(ModelSink::Argb, 48, 16);
        // The next skip code follows the last bit, not the last byte.
        const std::string inPlace = NoSkip + length + PlainBlock(6, 9, 0x11);
        const std::string update = Repeated(inPlace, 3) + EndOfUpdate(2);
        const ModelOutcome outcome = pair.Update(6, {0, 0, 48, 16}, update);
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(outcome.consumedBytes, tests::BytesOf(update).size());
        EXPECT_EQ(pair.Subject().Pixel(47), ColourOf(6, 9, 0x11));
    }
}

TEST(LbeVersion2, ARecordMayHaveItsGreatestLengthOf1023Bytes) {
    DecoderPair pair(Settings(2, 2, 2));
    pair.SetFramebuffer(ModelSink::Argb, 32, 16);
    const std::string block = PlainBlock(11, 60, 0x123);
    const std::string fields = NoSkip + Bits(1, 1) + Bits(1023, 10);
    const std::string record =
        fields + block + std::string(1023 * 8 - tests::CountBits(fields + block), '1');
    const ModelOutcome outcome =
        pair.Update(11, {0, 0, 32, 16}, record + record + EndOfUpdate(2), 100);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(pair.Subject().Pixel(31), ColourOf(11, 60, 0x123));
}

TEST(LbeVersion2, BytesOfASegmentBehindItsRecordAreZero) {
    DecoderUnderTest library(Settings(2, 0, 1));
    library.SetFramebuffer(ModelSink::Argb, 16, 16);
    const std::string ones = NoSkip + Bits(0, 1) + Bits(100, 7) + std::string(99 * 8, '1');
    library.Update(4, {0, 0, 16, 16}, ones);
    // Luma to the end, then chroma literals of zero of which the record leaves out the last.
    const std::string block = "0 000 1 11 1111 " + Repeated("0 000000 ", 64);
    const std::string record = NoSkip + Bits(0, 1) + Bits(0, 7) + block;
    const size_t bits = tests::CountBits(record);
    const size_t bytes = bits / 8; // one byte short
    ASSERT_NE(bits % 8, 0u);
    std::string cut = NoSkip + Bits(0, 1) + Bits(bytes, 7) + block;
    std::erase(cut, ' ');
    const ModelOutcome outcome =
        library.Update(4, {0, 0, 16, 16}, cut.substr(0, bytes * 8) + EndOfUpdate(2));
    EXPECT_EQ(outcome.error, "");
    for (size_t i = 0; i < 256; ++i)
        EXPECT_EQ(library.Pixel(i), 0xFF000000u) << i;
}

TEST(LbeVersion2, PoolAndNoPoolDrawTheSamePicture) {
    tests::Random random;
    for (const unsigned chroma : {0u, 1u, 2u}) {
        for (unsigned quality = 2; quality <= 11; ++quality) {
            std::string plain;
            std::string records;
            for (int i = 0; i < 12; ++i) {
                const std::string block = tests::RandomBlock(random, quality, 2, chroma);
                plain += NoSkip + Bits(0, 1) + Bits(1, 7) + block;
                records += tests::LbeRecord(NoSkip, block);
            }
            const model::ModelRectangle area{0, 0, 40, 24};
            DecoderUnderTest alone(Settings(2, chroma));
            DecoderUnderTest pooled(Settings(2, chroma, 4));
            for (DecoderUnderTest* library : {&alone, &pooled})
                library->SetFramebuffer(ModelSink::Argb, 61, 33);
            const ModelOutcome first = alone.Update(quality, area, plain + EndOfUpdate(2));
            const ModelOutcome second = pooled.Update(quality, area, records + EndOfUpdate(2));
            EXPECT_EQ(first.error, "");
            EXPECT_EQ(second.error, "");
            EXPECT_EQ(first.result, second.result);
            EXPECT_TRUE(alone.Memory() == pooled.Memory());
        }
    }
}

TEST(LbeVersion2, APoolWithoutRunningWorkersDecodesOnTheDrivingThread) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    tests::Random random;
    for (const unsigned chroma : {0u, 1u, 2u}) {
        DecoderPair pair(Settings(2, chroma, 4));
        pair.SetFramebuffer(ModelSink::Argb, 64, 48);
        for (int run = 0; run < 5; ++run)
            pair.Update(9, {0, 0, 64, 48},
                        tests::RandomUpdate(random, {true, 2, chroma, true, 9}, 12));
    }
    EXPECT_EQ(calls.m_creates, 0u);
}

TEST(LbeVersion0, LongChromaRunsCountInSixBits) {
    DecoderPair pair(Settings(0, 2));
    pair.SetFramebuffer(ModelSink::Argb, 16, 16);
    // 256 samples: a literal, a run of 63 + 3, another literal to the end.
    const std::string chroma =
        Bits(0, 1) + Bits(0x3F, 6) + "1 11 1110 111111" + Bits(0, 1) + Bits(0, 6) + "1 11 1111";
    pair.Update(4, {0, 0, 16, 16}, NoSkip + tests::PlainPlane(5, 3) + chroma + EndOfUpdate(0));
    EXPECT_EQ(pair.Subject().Pixel(66), ColourOf(4, 5, 0x3F));
    EXPECT_EQ(pair.Subject().Pixel(67), ColourOf(4, 5, 0));
}

TEST(LbeCreation, ArgumentsOutOfRangeAreRejected) {
    tests::RecordingLogger logger;
    tests::PiecewiseStreambuffer stream(&logger);
    ImageDecoderRenderer renderer(&logger);
    const auto create = [&](unsigned long threads, unsigned version, unsigned chroma) {
        ImageDecoderLbe(&renderer, &stream, &logger, threads, version, chroma);
    };
    EXPECT_THROW(create(0, 3, 0), std::invalid_argument);
    EXPECT_THROW(create(0, 0, 3), std::invalid_argument);
    EXPECT_THROW(create(0, 0xFFFFFFFF, 0), std::invalid_argument);
    for (const unsigned version : {0u, 1u, 2u}) {
        EXPECT_THROW(create(1025, version, 0), std::invalid_argument);
        EXPECT_THROW(create(~0ul, version, 0), std::invalid_argument);
    }
    EXPECT_NO_THROW(create(1024, 1, 2));
}

} // namespace

} // namespace Vostrel::libimagedecoder
