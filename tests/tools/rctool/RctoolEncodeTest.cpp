#include "tests/tools/rctool/RctoolFixture.h"
#include "tools/recording/Player.h"
#include "tools/recording/RecordingFormat.h"

#include <span>

namespace Vostrel::rctool {
namespace {

using streamencoder::RgbPixel;

std::vector<Record> ReadRecords(const std::string& path) {
    RecordingReader reader(path);
    std::vector<Record> records;
    while (auto record = reader.Next())
        records.push_back(std::move(*record));
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Whole);
    return records;
}

void ExpectArea(const RecordedUpdate& update, int x, int y, int width, int height) {
    const auto& area = update.m_encoded.m_rectangle;
    EXPECT_EQ(area.m_uiX, x);
    EXPECT_EQ(area.m_uiY, y);
    EXPECT_EQ(area.m_uiWidth, width);
    EXPECT_EQ(area.m_uiHeight, height);
}

class RctoolEncode : public Rctool {
protected:
    std::string Saved(const std::string& name, const Picture& picture) const {
        streamencoder::WritePng(In(name), picture);
        return In(name);
    }

    std::string Encoded(const std::string& arguments) const {
        const ProgramRun run =
            RunRctool("encode --quiet --force -o " + In("x.rcrec") + " " + arguments);
        EXPECT_EQ(run.m_iExitCode, 0) << run.m_output;
        return In("x.rcrec");
    }

    void ExpectVerified(const std::string& path) const {
        const ProgramRun run = RunRctool("decode --verify " + path);
        EXPECT_EQ(run.m_iExitCode, 0) << run.m_output;
    }
};

TEST_F(RctoolEncode, SizesBeyondTheLimitAreRefusedAndTheHelpStatesIt) {
    const std::string tooWide = Saved("wide.png", Picture(16385, 1));
    const std::string tooHigh = Saved("high.png", Picture(1, 16385));
    const std::string tooLarge = Saved("large.png", Picture(8192, 8193));
    for (const std::string& frame : {tooWide, tooHigh, tooLarge}) {
        const ProgramRun run = RunRctool("encode -o " + In("x.rcrec") + " " + frame);
        EXPECT_EQ(run.m_iExitCode, 2);
        EXPECT_EQ(run.m_output.find("rctool: " + frame + ": The frame has "), 0U) << run.m_output;
        EXPECT_NE(run.m_output.find("a side may have 16384 pixels, all of it 67108864"),
                  std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(In("x.rcrec")));
    }
    const std::string largest = Saved("largest.png", Picture(16384, 1));
    EXPECT_EQ(RunRctool("encode -o " + In("x.rcrec") + " " + largest).m_iExitCode, 0);
    const std::string help = RunRctool("encode --help").m_output;
    EXPECT_NE(help.find("16384 x 16384"), std::string::npos);
    EXPECT_NE(help.find("67108864"), std::string::npos);
}

TEST_F(RctoolEncode, SizesThatDifferAreRefusedBeforeTheFirstFrameIsEncoded) {
    const std::string frames =
        Saved("a.png", Picture(32, 16)) + " " + Saved("b.png", Picture(32, 17));
    const ProgramRun run = RunRctool("encode -o " + In("x.rcrec") + " " + frames);
    EXPECT_EQ(run.m_iExitCode, 2);
    // Not a line of an encoded frame before it.
    EXPECT_EQ(run.m_output, "rctool: " + In("b.png") +
                                ": The frame has 32 x 17 pixels, the recording's have "
                                "32 x 16 pixels; --resize records frames of several "
                                "sizes\n");
}

TEST_F(RctoolEncode, ARectangleIsTheOnlyPartThatIsEncoded) {
    Picture frame(100, 60, {10, 20, 30});
    const std::string first = Saved("a.png", frame);
    frame.At(40, 30) = {255, 255, 255};
    frame.At(99, 59) = {255, 255, 255};
    const std::string path =
        Encoded("--rectangle 33,17,20,40 " + first + " " + Saved("b.png", frame));
    const auto updates = ReadUpdates(path);
    ASSERT_EQ(updates.size(), 2U);
    for (const RecordedUpdate& update : updates)
        ExpectArea(update, 33, 17, 32, 48); // whole blocks
    ExpectVerified(path);
    // Cut at the frame's edges before it is rounded up.
    ExpectArea(ReadUpdates(Encoded("--rectangle 96,0,900,900 " + first)).at(0), 96, 0, 16, 64);
    EXPECT_EQ(RunRctool("encode -o " + In("y.rcrec") + " --rectangle 100,0,9,9 " + first).m_output,
              "rctool: " + first + ": The rectangle lies outside the frame\n");
    for (const std::string wrong : {"1,2,3", "0,0,0,16", "0,0,16,16,1", "a,0,1,1", "0,0,65536,1"})
        EXPECT_EQ(RunRctool("encode -o " + In("y.rcrec") + " --rectangle " + wrong + " " + first)
                      .m_iExitCode,
                  1)
            << wrong;
}

TEST_F(RctoolEncode, ChangedEncodesTheSmallestRectangleThatChangedAndNothingWhenNoneDid) {
    Picture frame(100, 60, {10, 20, 30});
    const std::string first = Saved("a.png", frame);
    frame.At(40, 30) = frame.At(60, 31) = {255, 255, 255};
    const std::string second = Saved("b.png", frame);
    const std::string path =
        Encoded("--changed --fps 10 " + first + " " + first + " " + second + " " + first);
    const auto updates = ReadUpdates(path);
    ASSERT_EQ(updates.size(), 3U);
    ExpectArea(updates[0], 0, 0, 112, 64);
    ExpectArea(updates[1], 40, 30, 32, 16); // 21 x 2 pixels
    EXPECT_EQ(updates[1].m_uiTime, 200'000U);
    ExpectArea(updates[2], 40, 30, 32, 16);
    ExpectVerified(path);
    const ProgramRun loud =
        RunRctool("encode --changed --force -o " + In("x.rcrec") + " " + first + " " + first);
    EXPECT_NE(loud.m_output.find(first + ": nothing changed, no update\n"), std::string::npos);
}

TEST_F(RctoolEncode, ResizeRecordsTheNewSizeAndAWholeUpdate) {
    const std::string small = Saved("a.png", Picture(32, 16, {200, 0, 0}));
    const std::string large = Saved("b.png", Picture(48, 40, {0, 200, 0}));
    const std::string path = Encoded("--resize " + small + " " + large + " " + large + " " + small);
    const auto records = ReadRecords(path);
    ASSERT_EQ(records.size(), 6U);
    ExpectArea(std::get<RecordedUpdate>(records[0]), 0, 0, 32, 16);
    EXPECT_EQ(std::get<Settings>(records[1]).m_uiWidth, 48);
    EXPECT_EQ(std::get<Settings>(records[1]).m_uiHeight, 40);
    ExpectArea(std::get<RecordedUpdate>(records[2]), 0, 0, 48, 48);
    EXPECT_EQ(std::get<Settings>(records[4]).m_uiWidth, 32);
    ExpectVerified(path);
    EXPECT_EQ(RunRctool("encode --append --resize -o " + path + " " + large).m_iExitCode, 0);
    EXPECT_EQ(ReadRecords(path).size(), 8U);
    ExpectVerified(path);
}

TEST_F(RctoolEncode, CodecsTakeFramesInTurnAndDrawOnOneScreen) {
    Picture frame(64, 48, {10, 20, 30});
    const std::string first = Saved("a.png", frame);
    frame.At(40, 30) = {255, 255, 255};
    const std::string second = Saved("b.png", frame);
    const std::string path = Encoded("--codec ict,lbe " + first + " " + second + " " + first);
    RecordingReader reader(path);
    const auto decoders = reader.FindDecoders();
    ASSERT_EQ(decoders.size(), 2U);
    EXPECT_EQ(decoders[0].m_codec, Codec::Ict);
    EXPECT_EQ(decoders[1].m_codec, Codec::Lbe);
    std::vector<int> indexes;
    Player player(reader.GetHeader(), {});
    while (const auto record = reader.Next()) {
        if (const auto* const added = std::get_if<AddedDecoder>(&*record))
            player.Apply(*added);
        if (const auto* const update = std::get_if<RecordedUpdate>(&*record)) {
            indexes.push_back(update->m_uiDecoder);
            player.Play(*update);
        }
    }
    EXPECT_EQ(indexes, (std::vector<int>{0, 1, 0}));
    // One block of three times four was drawn by LBE, then again by ICT: all is ground colour.
    const RgbPixel ground = player.GetFramebuffer().GetPicture().At(40, 30);
    EXPECT_NEAR(ground[0], 10, 3);
    EXPECT_NEAR(ground[1], 20, 3);
    ExpectVerified(path);
}

TEST_F(RctoolEncode, AppendAddsTheCodecThatTheRecordingDoesNotHoldYet) {
    const std::string frame = Saved("a.png", Picture(64, 48, {10, 20, 30}));
    const std::string path = Encoded("--chroma 444 " + frame);
    const auto before = ReadBytes(path);
    const std::string append = "encode --quiet --append -o " + path + " " + frame;
    for (const std::string options : {" --codec lbe", " --codec lbe", " --codec ict", ""})
        ASSERT_EQ(RunRctool(append + options).m_iExitCode, 0) << options;
    const auto after = ReadBytes(path);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin()));
    RecordingReader reader(path);
    const auto decoders = reader.FindDecoders();
    ASSERT_EQ(decoders.size(), 2U);
    EXPECT_EQ(decoders[1].m_codec, Codec::Lbe);
    EXPECT_EQ(decoders[1].m_chroma, ChromaSubsampling::Yuv444);
    std::vector<int> indexes;
    for (const Record& record : ReadRecords(path)) {
        if (const auto* const update = std::get_if<RecordedUpdate>(&record))
            indexes.push_back(update->m_uiDecoder);
    }
    EXPECT_EQ(indexes, (std::vector<int>{0, 1, 1, 0, 0}));
    ExpectVerified(path);
    EXPECT_EQ(RunRctool(append + " --codec lbe --quality 12").m_iExitCode, 1);
    EXPECT_EQ(ReadBytes(path), after);
}

/// The bytes of a recording by the writer, as version 1 had them.
TEST_F(RctoolEncode, ARecordingOfVersion1StaysOneAndTakesNoOtherCodec) {
    const std::string frame = Saved("a.png", Picture(32, 16, {10, 20, 30}));
    const std::string path = Encoded(frame);
    auto bytes = ReadBytes(path);
    bytes.resize(40);
    bytes[8] = 1;
    const uint32_t crc = Crc32(std::span(bytes).first(36));
    for (size_t i = 0; i < 4; ++i)
        bytes[36 + i] = static_cast<uint8_t>(crc >> 8 * i);
    WriteBytes(path, bytes);
    const std::string append = "encode --quiet --append -o " + path + " " + frame;
    ASSERT_EQ(RunRctool(append).m_iExitCode, 0);
    EXPECT_EQ(RecordingReader(path).GetFileVersion(), 1);
    ExpectVerified(path);
    const auto before = ReadBytes(path);
    const ProgramRun refused = RunRctool(append + " --codec lbe");
    EXPECT_EQ(refused.m_iExitCode, 2);
    EXPECT_NE(refused.m_output.find("A recording of version 1 holds updates of one decoder only"),
              std::string::npos);
    EXPECT_EQ(ReadBytes(path), before);
}

} // namespace
} // namespace Vostrel::rctool
