#include "tools/walker/StreamWalker.h"
#include "tests/model/BitText.h"
#include "tests/model/CaseFile.h"
#include "tests/model/ModelDecoder.h"
#include "tests/support/Random.h"
#include "tools/walker/StreamStatistics.h"

#include <gtest/gtest.h>

namespace Vostrel::walker {
namespace {

using model::BytesOf;
using streamencoder::ChromaSubsampling;
using streamencoder::Codec;
using streamencoder::EncodedUpdate;

/// Keeps what it is told.
class Told : public IStreamVisitor {
public:
    void OnSkip(const SkipCode& skip) override { m_vSkips.push_back(skip); }
    void OnSymbol(const Symbol& symbol) override { m_vSymbols.push_back(symbol); }
    void OnTile(const Tile& tile) override { m_vTiles.push_back(tile); }
    void OnMacroblock(const Macroblock& block) override { m_vBlocks.push_back(block); }
    void OnError(const StreamFault& fault) override { m_vFaults.push_back(fault); }

    std::vector<SkipCode> m_vSkips;
    std::vector<Symbol> m_vSymbols;
    std::vector<Tile> m_vTiles;
    std::vector<Macroblock> m_vBlocks;
    std::vector<StreamFault> m_vFaults;
};

// A tile whose DC difference has no bits, and nothing else: luma 00 and 1010, chroma 00 and 00.
constexpr const char* FlatMacroblock420 = "00 1010  00 1010  00 1010  00 1010  00 00  00 00";
constexpr size_t FlatBits = 4 * 6 + 2 * 4;
constexpr const char* EndMarker = "11 1111111111111111";
constexpr size_t EndBits = 18;

EncodedUpdate UpdateOf(const std::string& bits, uint16_t width, uint16_t height,
                       uint32_t quality = 10) {
    return {quality, {0, 0, width, height}, BytesOf(bits)};
}

constexpr WalkFormat Ict1{Codec::Ict, 1, ChromaSubsampling::Yuv420, false};
constexpr WalkFormat IctPool{Codec::Ict, 2, ChromaSubsampling::Yuv420, true};

TEST(StreamWalker, TellsSkipCodesMacroblocksAndTilesWithTheirBits) {
    // Row 0: the third of three. Row 1: the first.
    const auto update = UpdateOf(
        std::string("10 000010") + FlatMacroblock420 + "0" + FlatMacroblock420 + EndMarker, 48, 32);
    Told told;
    const auto end = StreamWalker(Ict1).Walk(update, told);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->m_uiMacroblocks, 6U);
    EXPECT_EQ(end->m_uiCoded, 2U);
    EXPECT_EQ(end->m_uiBits, 8 + FlatBits + 1 + FlatBits + EndBits);
    ASSERT_EQ(told.m_vSkips.size(), 3U);
    EXPECT_EQ(told.m_vSkips[0].m_count, 2U);
    EXPECT_EQ(told.m_vSkips[1].m_count, 0U);
    EXPECT_FALSE(told.m_vSkips[2].m_count);
    EXPECT_EQ(told.m_vSkips[2].m_bits, (BitSpan{8 + FlatBits + 1 + FlatBits, EndBits}));
    ASSERT_EQ(told.m_vBlocks.size(), 2U);
    EXPECT_EQ(told.m_vBlocks[0].m_uiIndex, 2U);
    EXPECT_EQ(told.m_vBlocks[0].m_place.m_uiLeft, 32U);
    EXPECT_EQ(told.m_vBlocks[0].m_record, (BitSpan{0, 8 + FlatBits}));
    EXPECT_EQ(told.m_vBlocks[0].m_data, (BitSpan{8, FlatBits}));
    EXPECT_EQ(told.m_vBlocks[1].m_uiIndex, 3U);
    EXPECT_EQ(told.m_vBlocks[1].m_place.m_uiTop, 16U);
    ASSERT_EQ(told.m_vTiles.size(), 12U);
    EXPECT_EQ(told.m_vTiles[3].m_bits, (BitSpan{8 + 18, 6}));
    EXPECT_EQ(told.m_vTiles[4].m_component, libimagedecoder::ComponentCb);
    EXPECT_EQ(told.m_vTiles[5].m_bits, (BitSpan{8 + 28, 4}));
}

TEST(StreamWalker, TellsSymbolsWithCodeValueAndPosition) {
    // DC size 3 (100), 010 is -5; AC run 2 size 1 (11100), 0 is -1; ZRL; end.
    const std::string tile = "100 010  11100 0  11111111001  1010";
    Told told;
    const auto update =
        UpdateOf("0" + tile + "00 1010 00 1010 00 1010 00 00 00 00" + EndMarker, 16, 16);
    ASSERT_TRUE(StreamWalker(Ict1).Walk(update, told));
    const Symbol& dc = told.m_vSymbols[0];
    EXPECT_EQ(dc.m_kind, SymbolKind::DcDifference);
    EXPECT_EQ(dc.m_bits, (BitSpan{1, 6}));
    EXPECT_EQ(dc.m_uiCodeBits, 3U);
    EXPECT_EQ(dc.m_iValue, -5);
    const Symbol& ac = told.m_vSymbols[1];
    EXPECT_EQ(ac.m_kind, SymbolKind::Coefficient);
    EXPECT_EQ(ac.m_bits, (BitSpan{7, 6}));
    EXPECT_EQ(ac.m_uiRun, 2U);
    EXPECT_EQ(ac.m_uiPosition, 3U);
    EXPECT_EQ(ac.m_iValue, -1);
    EXPECT_EQ(told.m_vSymbols[2].m_kind, SymbolKind::ZeroRun);
    EXPECT_EQ(told.m_vSymbols[2].m_uiPosition, 19U);
    EXPECT_EQ(told.m_vSymbols[3].m_kind, SymbolKind::EndOfTile);
    EXPECT_EQ(told.m_vSymbols[3].m_bits, (BitSpan{24, 4}));
    EXPECT_EQ(told.m_vTiles[0].m_uiSymbols, 4U);
}

TEST(StreamWalker, NamesTheBitOfAnAbortMarker) {
    Told told;
    const auto update = UpdateOf(std::string("0") + FlatMacroblock420 + "0 00 1010" +
                                     "1111111110 0000 0000 0000 0000",
                                 32, 16);
    EXPECT_FALSE(StreamWalker(Ict1).Walk(update, told));
    ASSERT_EQ(told.m_vFaults.size(), 1U);
    const StreamFault& fault = told.m_vFaults[0];
    EXPECT_EQ(fault.m_uiBit, 1 + FlatBits + 1 + 6);
    EXPECT_EQ(fault.m_expected, "a DC code of size 0 to 11");
    EXPECT_EQ(fault.m_macroblock, 1U);
    EXPECT_EQ(fault.m_tile, 1U);
    EXPECT_EQ(fault.m_failure, "StreamError");
}

TEST(StreamWalker, NamesTheBitOfACoefficientBehindTheTile) {
    // Three ZRL reach position 48; run 14 size 1 is position 63; one more coefficient is too many.
    const std::string zrl = "11111111001";
    const std::string run14size1 = "1111111111101011 1";
    const std::string run0size1 = "00 1";
    Told told;
    const auto update =
        UpdateOf("0 00" + zrl + zrl + zrl + run14size1 + run0size1 + "1010" + EndMarker, 16, 16);
    EXPECT_FALSE(StreamWalker(Ict1).Walk(update, told));
    ASSERT_EQ(told.m_vFaults.size(), 1U);
    EXPECT_EQ(told.m_vFaults[0].m_uiBit, 3 + 33 + 17U);
    EXPECT_EQ(told.m_vFaults[0].m_expected, "an end of tile");
    EXPECT_EQ(told.m_vFaults[0].m_found, "00: run 0, size 1");
}

TEST(StreamWalker, NamesTheFieldThatTheDataEndIn) {
    Told told;
    EXPECT_FALSE(StreamWalker(Ict1).Walk(UpdateOf("0 00 1010 0", 16, 16), told));
    ASSERT_EQ(told.m_vFaults.size(), 1U);
    // Zeros behind the end are DC codes of size 0 and AC codes 0/1 until 16 bits are not there.
    EXPECT_EQ(told.m_vFaults[0].m_failure, "Stream has no more bytes!");
    EXPECT_EQ(told.m_vFaults[0].m_found, "the end of the data at bit 8");
    EXPECT_GE(told.m_vFaults[0].m_uiBit, 8U);
    EXPECT_LT(told.m_vFaults[0].m_uiBit, 8U + 16);
}

TEST(StreamWalker, CutsRecordsWhereADecoderWithAPoolDoes) {
    // 1 + 8 + 32 bits are 6 bytes with the filling.
    const std::string record = std::string("0 00000110") + FlatMacroblock420 + "0000000";
    Told told;
    const auto end =
        StreamWalker(IctPool).Walk(UpdateOf(record + record + EndMarker, 48, 16), told);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->m_uiCoded, 2U);
    EXPECT_EQ(told.m_vBlocks[0].m_record, (BitSpan{0, 48}));
    EXPECT_EQ(told.m_vBlocks[0].m_data, (BitSpan{9, FlatBits}));
    EXPECT_TRUE(told.m_vBlocks[0].m_bCut);
    EXPECT_EQ(told.m_vBlocks[1].m_record, (BitSpan{48, 48}));
}

TEST(StreamWalker, NamesALengthThatIsTooSmallOrTooLarge) {
    Told tooSmall;
    StreamWalker(IctPool).Walk(UpdateOf(std::string("0 00000001") + FlatMacroblock420, 16, 16),
                               tooSmall);
    ASSERT_EQ(tooSmall.m_vFaults.size(), 1U);
    EXPECT_EQ(tooSmall.m_vFaults[0].m_uiBit, 1U);
    EXPECT_EQ(tooSmall.m_vFaults[0].m_expected, "a length of at least 2 bytes");
    Told tooLarge;
    StreamWalker(IctPool).Walk(UpdateOf(std::string("0 00001000") + FlatMacroblock420, 16, 16),
                               tooLarge);
    ASSERT_EQ(tooLarge.m_vFaults.size(), 1U);
    EXPECT_EQ(tooLarge.m_vFaults[0].m_found, "length 8, 2 bytes beyond their end");
    EXPECT_EQ(tooLarge.m_vFaults[0].m_failure, "Stream has no more bytes!");
}

TEST(StreamWalker, TellsLiteralsAndRunsOfLbe) {
    // Version 0, quality 2: literals of 2 and 6 bits, long counts of 8 and 6 bits.
    const std::string luma = "0 11  1 10 1  1 01 0001  1 11 1110 11110000 1 01 1111";
    const std::string chroma = "0 101010  1 01 1110 000001  1 11 1111";
    const WalkFormat format{Codec::Lbe, 0, ChromaSubsampling::Yuv420, false};
    Told told;
    const auto end = StreamWalker(format).Walk(
        UpdateOf("0" + luma + chroma + "11 11111111111111", 16, 16, 2), told);
    ASSERT_TRUE(end);
    ASSERT_EQ(told.m_vSymbols.size(), 8U);
    EXPECT_EQ(told.m_vSymbols[0].m_kind, SymbolKind::Literal);
    EXPECT_EQ(told.m_vSymbols[0].m_iValue, 3);
    EXPECT_EQ(told.m_vSymbols[1].m_kind, SymbolKind::RunFromLeft);
    EXPECT_EQ(told.m_vSymbols[1].m_uiRun, 2U);
    EXPECT_EQ(told.m_vSymbols[2].m_kind, SymbolKind::RunFromAbove);
    EXPECT_EQ(told.m_vSymbols[2].m_uiRun, 4U);
    EXPECT_EQ(told.m_vSymbols[2].m_uiPosition, 3U);
    EXPECT_EQ(told.m_vSymbols[3].m_uiRun, 243U);
    EXPECT_EQ(told.m_vSymbols[4].m_uiRun, 256U - 250);
    EXPECT_EQ(told.m_vSymbols[5].m_iValue, 42);
    EXPECT_EQ(told.m_vSymbols[6].m_uiRun, 4U);
    EXPECT_EQ(told.m_vSymbols[7].m_uiRun, 59U);
    EXPECT_EQ(told.m_vTiles[0].m_bits, (BitSpan{1, 3 + 4 + 7 + 15 + 7}));
}

TEST(StreamWalker, NamesAQualityThatLbeLacks) {
    const WalkFormat format{Codec::Lbe, 1, ChromaSubsampling::Yuv420, false};
    Told told;
    EXPECT_FALSE(StreamWalker(format).Walk(UpdateOf(EndMarker, 16, 16, 12), told));
    ASSERT_EQ(told.m_vFaults.size(), 1U);
    EXPECT_EQ(told.m_vFaults[0].m_found, "quality 12");
}

TEST(StreamWalker, NamesARectangleLargerThanTheScreen) {
    StreamWalker streamWalker(Ict1);
    streamWalker.SetResolution(17, 16);
    Told told;
    EXPECT_TRUE(streamWalker.Walk(UpdateOf(EndMarker, 32, 16), told));
    EXPECT_FALSE(streamWalker.Walk(UpdateOf(EndMarker, 33, 16), told));
    EXPECT_EQ(told.m_vFaults.at(0).m_found, "33 x 16 pixels");
}

TEST(StreamWalker, TheRangeOfAFaultEndsWithTheCodeThatIsRefused) {
    // The abort marker, which has 10 bits, at bit 1 + 6: what follows it was not needed.
    Told told;
    StreamWalker(Ict1).Walk(UpdateOf("0 00 1010 1111111110 000000000000000", 16, 16), told);
    EXPECT_EQ(told.m_vFaults.at(0).m_range, (BitSpan{0, 7 + 10}));
    EXPECT_FALSE(told.m_vFaults[0].m_bMayBeCut);
    // Of a coefficient that lies past the tile the code decides, not the bits of its level.
    const std::string zrl = "11111111001";
    const std::string run15size2 = "1111111111110110";
    Told past;
    StreamWalker(Ict1).Walk(UpdateOf("0 00" + zrl + zrl + zrl + run15size2 + "11 000000", 16, 16),
                            past);
    EXPECT_EQ(past.m_vFaults.at(0).m_uiBit, 3 + 33U);
    EXPECT_EQ(past.m_vFaults[0].m_range, (BitSpan{0, 3 + 33 + 16}));
}

TEST(StreamWalker, TheRangeOfAFaultBeginsAfterTheLastRecordThatWasCutOut) {
    const std::string record = std::string("0 00000110") + FlatMacroblock420 + "0000000";
    const std::string aborts = "0 00000110 00 1010 1111111110" + std::string(23, '0');
    Told told;
    StreamWalker(IctPool).Walk(UpdateOf(record + record + aborts + EndMarker, 48, 16), told);
    ASSERT_EQ(told.m_vFaults.size(), 1U);
    EXPECT_EQ(told.m_vFaults[0].m_range, (BitSpan{96, 9 + 6 + 10}));
}

TEST(StreamWalker, TheRangeOfAFaultReachesToTheEndOfDataThatMayBeCut) {
    Told cut;
    StreamWalker(Ict1).Walk(UpdateOf("0 00 1010 0", 16, 16), cut);
    EXPECT_EQ(cut.m_vFaults.at(0).m_range, (BitSpan{0, 8}));
    EXPECT_TRUE(cut.m_vFaults[0].m_bMayBeCut);
    // A record that ends too early lies whole in the data.
    Told record;
    StreamWalker(IctPool).Walk(
        UpdateOf("0 00000011" + std::string(15, '0') + std::string(64, '0'), 16, 16), record);
    EXPECT_EQ(record.m_vFaults.at(0).m_failure, "Stream has no more bytes!");
    EXPECT_EQ(record.m_vFaults[0].m_range, (BitSpan{0, 24}));
    EXPECT_FALSE(record.m_vFaults[0].m_bMayBeCut);
}

TEST(StreamWalker, TheRangeIsEmptyForAFaultOutsideTheData) {
    Told quality;
    const WalkFormat lbe{Codec::Lbe, 1, ChromaSubsampling::Yuv420, false};
    StreamWalker(lbe).Walk(UpdateOf(EndMarker, 16, 16, 12), quality);
    EXPECT_EQ(quality.m_vFaults.at(0).m_range.m_uiCount, 0U);
    StreamWalker small(Ict1);
    small.SetResolution(16, 16);
    Told rectangle;
    small.Walk(UpdateOf(EndMarker, 48, 16), rectangle);
    EXPECT_EQ(rectangle.m_vFaults.at(0).m_range.m_uiCount, 0U);
}

TEST(StreamWalker, TheDecoderUsesTheLowBitsOfAQuality) {
    EXPECT_EQ(UsedQuality(Ict1, 26), 10U);
    EXPECT_EQ(UsedQuality({Codec::Ict, 0, ChromaSubsampling::Yuv420, false}, 31), 15U);
    EXPECT_EQ(UsedQuality({Codec::Lbe, 0, ChromaSubsampling::Yuv420, false}, 26), 2U);
    EXPECT_EQ(UsedQuality({Codec::Lbe, 1, ChromaSubsampling::Yuv420, false}, 26), 10U);
}

/// The case files' updates, each with what a walker needs.
struct WalkedCase {
    model::CaseLife m_life;
    WalkFormat m_format;
};

std::vector<WalkedCase> WalkedCases() {
    std::vector<WalkedCase> cases;
    for (const auto& path : model::ListCaseFiles()) {
        WalkedCase walked{model::ReadCaseFile(path), {}};
        const model::CaseLife& life = walked.m_life;
        walked.m_format = {life.codec == 0 ? Codec::Ict : Codec::Lbe, life.version,
                           static_cast<ChromaSubsampling>(life.chroma),
                           life.version >= 2 && life.threads != 0};
        cases.push_back(std::move(walked));
    }
    return cases;
}

EncodedUpdate ToEncoded(const model::CaseUpdate& update) {
    return {update.quality, {update.x, update.y, update.w, update.h}, update.stream};
}

TEST(StreamWalker, FindsTheFaultsAndEndsOfTheCaseFiles) {
    size_t faults = 0;
    for (const WalkedCase& walked : WalkedCases()) {
        StreamWalker streamWalker(walked.m_format);
        streamWalker.SetResolution(walked.m_life.fbWidth, walked.m_life.fbHeight);
        for (const model::CaseUpdate& update : walked.m_life.updates) {
            Told told;
            const auto end = streamWalker.Walk(ToEncoded(update), told);
            EXPECT_EQ(end.has_value(), update.result != -1);
            faults += told.m_vFaults.size();
            if (!update.error.empty()) {
                EXPECT_EQ(told.m_vFaults.at(0).m_failure, update.error);
            }
        }
    }
    EXPECT_GT(faults, 0U);
}

TEST(StreamWalker, EveryBitOfAnUpdateBelongsToExactlyOneUse) {
    for (const WalkedCase& walked : WalkedCases()) {
        const StreamWalker streamWalker(walked.m_format);
        for (const model::CaseUpdate& update : walked.m_life.updates) {
            StreamStatistics statistics;
            const auto end = streamWalker.Walk(ToEncoded(update), statistics);
            if (!end)
                continue;
            statistics.AddUpdate(*end, update.stream.size());
            size_t sum = statistics.m_uiSkipBits + statistics.m_uiLengthBits +
                         static_cast<size_t>(statistics.m_iFillingBits);
            for (const size_t bits : statistics.m_auiComponentBits)
                sum += bits;
            EXPECT_EQ(sum, 8 * update.stream.size());
            size_t symbolBits = 0;
            for (const auto& [symbolClass, count] : statistics.m_symbols)
                symbolBits += count.m_uiBits;
            size_t componentBits = 0;
            for (const size_t bits : statistics.m_auiComponentBits)
                componentBits += bits;
            EXPECT_EQ(symbolBits, componentBits);
        }
    }
}

TEST(StreamStatistics, ZerosReadBehindTheDataAreTakenFromTheFilling) {
    // Eight macroblocks of 33 bits fill 33 bytes; the last skip code is the first zero behind them.
    std::string bits;
    for (int i = 0; i < 8; ++i)
        bits += std::string("0 ") + FlatMacroblock420;
    const EncodedUpdate update = UpdateOf(bits, 128, 16);
    ASSERT_EQ(update.m_vuiPayload.size(), 33U);
    StreamStatistics statistics;
    const auto end = StreamWalker(Ict1).Walk(update, statistics);
    ASSERT_TRUE(end);
    statistics.AddUpdate(*end, update.m_vuiPayload.size());
    EXPECT_EQ(statistics.m_iFillingBits, -1);
}

/// Whether a bit lies in a skip code, a length or a macroblock that was decoded in place.
bool DecidesWhereRecordsBegin(const Told& told, size_t bit) {
    const auto covers = [bit](const BitSpan& span) {
        return span.m_uiFirst <= bit && bit < span.End();
    };
    const auto skip = [&](const SkipCode& code) { return covers(code.m_bits); };
    const auto block = [&](const Macroblock& walked) {
        return covers(walked.m_length) || (!walked.m_bCut && covers(walked.m_data));
    };
    return std::any_of(told.m_vSkips.begin(), told.m_vSkips.end(), skip) ||
           std::any_of(told.m_vBlocks.begin(), told.m_vBlocks.end(), block);
}

TEST(StreamWalker, TheRangeOfAFaultHoldsTheBitThatWasFlipped) {
    tests::Random random;
    const auto cases = WalkedCases();
    size_t faults = 0;
    size_t laterRanges = 0;
    for (int round = 0; round < 6000; ++round) {
        const WalkedCase& walked = cases[random.Below(cases.size())];
        const StreamWalker streamWalker(walked.m_format);
        const auto& updates = walked.m_life.updates;
        EncodedUpdate update = ToEncoded(updates[random.Below(updates.size())]);
        const size_t bytes = update.m_vuiPayload.size();
        Told good;
        if (bytes == 0 || bytes > 4096 || !streamWalker.Walk(update, good))
            continue;
        const size_t bit = random.Below(8 * bytes);
        update.m_vuiPayload[bit / 8] ^= static_cast<uint8_t>(0x80U >> bit % 8);
        Told told;
        if (streamWalker.Walk(update, told))
            continue;
        const BitSpan range = told.m_vFaults.at(0).m_range;
        ++faults;
        laterRanges += range.m_uiFirst != 0;
        ASSERT_LT(bit, range.End()) << round;
        ASSERT_TRUE(bit >= range.m_uiFirst || DecidesWhereRecordsBegin(good, bit)) << round;
    }
    EXPECT_GT(faults, 300U);
    EXPECT_GT(laterRanges, 30U);
}

TEST(StreamWalker, FailsAsTheModelDoesOnSpoiledUpdates) {
    tests::Random random;
    const auto cases = WalkedCases();
    size_t faults = 0;
    for (int round = 0; round < 4000; ++round) {
        const WalkedCase& walked = cases[random.Below(cases.size())];
        const model::CaseLife& life = walked.m_life;
        EncodedUpdate update = ToEncoded(life.updates[random.Below(life.updates.size())]);
        const auto& area = update.m_rectangle;
        if (size_t{area.m_uiWidth} * area.m_uiHeight > 128 * 128 || update.m_vuiPayload.empty())
            continue;
        for (int flips = random.Between(1, 4); flips > 0; --flips) {
            const size_t bit = random.Below(8 * update.m_vuiPayload.size());
            uint8_t& byte = update.m_vuiPayload[bit / 8];
            byte = static_cast<uint8_t>(byte ^ 1 << bit % 8);
        }
        if (random.OneIn(4))
            update.m_vuiPayload.resize(random.Below(update.m_vuiPayload.size()));

        model::ModelDecoder decoder(
            {life.codec == 0 ? model::ModelCodec::Ict : model::ModelCodec::Lbe, life.version,
             life.chroma, life.threads, model::KernelRule::Portable});
        decoder.SetFramebuffer(model::ModelSink::Argb, life.fbWidth, life.fbHeight);
        model::ModelStream stream(update.m_vuiPayload,
                                  std::max<size_t>(update.m_vuiPayload.size(), 1));
        const auto outcome = decoder.Update(
            update.m_uiQuality, {area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight}, stream);
        StreamWalker streamWalker(walked.m_format);
        streamWalker.SetResolution(life.fbWidth, life.fbHeight);
        Told told;
        const auto end = streamWalker.Walk(update, told);
        ASSERT_EQ(end.has_value(), outcome.result != ~uint64_t{0}) << round << outcome.error;
        if (!end) {
            ++faults;
            // LBE refuses a quality without a word.
            const std::string text =
                outcome.error.empty() ? "The quality is unknown" : outcome.error;
            ASSERT_EQ(told.m_vFaults.at(0).m_failure, text) << round;
        }
    }
    EXPECT_GT(faults, 100U);
}

} // namespace
} // namespace Vostrel::walker
