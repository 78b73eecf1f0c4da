#include "tests/tools/rctool/RctoolFixture.h"
#include "tools/rctool/FrameRate.h"
#include "tools/rctool/Y4mWriter.h"

#include <nlohmann/json.hpp>

#include <sstream>

namespace Vostrel::rctool {
namespace {

using Json = nlohmann::json;
using Bytes = std::vector<uint8_t>;

/// A recording of pictures of one colour each, at these times.
class RctoolExport : public Rctool {
protected:
    std::string Coloured(const std::vector<uint64_t>& times, unsigned width = 16) const {
        const std::string path = In("coloured.rcrec");
        Header header;
        header.m_layout = RecordLayout::InPlace;
        header.m_settings.m_uiWidth = static_cast<uint16_t>(width);
        header.m_settings.m_uiHeight = 16;
        std::string frames;
        for (size_t i = 0; i < times.size(); ++i) {
            const auto grey = static_cast<uint8_t>(10 * (i + 1));
            streamencoder::WritePng(In("c" + std::to_string(i) + ".png"),
                                    Picture(width, 16, {grey, grey, grey}));
            frames += " " + In("c" + std::to_string(i) + ".png");
        }
        EXPECT_EQ(RunRctool("encode --quiet --force -o " + path + frames).m_iExitCode, 0);
        const auto updates = ReadUpdates(path);
        RecordingReader reader(path);
        RecordingWriter writer(In("timed.rcrec"), reader.GetHeader());
        for (size_t i = 0; i < times.size(); ++i) {
            RecordedUpdate update = updates[i];
            update.m_uiTime = times[i];
            writer.Write(update);
        }
        writer.Close();
        return In("timed.rcrec");
    }

    /// The number of the colour that every frame of a video shows.
    std::vector<int> ColoursOf(const std::string& arguments, const std::string& header) const {
        const ProgramRun run = RunRctoolQuietly("export --y4m - " + arguments);
        EXPECT_EQ(run.m_iExitCode, 0);
        EXPECT_EQ(run.m_output.substr(0, run.m_output.find('\n')), header);
        std::vector<int> colours;
        constexpr size_t FrameBytes = 6 + 16 * 16 * 3 / 2;
        for (size_t at = run.m_output.find('\n') + 1; at < run.m_output.size(); at += FrameBytes) {
            EXPECT_EQ(run.m_output.substr(at, 6), "FRAME\n");
            colours.push_back((static_cast<uint8_t>(run.m_output[at + 6]) + 5) / 10 - 1);
        }
        return colours;
    }
};

std::string HeaderFor(const std::string& rate, const std::string& size = "W16 H16",
                      const std::string& chroma = "C420jpeg") {
    return "YUV4MPEG2 " + size + " F" + rate + " Ip A1:1 " + chroma + " XCOLORRANGE=FULL";
}

TEST(FrameRate, IsExactForWholeNumbersAndTelevision) {
    EXPECT_EQ(RateOf(25), (FrameRate{25, 1}));
    EXPECT_EQ(RateOf(30000.0 / 1001), (FrameRate{30000, 1001}));
    EXPECT_EQ(RateOf(12.5), (FrameRate{25, 2}));
    EXPECT_EQ(RateOf(0.001), (FrameRate{1, 1000}));
    EXPECT_EQ(RateOf(1e6), (FrameRate{1000000, 1}));
}

TEST(FrameRate, IsConstantWhenTimesDifferByRoundingOnly) {
    EXPECT_EQ(ConstantRate({0, 33333, 66666, 100000}), (FrameRate{30, 1}));
    EXPECT_EQ(ConstantRate({500, 33833}), (FrameRate{30, 1}));
    EXPECT_EQ(ConstantRate({0, 33366, 66733, 100100}), (FrameRate{30000, 1001}));
    EXPECT_EQ(ConstantRate({0, 40000, 80003}), std::nullopt);
    EXPECT_EQ(ConstantRate({0, 40000, 80000, 200000}), std::nullopt);
    for (const std::vector<uint64_t>& none : {std::vector<uint64_t>{}, {7}, {7, 7}, {9, 7}})
        EXPECT_EQ(ConstantRate(none), std::nullopt);
}

TEST(FrameRate, AnUpdateIsSeenFromTheFirstFrameThatIsNotBeforeIt) {
    const FrameRate rate{10, 1};
    EXPECT_EQ(FrameOf(rate, 0), 0U);
    EXPECT_EQ(FrameOf(rate, 100'000), 1U);
    EXPECT_EQ(FrameOf(rate, 100'001), 1U); // may have been rounded
    EXPECT_EQ(FrameOf(rate, 100'002), 2U);
    for (uint64_t i = 0; i < 1000; ++i)
        EXPECT_EQ(FrameOf({30000, 1001}, i * 1'001'000 / 30), i);
}

TEST_F(RctoolExport, RawUpdatesAreTheRecordedPayloadsWithAnIndex) {
    const std::string path = Recorded("--codec ict,lbe --fps 8");
    const ProgramRun run = RunRctool("export " + path + " -o " + In("raw/updates"));
    EXPECT_EQ(run.m_output, In("raw/updates") + ": 2 updates\n");
    const auto updates = ReadUpdatesOnly(path);
    std::ifstream in(In("raw/updates/index.json"));
    const Json index = Json::parse(in);
    ASSERT_EQ(index["updates"].size(), 2U);
    for (size_t i = 0; i < 2; ++i) {
        const Json& entry = index["updates"][i];
        EXPECT_EQ(entry["file"], "update-0000" + std::to_string(i) + ".bin");
        EXPECT_EQ(ReadBytes(In("raw/updates/") + entry["file"].get<std::string>()),
                  updates[i].m_encoded.m_vuiPayload);
        EXPECT_EQ(entry["time"], 125'000 * i);
        EXPECT_EQ(entry["decoder"], i);
        EXPECT_EQ(entry["codec"], i == 0 ? "ict" : "lbe");
    }
    EXPECT_EQ(index["decoders"][1]["layout"], "pool");
    EXPECT_EQ(FilesIn(In("raw/updates")).size(), 3U);
    EXPECT_EQ(RunRctool("export " + path + " -o " + In("raw/updates")).m_iExitCode, 2);
    EXPECT_EQ(RunRctool("export --force " + path + " -o " + In("raw/updates")).m_iExitCode, 0);
    EXPECT_EQ(RunRctool("export " + path).m_iExitCode, 1);
}

TEST_F(RctoolExport, AVideoHasTheRecordingsOwnConstantRate) {
    EXPECT_EQ(ColoursOf(Coloured({5000, 38333, 71666, 105000}), HeaderFor("30:1")),
              (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(RctoolExport, FramesAreRepeatedAndLeftOutByTime) {
    // At 10 frames a second: the second update falls between frames 0 and 1, the third into frame 1
    // as well, the last at 0.45 s is seen from frame 5 on.
    const std::string path = Coloured({1'000'000, 1'030'000, 1'100'000, 1'450'000});
    EXPECT_EQ(ColoursOf("--fps 10 " + path, HeaderFor("10:1")),
              (std::vector<int>{0, 2, 2, 2, 2, 3}));
    // Without a constant period 25 frames a second: 1 from 0.04, 2 from 0.12, 3 from 0.48 s on.
    EXPECT_EQ(ColoursOf(path, HeaderFor("25:1")),
              (std::vector<int>{0, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3}));
    const ProgramRun tooLong =
        RunRctool("export --y4m - --fps 1000000 " + Coloured({0, 20'000'000'000}));
    EXPECT_EQ(tooLong.m_iExitCode, 2);
    EXPECT_NE(tooLong.m_output.find("a lower --fps"), std::string::npos);
}

TEST_F(RctoolExport, AVideoHoldsFullRangeSamplesOfThePicture) {
    // Odd sides; red, whose samples by full-range BT.601 are 76, 85 and 255 (255.5 at most 255).
    Picture picture(19, 5, {255, 255, 255});
    for (size_t y = 0; y < 5; ++y)
        picture.At(0, y) = picture.At(1, y) = {255, 0, 0};
    for (const auto chroma : {ChromaSubsampling::Yuv420, ChromaSubsampling::Yuv444}) {
        const bool whole = chroma == ChromaSubsampling::Yuv444;
        std::FILE* const file = std::fopen(In("x.y4m").c_str(), "wb");
        Y4mWriter writer(file, {19, 5}, {25, 1}, chroma);
        writer.Show(picture);
        writer.WriteFrames(2);
        std::fclose(file);
        const Bytes bytes = ReadBytes(In("x.y4m"));
        const std::string header =
            HeaderFor("25:1", "W19 H5", whole ? "C444" : "C420jpeg") + "\nFRAME\n";
        const size_t columns = whole ? 19 : 10;
        const size_t rows = whole ? 5 : 3;
        const size_t frame = 19 * 5 + 2 * columns * rows;
        ASSERT_EQ(bytes.size(), header.size() + 6 + 2 * frame);
        EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + static_cast<int>(header.size())),
                  header);
        const uint8_t* const y = &bytes[header.size()];
        const uint8_t* const cb = y + 19 * 5;
        const uint8_t* const cr = cb + columns * rows;
        EXPECT_EQ(y[0], 76);
        EXPECT_EQ(cb[0], 85);
        EXPECT_EQ(cr[0], 255);
        EXPECT_EQ(y[19 * 5 - 1], 255);
        EXPECT_EQ(cb[columns * rows - 1], 128);
        EXPECT_EQ(cr[columns * rows - 1], 128);
    }
}

TEST_F(RctoolExport, ASmallerPictureStandsInTheCornerOfTheVideo) {
    streamencoder::WritePng(In("a.png"), Picture(16, 16, {200, 200, 200}));
    streamencoder::WritePng(In("b.png"), Picture(32, 16, {100, 100, 100}));
    ASSERT_EQ(RunRctool("encode --quiet --resize -o " + In("x.rcrec") + " " + In("a.png") + " " +
                        In("b.png"))
                  .m_iExitCode,
              0);
    ASSERT_EQ(RunRctool("export " + In("x.rcrec") + " --chroma 444 --y4m " + In("x.y4m")).m_output,
              In("x.y4m") + ": 32 x 16, 2 frames at 25/1 a second\n");
    const Bytes bytes = ReadBytes(In("x.y4m"));
    const size_t first = HeaderFor("25:1", "W32 H16", "C444").size() + 1 + 6;
    EXPECT_NEAR(bytes[first], 200, 3);
    EXPECT_EQ(bytes[first + 16], 0);
    EXPECT_NEAR(bytes[first + 3 * 32 * 16 + 6 + 31], 100, 3);
}

} // namespace
} // namespace Vostrel::rctool
