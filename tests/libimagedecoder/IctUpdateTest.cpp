#include "tests/libimagedecoder/DecoderVariants.h"
#include "tests/libthread/SystemCalls.h"

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
using tests::FlatMacroblock;
using tests::LongSkip;
using tests::NoSkip;
using tests::Repeated;
using tests::ShortSkip;
using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;

constexpr uint32_t Grey = 0xFF808080;

ModelSettings Settings(unsigned version, unsigned chroma = 0, unsigned threads = 0) {
    return {ModelCodec::Ict, version, chroma, threads, model::KernelRule::Accelerated};
}

/// Every variant of the ICT decoder.
class IctUpdate : public DecoderVariant {
protected:
    void SetUp() override { m_Pair.SetFramebuffer(ModelSink::Argb, 64, 48); }
    DecoderUnderTest& Subject() { return m_Pair.Subject(); }
    std::string Flat() const { return FlatMacroblock(Chroma()); }

    /// A macroblock whose first luma tile has a DC difference of 31 (category 5).
    std::string Brighter() const {
        return "110"
               "11111"
               "1010" +
               Repeated(tests::FlatLumaTile, 3) +
               Repeated(tests::FlatChromaTile, tests::ChromaTiles(Chroma()));
    }

    /// A macroblock that the variant decodes as it would any other.
    std::string Coded(const std::string& macroblock) const {
        return HasPool()        ? tests::IctRecord(NoSkip, macroblock)
               : Version() == 2 ? NoSkip + Bits(0xFF, 8) + macroblock
                                : NoSkip + macroblock;
    }
};

TEST_P(IctUpdate, SkipCountZeroAndTheEndMarkerCodeTheFirstMacroblock) {
    const ModelOutcome outcome =
        Subject().Update(15, {16, 32, 48, 16}, Coded(Flat()) + End() + "00000000");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, uint64_t{16} << 48 | uint64_t{32} << 32 | 32 << 16 | 48);
    for (size_t y = 0; y < 48; ++y)
        for (size_t x = 0; x < 64; ++x)
            ASSERT_EQ(Subject().Pixel(y * 64 + x), x >= 16 && x < 32 && y >= 32 ? Grey : 0);
}

TEST_P(IctUpdate, TheResultAddsTheUpdatesPositionToItsLastFields) {
    // Macroblocks 1 and 4 of a rectangle of 3 by 2: offsets (16, 0) and (16, 16).
    const std::string second = HasPool()        ? tests::IctRecord(ShortSkip(2), Flat())
                               : Version() == 2 ? ShortSkip(2) + Bits(1, 8) + Flat()
                                                : ShortSkip(2) + Flat();
    const std::string first = HasPool()        ? tests::IctRecord(ShortSkip(1), Flat())
                              : Version() == 2 ? ShortSkip(1) + Bits(1, 8) + Flat()
                                               : ShortSkip(1) + Flat();
    const ModelOutcome outcome = Subject().Update(3, {5, 7, 48, 32}, first + second + End());
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, uint64_t{5 + 16} << 48 | uint64_t{7 + 0} << 32 |
                                  uint64_t{5 + 16 + 16 - 16} << 16 | (7 + 16 + 16 - 0));
}

TEST_P(IctUpdate, TheLastFieldsOfTheResultWrapAt16Bits) {
    const ModelOutcome outcome =
        Subject().Update(3, {0xFFF8, 0xFFF4, 16, 16}, Coded(Flat()) + End());
    EXPECT_EQ(outcome.result,
              uint64_t{0xFFF8} << 48 | uint64_t{0xFFF4} << 32 | uint64_t{8} << 16 | 4);
}

TEST_P(IctUpdate, AfterASkipRunTheNextMacroblockIsCodedWithoutAnotherCount) {
    for (const std::string& skip : {ShortSkip(3), LongSkip(3, Version())}) {
        const std::string coded = HasPool()        ? tests::IctRecord(skip, Flat())
                                  : Version() == 2 ? skip + Bits(7, 8) + Flat()
                                                   : skip + Flat();
        const ModelOutcome outcome = m_Pair.Update(0, {0, 0, 64, 48}, coded + End());
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(Subject().Pixel(48), Grey);
        EXPECT_EQ(Subject().Pixel(47), 0u);
    }
}

TEST_P(IctUpdate, AfterTheLastMacroblockOneMoreSkipCodeIsReadIfItWasCoded) {
    const ModelOutcome coded = m_Pair.Update(0, {0, 0, 16, 16}, Coded(Flat()) + End());
    EXPECT_EQ(coded.consumedBytes, tests::BytesOf(Coded(Flat()) + End()).size());
    const ModelOutcome skipped = m_Pair.Update(0, {0, 0, 16, 16}, ShortSkip(1) + End());
    EXPECT_EQ(skipped.consumedBytes, 1u);
    EXPECT_EQ(skipped.result, 0u);
}

TEST_P(IctUpdate, DcPredictorsRestartWithEveryMacroblockExceptInVersion0) {
    m_Pair.Update(0, {0, 0, 32, 16}, Coded(Brighter()) + Coded(Flat()) + End());
    const uint32_t first = Subject().Pixel(0);
    EXPECT_NE(first, Grey);
    EXPECT_EQ(Subject().Pixel(15 * 64 + 15), first) << "luma tiles share one predictor";
    EXPECT_EQ(Subject().Pixel(16), Version() == 0 ? first : Grey);
    // The next update starts at zero in any version.
    m_Pair.Update(0, {0, 0, 16, 16}, Coded(Flat()) + End());
    EXPECT_EQ(Subject().Pixel(0), Grey);
}

TEST_P(IctUpdate, TheComponentsHavePredictorsOfTheirOwn) {
    // Chroma DC category 1 is 01; a difference of one in the first Cb tile only.
    const size_t chromaTiles = tests::ChromaTiles(Chroma());
    const std::string bluish = Repeated(tests::FlatLumaTile, 4) + "01 1 00 " +
                               Repeated(tests::FlatChromaTile, chromaTiles - 1);
    m_Pair.Update(0, {0, 0, 16, 16}, Coded(bluish) + End());
    EXPECT_GT(Subject().Pixel(0) & 0xFF, 0x80u);
    EXPECT_EQ(Subject().Pixel(0) >> 16 & 0xFF, 0x80u);
    EXPECT_EQ(Subject().Pixel(15 * 64 + 15), Subject().Pixel(0));
}

TEST_P(IctUpdate, TheAbortMarkerInAnyLumaTileIsAStreamError) {
    for (size_t tile = 0; tile < 4; ++tile) {
        const std::string aborted =
            Repeated(tests::FlatLumaTile, tile) + tests::AbortMarker + std::string(100, '0');
        EXPECT_EQ(m_Pair.Update(0, {0, 0, 64, 48}, Coded(Flat()) + Coded(aborted) + End()).error,
                  "StreamError");
        EXPECT_EQ(Subject().Memory(), std::vector<uint8_t>(64 * 48 * 4, 0));
    }
    ExpectNextUpdateDecodes();
}

TEST_P(IctUpdate, AMacroblockDecodedInPlaceFailsLikeAJob) {
    for (const std::string& bad : {tests::AbortMarker, "00" + Repeated("11111111001", 5)}) {
        EXPECT_EQ(m_Pair.Update(0, {0, 0, 64, 48}, InPlace() + bad + End()).error, "StreamError");
        ExpectNextUpdateDecodes();
    }
}

TEST_P(IctUpdate, APositionBehindTheTileIsAStreamError) {
    const std::string tooLong = "00" + Repeated("11111111001", 4) + "1010" + Flat();
    EXPECT_EQ(m_Pair.Update(0, {0, 0, 64, 48}, Coded(tooLong) + End()).error, "StreamError");
    ExpectNextUpdateDecodes();
}

TEST_P(IctUpdate, Quality0x25IsLevelFive) {
    m_Pair.Update(0x25, {0, 0, 16, 16}, Coded(Brighter()) + End());
    const uint32_t pixel = Subject().Pixel(0);
    m_Pair.Update(5, {0, 0, 16, 16}, Coded(Brighter()) + End());
    EXPECT_EQ(Subject().Pixel(0), pixel);
    m_Pair.Update(0xF4, {0, 0, 16, 16}, Coded(Brighter()) + End());
    EXPECT_NE(Subject().Pixel(0), pixel);
}

TEST_P(IctUpdate, PlanesOfAnUnchangedSizeKeepTheirContent) {
    const Area all{0, 0, 64, 48};
    for (const bool sameSize : {true, false}) {
        m_Pair.SetFramebuffer(ModelSink::Planes, 64, 48);
        m_Pair.Update(15, all, RandomUpdate(all, 15));
        if (!sameSize)
            m_Pair.SetFramebuffer(ModelSink::Planes, 48, 64);
        m_Pair.SetFramebuffer(ModelSink::Planes, 64, 48);
        // Drawn from 16 samples further on, so the last row comes from the update before.
        m_Pair.Update(15, {16, 0, 16, 16}, Coded(Flat()) + End());
        ASSERT_FALSE(HasFailure());
    }
}

INSTANTIATE_TEST_SUITE_P(, IctUpdate, testing::ValuesIn(AllVariants(ModelCodec::Ict)), VariantName);

/// A kernel that keeps the skip masks it is called with.
class RecordingConverter : public IYCbCr4xxToArgb32 {
public:
    using IYCbCr4xxToArgb32::IYCbCr4xxToArgb32;
    std::uint16_t GetDataAlignmentBytes() const override { return 8; }
    void Convert420(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short width, unsigned short height, unsigned long, unsigned long,
                    unsigned long, const bool* mask) const override {
        Keep(width, height, mask);
    }
    void Convert422(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short width, unsigned short height, unsigned long, unsigned long,
                    unsigned long, const bool* mask) const override {
        Keep(width, height, mask);
    }
    void Convert444(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short width, unsigned short height, unsigned long, unsigned long,
                    unsigned long, const bool* mask) const override {
        Keep(width, height, mask);
    }

    mutable std::vector<std::vector<bool>> m_Masks;

private:
    void Keep(unsigned short width, unsigned short height, const bool* mask) const {
        m_Masks.emplace_back(mask, mask + width / 16 * (height / 16));
    }
};

/// An ICT decoder that draws into a RecordingConverter.
class IctDrawing : public testing::TestWithParam<unsigned> {
protected:
    IctDrawing() {
        m_Renderer.SetFramebufferSize(64, 48, false);
        m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_Pixels.data()));
        m_Decoder.SetResolution(64, 48);
    }

    void Update(const std::string& text) {
        m_Stream.Load(tests::BytesOf(text), 1000);
        m_Decoder.HandleUpdate(3, 0, 0, 0, 64, 48);
    }

    tests::RecordingLogger m_Logger;
    tests::PiecewiseStreambuffer m_Stream{&m_Logger};
    std::shared_ptr<RecordingConverter> m_pConverter =
        std::make_shared<RecordingConverter>(&m_Logger);
    ImageDecoderRenderer m_Renderer{m_pConverter};
    std::vector<uint32_t> m_Pixels = std::vector<uint32_t>(64 * 48);
    ImageDecoderIct m_Decoder{&m_Renderer, &m_Stream, &m_Logger, 0, 1, GetParam()};
};

TEST_P(IctDrawing, AnEndMarkerAloneDrawsOnceWithEveryMacroblockSkipped) {
    Update(EndOfUpdate(1));
    ASSERT_EQ(m_pConverter->m_Masks.size(), 1u);
    EXPECT_EQ(m_pConverter->m_Masks[0], std::vector<bool>(12, true));
}

TEST_P(IctDrawing, TheMaskHasOneEntryPerMacroblockInRowOrder) {
    Update(ShortSkip(2) + FlatMacroblock(GetParam()) + ShortSkip(1) + FlatMacroblock(GetParam()) +
           NoSkip + FlatMacroblock(GetParam()) + EndOfUpdate(1));
    std::vector<bool> expected(12, true);
    for (const size_t coded : {2u, 4u, 5u})
        expected[coded] = false;
    ASSERT_EQ(m_pConverter->m_Masks.size(), 1u);
    EXPECT_EQ(m_pConverter->m_Masks[0], expected);
}

TEST_P(IctDrawing, AFailedUpdateIsNotDrawn) {
    EXPECT_THROW(Update(NoSkip + tests::AbortMarker), ImageDecoderException);
    EXPECT_TRUE(m_pConverter->m_Masks.empty());
}

INSTANTIATE_TEST_SUITE_P(, IctDrawing, testing::Values(0u, 1u, 2u));

TEST(IctLongCounts, Version0EndsAt16383AndTheOthersCountOn) {
    // 128 by 129 macroblocks; the one behind the run is coded.
    for (const unsigned version : {0u, 1u, 2u}) {
        DecoderUnderTest library(Settings(version));
        library.SetFramebuffer(ModelSink::Argb, 2048, 2064);
        const std::string length = version == 2 ? Bits(0, 8) : "";
        const std::string rest = length + FlatMacroblock(0) + EndOfUpdate(version);
        const model::ModelRectangle all{0, 0, 2048, 2064};
        ModelOutcome outcome = library.Update(0, all, LongSkip(16382, version) + rest);
        EXPECT_EQ(outcome.result,
                  uint64_t{126 * 16} << 48 | uint64_t{127 * 16} << 32 | uint64_t{16} << 16 | 16)
            << version;
        outcome = library.Update(0, all, LongSkip(16383, version) + rest);
        EXPECT_EQ(outcome.result, version == 0 ? 0
                                               : uint64_t{127 * 16} << 48 |
                                                     uint64_t{127 * 16} << 32 | 16 << 16 | 16);
        EXPECT_EQ(outcome.consumedBytes == 2, version == 0);
    }
}

TEST(IctVersion2, WithoutAPoolTheLengthIsIgnored) {
    for (const unsigned length : {0u, 1u, 7u, 255u}) {
        DecoderPair pair(Settings(2));
        pair.SetFramebuffer(ModelSink::Argb, 32, 16);
        const std::string macroblock = NoSkip + Bits(length, 8) + FlatMacroblock(0);
        const ModelOutcome outcome =
            pair.Update(0, {0, 0, 32, 16}, macroblock + macroblock + EndOfUpdate(2));
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(pair.Subject().Pixel(16), Grey);
    }
}

TEST(IctVersion2, ALengthOfZeroIsDecodedInPlaceUnderAPool) {
    DecoderPair pair(Settings(2, 0, 3));
    pair.SetFramebuffer(ModelSink::Argb, 48, 16);
    // Nothing is skipped to a byte: the next skip code follows the last bit.
    const std::string inPlace = NoSkip + Bits(0, 8) + FlatMacroblock(0);
    const ModelOutcome outcome =
        pair.Update(0, {0, 0, 48, 16}, inPlace + inPlace + inPlace + EndOfUpdate(2));
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.consumedBytes, tests::BytesOf(Repeated(inPlace, 3) + EndOfUpdate(2)).size());
    EXPECT_EQ(pair.Subject().Pixel(47), Grey);
}

TEST(IctVersion2, BehindARecordTheStreamGoesOnAtItsNextByte) {
    DecoderPair pair(Settings(2, 0, 2));
    pair.SetFramebuffer(ModelSink::Argb, 32, 16);
    // The padding of the first record, and a whole byte that its length counts, are no skip codes.
    const std::string fields = NoSkip + Bits(8, 8);
    const std::string record = tests::Padded(fields + FlatMacroblock(0), '1') + "11111111 11111111";
    ASSERT_EQ(tests::CountBits(record), 64u);
    const ModelOutcome outcome =
        pair.Update(0, {0, 0, 32, 16}, record + record + EndOfUpdate(2) + "11111111");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.consumedBytes, 19u);
    EXPECT_EQ(pair.Subject().Pixel(31), Grey);
}

TEST(IctVersion2, BytesOfASegmentBehindItsRecordAreZero) {
    DecoderUnderTest library(Settings(2, 2, 1));
    library.SetFramebuffer(ModelSink::Argb, 16, 16);
    // Fill the segments' memory with ones.
    const std::string ones = NoSkip + Bits(100, 8) + std::string(99 * 8, '1');
    EXPECT_EQ(library.Update(0, {0, 0, 16, 16}, ones).error, "StreamError");
    // 65 bits end in zeros; the record leaves out the last of them.
    const std::string record = NoSkip + Bits(8, 8) + FlatMacroblock(2);
    ASSERT_EQ(tests::CountBits(record), 65u);
    const ModelOutcome outcome = library.Update(
        0, {0, 0, 16, 16}, record.substr(0, record.find_last_of('0')) + EndOfUpdate(2));
    EXPECT_EQ(outcome.error, "");
    for (size_t i = 0; i < 256; ++i)
        EXPECT_EQ(library.Pixel(i), Grey) << i;
}

TEST(IctVersion2, TheLongSkipCodesBitsCountAmongTheFetchedBytes) {
    DecoderPair pair(Settings(2, 0, 2));
    pair.SetFramebuffer(ModelSink::Argb, 96, 16);
    for (const std::string& skip : {NoSkip, ShortSkip(1), LongSkip(1, 2)}) {
        const std::string record = tests::IctRecord(skip, FlatMacroblock(0));
        const ModelOutcome outcome =
            pair.Update(0, {0, 0, 96, 16}, record + record + EndOfUpdate(2));
        EXPECT_EQ(outcome.error, "");
        EXPECT_EQ(outcome.consumedBytes, tests::BytesOf(record + record + EndOfUpdate(2)).size());
    }
}

TEST(IctVersion2, PoolAndNoPoolDrawTheSamePicture) {
    tests::Random random;
    for (const unsigned chroma : {0u, 1u, 2u}) {
        for (const auto& [width, height] : {std::pair(64, 48), {40, 24}, {101, 33}}) {
            std::vector<std::string> macroblocks;
            for (int i = 0; i < 21; ++i)
                macroblocks.push_back(tests::RandomMacroblock(random, chroma));
            std::string plain;
            std::string records;
            size_t count = 0;
            for (const std::string& macroblock : macroblocks) {
                const std::string record = tests::IctRecord(NoSkip, macroblock);
                if (record.substr(NoSkip.size(), 8) == Bits(0, 8))
                    continue; // too long for a record
                plain += NoSkip + Bits(1, 8) + macroblock;
                records += record;
                ++count;
            }
            ASSERT_GT(count, 0u);
            DecoderUnderTest alone(Settings(2, chroma));
            DecoderUnderTest pooled(Settings(2, chroma, 4));
            const model::ModelRectangle area{0, 0, width, height};
            for (DecoderUnderTest* library : {&alone, &pooled})
                library->SetFramebuffer(ModelSink::Argb, width, height);
            const ModelOutcome first = alone.Update(7, area, plain + EndOfUpdate(2));
            const ModelOutcome second = pooled.Update(7, area, records + EndOfUpdate(2));
            EXPECT_EQ(first.error, "");
            EXPECT_EQ(second.error, "");
            EXPECT_EQ(first.result, second.result);
            EXPECT_TRUE(alone.Memory() == pooled.Memory());
        }
    }
}

TEST(IctVersion2, APoolWithoutRunningWorkersDecodesOnTheDrivingThread) {
    tests::SystemCalls calls;
    calls.m_createCode = EAGAIN;
    tests::Random random;
    for (const unsigned chroma : {0u, 1u, 2u}) {
        DecoderPair pair(Settings(2, chroma, 4));
        pair.SetFramebuffer(ModelSink::Argb, 64, 48);
        for (int run = 0; run < 5; ++run) {
            pair.Update(3, {0, 0, 64, 48},
                        tests::RandomUpdate(random, {false, 2, chroma, true, 0}, 12));
            pair.Update(3, {0, 0, 64, 48},
                        tests::IctRecord(NoSkip, tests::AbortMarker) + EndOfUpdate(2));
        }
    }
    EXPECT_EQ(calls.m_creates, 0u);
}

TEST(IctCreation, ArgumentsOutOfRangeAreRejected) {
    tests::RecordingLogger logger;
    tests::PiecewiseStreambuffer stream(&logger);
    ImageDecoderRenderer renderer(&logger);
    const auto create = [&](unsigned long threads, unsigned version, unsigned chroma) {
        ImageDecoderIct(&renderer, &stream, &logger, threads, version, chroma);
    };
    EXPECT_THROW(create(0, 3, 0), std::invalid_argument);
    EXPECT_THROW(create(4, 0xFFFFFFFF, 0), std::invalid_argument);
    EXPECT_THROW(create(0, 0, 3), std::invalid_argument);
    EXPECT_THROW(create(0, 2, 0xFFFFFFFF), std::invalid_argument);
    for (const unsigned version : {0u, 1u, 2u}) {
        EXPECT_THROW(create(1025, version, 0), std::invalid_argument);
        EXPECT_THROW(create(~0ul, version, 0), std::invalid_argument);
    }
    EXPECT_NO_THROW(create(1024, 1, 2));
}

/// The order in which a transform wants its coefficients tells which one it is.
TEST(IctCreation, AnAcceleratedTransformIsTheDefault) {
    using InverseTransform::InverseIct::InverseIctFactory;
    tests::RecordingLogger logger;
    tests::PiecewiseStreambuffer stream(&logger);
    ImageDecoderRenderer renderer(&logger);
    const auto orderOf = [&](bool accelerated) {
        return ImageDecoderIct(&renderer, &stream, &logger, 0, 0, 0,
                               InverseIctFactory::CreateInverseIct(&logger, accelerated))
            .GetReorderTable();
    };
    const ImageDecoderIct decoder(&renderer, &stream, &logger, 0, 0, 0);
    EXPECT_EQ(decoder.GetReorderTable(), orderOf(true));
    EXPECT_NE(decoder.GetReorderTable(), orderOf(false));
}

TEST(IctCreation, WithoutATransformThereIsNoDecoder) {
    tests::RecordingLogger logger;
    tests::PiecewiseStreambuffer stream(&logger);
    ImageDecoderRenderer renderer(&logger);
    EXPECT_THROW(ImageDecoderIct(&renderer, &stream, &logger, 0, 0, 0, nullptr),
                 ImageDecoderException);
}

} // namespace

} // namespace Vostrel::libimagedecoder
