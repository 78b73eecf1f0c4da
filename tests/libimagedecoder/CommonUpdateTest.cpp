#include "tests/libimagedecoder/DecoderVariants.h"

namespace Vostrel::libimagedecoder {

namespace {

using model::ModelCodec;

/// What both codecs owe to every update.
class AnyUpdate : public DecoderVariant {};

TEST_P(AnyUpdate, RandomUpdatesDecodeLikeTheModel) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 96, 64);
    for (int run = 0; run < 60; ++run) {
        const Area area{m_Random.Between(0, 3) * 16, m_Random.Between(0, 2) * 16,
                        m_Random.Between(1, 6) * 16, m_Random.Between(1, 4) * 16};
        const unsigned quality = RandomQuality();
        m_Pair.Update(quality, area, RandomUpdate(area, quality), RandomPiece());
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
}

TEST_P(AnyUpdate, ContrastAndPostProcessingFollowTheModel) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
    m_Pair.Subject().Renderer().SetClientPostprocessingEnabled(true);
    m_Pair.Model().Renderer().SetPostProcessing(true);
    for (const int level : {100, 64, 3, 0}) {
        m_Pair.Subject().Renderer().SetContrastEnhance(level);
        m_Pair.Model().Renderer().SetContrast(level);
        ExpectNextUpdateDecodes();
    }
}

TEST_P(AnyUpdate, NarrowAndOddRectanglesDecodeLikeTheModel) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 101, 77);
    std::vector<Area> areas{{0, 0, 40, 24}, {16, 16, 40, 24}, {3, 5, 40, 16}, {0, 0, 112, 80},
                            {0, 0, 1, 1},   {96, 64, 16, 16}, {90, 0, 37, 80}};
    for (int run = 0; run < 30; ++run)
        areas.push_back({m_Random.Between(0, 110), m_Random.Between(0, 80),
                         m_Random.Between(0, 112), m_Random.Between(0, 80)});
    for (const Area& area : areas) {
        const unsigned quality = RandomQuality();
        m_Pair.Update(quality, area, RandomUpdate(area, quality), RandomPiece());
        ASSERT_FALSE(HasFailure())
            << area.x << "," << area.y << " " << area.width << "x" << area.height;
    }
}

TEST_P(AnyUpdate, AScreenWithOddSidesKeepsItsGuards) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 1366, 769);
    const Area area{0, 0, 1376, 784};
    const unsigned quality = RandomQuality();
    m_Pair.Update(quality, area, RandomUpdate(area, quality));
}

TEST_P(AnyUpdate, PlaneFramebuffersFollowTheModel) {
    m_Pair.SetFramebuffer(model::ModelSink::Planes, 96, 64);
    for (int run = 0; run < 30; ++run) {
        const int width = m_Random.Between(1, 6) * 16;
        const int height = m_Random.Between(1, 4) * 16;
        const Area area{m_Random.Between(0, 96 - width), m_Random.Between(0, 64 - height), width,
                        height};
        const unsigned quality = RandomQuality();
        m_Pair.Update(quality, area, RandomUpdate(area, quality), RandomPiece());
        ASSERT_FALSE(HasFailure())
            << area.x << "," << area.y << " " << area.width << "x" << area.height;
    }
}

TEST_P(AnyUpdate, PlanesOfAPaddedScreenFollowTheModel) {
    // The encoder's rectangles are whole macroblocks and stick out of the screen.
    m_Pair.SetFramebuffer(model::ModelSink::Planes, 90, 50);
    for (const Area& area : {Area{0, 0, 96, 64},
                             {80, 0, 16, 16},
                             {0, 48, 16, 16},
                             {80, 48, 16, 16},
                             {48, 16, 48, 48}}) {
        const unsigned quality = RandomQuality();
        m_Pair.Update(quality, area, RandomUpdate(area, quality), RandomPiece());
        EXPECT_FALSE(HasFailure())
            << area.x << "," << area.y << " " << area.width << "x" << area.height;
    }
}

TEST_P(AnyUpdate, DamagedUpdatesEndLikeTheModelsAndTheNextOneIsRight) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
    const Area area{0, 0, 64, 48};
    for (int run = 0; run < 150; ++run) {
        const unsigned quality = RandomQuality();
        m_Pair.Update(quality, area, tests::Damaged(m_Random, RandomUpdate(area, quality)),
                      RandomPiece());
        if (m_Random.OneIn(3))
            m_Pair.Subject().Decoder().SetResolution(64, 48);
        ASSERT_FALSE(HasFailure()) << "run " << run;
        if (run % 10 == 0)
            ExpectNextUpdateDecodes();
    }
}

TEST_P(AnyUpdate, RandomBytesEndLikeTheModels) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
    for (int run = 0; run < 300; ++run) {
        const size_t count = m_Random.Below(size_t{400});
        std::string text;
        for (size_t i = 0; i < count; ++i)
            text += tests::Bits(m_Random.OneIn(3) ? 0 : m_Random.Bits(), 8);
        m_Pair.Update(RandomQuality(), {0, 0, 64, 48}, text, RandomPiece());
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
    ExpectNextUpdateDecodes();
}

TEST_P(AnyUpdate, AnEndMarkerAloneCodesNothing) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
    ExpectNextUpdateDecodes();
    const model::ModelOutcome outcome =
        m_Pair.Subject().Update(RandomQuality(), {16, 16, 48, 32}, End() + "11111111");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.consumedBytes, Version() == 0 ? 2u : 3u);
    EXPECT_TRUE(m_Pair.Subject().Memory() == m_Pair.Model().Renderer().Memory());
}

TEST_P(AnyUpdate, AnEmptyRectangleReadsItsSkipCodeAlone) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
    ExpectNextUpdateDecodes();
    for (const Area& area : {Area{0, 0, 0, 0}, {16, 16, 0, 32}, {16, 16, 32, 0}}) {
        const std::pair<std::string, size_t> codes[] = {
            {tests::NoSkip, 1}, {tests::ShortSkip(63), 1}, {End(), Version() == 0 ? 2 : 3}};
        for (const auto& [code, bytes] : codes) {
            const model::ModelOutcome outcome = m_Pair.Subject().Update(
                RandomQuality(), area, code + "1111111 11111111 11111111 11111111");
            EXPECT_EQ(outcome.error, "");
            EXPECT_EQ(outcome.result, 0u);
            EXPECT_EQ(outcome.consumedBytes, bytes);
        }
    }
    EXPECT_TRUE(m_Pair.Subject().Memory() == m_Pair.Model().Renderer().Memory());
}

TEST_P(AnyUpdate, ARectangleLargerThanTheRoundedResolutionIsRefusedUnread) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 50, 33);
    for (const Area& area : {Area{0, 0, 65, 16},
                             {0, 0, 16, 49},
                             {0, 0, 65535, 65535},
                             {0, 0, 65535, 0},
                             {0, 0, 80, 48}}) {
        const model::ModelOutcome outcome = m_Pair.Subject().Update(RandomQuality(), area, End());
        EXPECT_EQ(outcome.error, "StreamError") << area.width << "x" << area.height;
        EXPECT_EQ(outcome.consumedBytes, 0u);
    }
    EXPECT_EQ(m_Pair.Subject().Update(RandomQuality(), {0, 0, 64, 48}, End()).error, "");
}

TEST_P(AnyUpdate, BeforeAResolutionIsSetOnlyEmptyRectanglesPass) {
    DecoderUnderTest library(GetParam());
    EXPECT_EQ(library.Update(RandomQuality(), {0, 0, 16, 16}, End()).error, "StreamError");
    EXPECT_EQ(library.Update(RandomQuality(), {0, 0, 1, 1}, End()).error, "StreamError");
    EXPECT_EQ(library.Update(RandomQuality(), {0, 0, 0, 0}, End()).error, "");
    library.Decoder().SetResolution(0, 0);
    EXPECT_EQ(library.Update(RandomQuality(), {0, 0, 0, 0}, End()).error, "");
}

TEST_P(AnyUpdate, AnEmptyStreamRunsOutAtTheThirdByteOfPadding) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
    EXPECT_EQ(m_Pair.Update(RandomQuality(), {0, 0, 16, 16}, "").error,
              "Stream has no more bytes!");
    ExpectNextUpdateDecodes();
}

TEST_P(AnyUpdate, TheResolutionMayChangeAtAnyTime) {
    for (const auto& [width, height] :
         {std::pair(64, 48), {16, 16}, {640, 16}, {640, 480}, {1, 1}, {33, 80}}) {
        m_Pair.SetFramebuffer(model::ModelSink::Argb, width, height);
        const unsigned quality = RandomQuality();
        const Area area{0, 0, width, height};
        m_Pair.Update(quality, area, RandomUpdate(area, quality));
        ASSERT_FALSE(HasFailure()) << width << "x" << height;
    }
}

TEST_P(AnyUpdate, LinesOfTheLogTellTheThreads) {
    const std::string codec = IsLbe() ? "LBE" : "ICT";
    const std::string expected = HasPool()
                                     ? "Using multithreaded parallel " + codec + " decoder with " +
                                           std::to_string(GetParam().threads) + " threads."
                                     : "Using singlethreaded " + codec + " decoder.";
    const auto& lines = m_Pair.Subject().Logger().m_vLines;
    EXPECT_EQ(std::ranges::count(lines, expected), 1);
    EXPECT_EQ(std::ranges::count_if(
                  lines, [](const std::string& line) { return line.starts_with("Using "); }),
              1);
}

/// What both codecs owe to updates that a pool decodes.
class PoolUpdate : public DecoderVariant {
protected:
    void SetUp() override { m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48); }

    std::string Record(const std::string& body) const {
        return IsLbe() ? tests::LbeRecord(tests::NoSkip, body)
                       : tests::IctRecord(tests::NoSkip, body);
    }

    /// A record of some macroblock.
    std::string GoodRecord(unsigned quality) {
        for (;;) {
            const std::string body =
                tests::RandomBody(m_Random, {IsLbe(), Version(), Chroma(), true, quality});
            if (tests::CountBits(body) < 1900)
                return Record(body);
        }
    }

    /// A length field.
    std::string Length(unsigned bytes) const {
        return IsLbe() ? tests::Bits(0, 1) + tests::Bits(bytes, 7) : tests::Bits(bytes, 8);
    }
};

TEST_P(PoolUpdate, ALengthSmallerThanTheBytesFetchedIsAStreamError) {
    // Skip code and length are 9 bits, so two bytes have been fetched.
    const std::string update = tests::NoSkip + Length(1) + std::string(400, '0');
    EXPECT_EQ(m_Pair.Update(RandomQuality(), {0, 0, 16, 16}, update).error, "StreamError");
    ExpectNextUpdateDecodes();
    // With a long skip code there are 26 bits, four bytes.
    const std::string longer = tests::LongSkip(0, 2) + Length(3) + std::string(400, '0');
    EXPECT_EQ(m_Pair.Update(RandomQuality(), {0, 0, 16, 16}, longer).error, "StreamError");
    ExpectNextUpdateDecodes();
}

TEST_P(PoolUpdate, ARecordWithoutAByteOfItsOwnRunsOutOfBytes) {
    // The length tells exactly the bytes of the fields: the job finds zeros and then nothing.
    const std::string update = tests::NoSkip + Length(2) + "0000000" + End() + "11111111";
    m_Pair.Update(RandomQuality(), {0, 0, 16, 16}, update);
    ExpectNextUpdateDecodes();
}

TEST_P(PoolUpdate, AStreamThatEndsWithinARecordHasNoMoreBytes) {
    const unsigned quality = RandomQuality();
    const std::string record = GoodRecord(quality);
    const std::string update = record + record.substr(0, record.size() - 8);
    EXPECT_EQ(m_Pair.Update(quality, {0, 0, 64, 48}, update).error, "Stream has no more bytes!");
    ExpectNextUpdateDecodes();
}

TEST_P(PoolUpdate, AThrowWhileJobsRunLeavesNoTraceInTheNextUpdate) {
    for (int run = 0; run < 30; ++run) {
        const unsigned quality = RandomQuality();
        std::string update;
        for (int i = 0; i < 11; ++i)
            update += GoodRecord(quality);
        update += tests::NoSkip + Length(1) + std::string(64, '0');
        EXPECT_EQ(m_Pair.Update(quality, {0, 0, 64, 48}, update).error, "StreamError");
        if (run % 3 == 0)
            m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, run % 2 == 0 ? 48 : 64);
        if (run % 3 == 1)
            m_Pair.Subject().Decoder().SetResolution(64, 48);
        if (run % 3 == 0)
            m_Pair.SetFramebuffer(model::ModelSink::Argb, 64, 48);
        ExpectNextUpdateDecodes();
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
}

TEST_P(PoolUpdate, TheFirstOfSeveralFailuresIsTold) {
    // A job that runs out of bytes, later records that are refused by the walk.
    const unsigned quality = RandomQuality();
    const std::string starved = tests::NoSkip + Length(2) + "0000000";
    const std::string refused = tests::NoSkip + Length(1) + std::string(64, '0');
    for (int run = 0; run < 20; ++run) {
        const model::ModelOutcome outcome = m_Pair.Update(
            quality, {0, 0, 64, 48}, GoodRecord(quality) + starved + starved + refused);
        EXPECT_EQ(outcome.error, "Stream has no more bytes!");
        EXPECT_EQ(m_Pair.Update(quality, {0, 0, 64, 48}, GoodRecord(quality) + refused).error,
                  "StreamError");
    }
    ExpectNextUpdateDecodes();
}

TEST_P(PoolUpdate, MacroblocksInPlaceAmongJobsHaveScratchMemoryOfTheirOwn) {
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 320, 240);
    for (int run = 0; run < 5; ++run) {
        const unsigned quality = RandomQuality();
        const Area area{0, 0, 320, 240};
        m_Pair.Update(quality, area, RandomUpdate(area, quality));
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
}

TEST_P(PoolUpdate, SegmentsBeyondTheStoreAreAllocated) {
    // A framebuffer of one pixel has no store at all.
    m_Pair.SetFramebuffer(model::ModelSink::Argb, 1, 1);
    for (int run = 0; run < 20; ++run) {
        const unsigned quality = RandomQuality();
        m_Pair.Update(quality, {0, 0, 1, 1}, GoodRecord(quality) + End());
        m_Pair.Update(quality, {0, 0, 16, 16}, GoodRecord(quality) + End());
        ASSERT_FALSE(HasFailure());
    }
}

INSTANTIATE_TEST_SUITE_P(Ict, AnyUpdate, testing::ValuesIn(AllVariants(ModelCodec::Ict)),
                         VariantName);
INSTANTIATE_TEST_SUITE_P(Lbe, AnyUpdate, testing::ValuesIn(AllVariants(ModelCodec::Lbe)),
                         VariantName);
INSTANTIATE_TEST_SUITE_P(Ict, PoolUpdate, testing::ValuesIn(PoolVariants(ModelCodec::Ict)),
                         VariantName);
INSTANTIATE_TEST_SUITE_P(Lbe, PoolUpdate, testing::ValuesIn(PoolVariants(ModelCodec::Lbe)),
                         VariantName);

} // namespace

} // namespace Vostrel::libimagedecoder
