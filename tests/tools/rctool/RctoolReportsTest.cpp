#include "tests/tools/rctool/RctoolFixture.h"

#include <nlohmann/json.hpp>

#include <sys/resource.h>

#include <algorithm>
#include <map>

namespace Vostrel::rctool {
namespace {

using Json = nlohmann::json;

TEST_F(Rctool, InfoAccountsForEveryBitAndBlock) {
    for (const std::string options :
         {"--codec ict", "--codec lbe --chroma 422", "--protocol 0 --chroma 444"}) {
        const std::string path = Recorded(options);
        const auto updates = ReadUpdates(path);
        const size_t bytes =
            updates[0].m_encoded.m_vuiPayload.size() + updates[1].m_encoded.m_vuiPayload.size();
        const auto info = Json::parse(RunRctool("info --json " + path).m_output);
        EXPECT_EQ(info["width"], 800);
        EXPECT_EQ(info["height"], 600);
        EXPECT_EQ(info["updates"], 2);
        EXPECT_EQ(info["payloadBytes"], bytes);
        EXPECT_EQ(info["macroblocks"], 2 * 50 * 38);
        EXPECT_EQ(info["indexed"], true);
        size_t bits = 0;
        for (const auto& use : info["bits"])
            bits += use.get<size_t>();
        EXPECT_EQ(bits, 8 * bytes);
        size_t symbolBits = 0;
        for (const auto& symbol : info["symbols"])
            symbolBits += symbol["bits"].get<size_t>();
        EXPECT_EQ(symbolBits, bits - info["bits"]["skipCodes"].get<size_t>() -
                                  info["bits"]["lengths"].get<size_t>() -
                                  info["bits"]["filling"].get<size_t>());
        // Blocks of the second frame that equal the first, of 50 x 38 with the last row cut.
        const Picture first = Screen("firmware-800x600-00");
        const Picture second = Screen("firmware-800x600-01");
        size_t same = 0;
        for (size_t top = 0; top < 600; top += 16) {
            for (size_t left = 0; left < 800; left += 16) {
                const size_t height = std::min<size_t>(16, 600 - top);
                same += streamencoder::Crop(first, left, top, 16, height).m_vPixels ==
                        streamencoder::Crop(second, left, top, 16, height).m_vPixels;
            }
        }
        EXPECT_EQ(info["skippedMacroblocks"], same);
        EXPECT_EQ(info["codedMacroblocks"], 2 * 50 * 38 - same);
    }
    const ProgramRun text = RunRctool("info " + Recorded("--quality 3"));
    EXPECT_NE(text.m_output.find("800 x 600, argb"), std::string::npos);
    EXPECT_NE(text.m_output.find("3 (2 updates)"), std::string::npos);
}

TEST_F(Rctool, InspectTellsConsecutiveMacroblocksThatFillThePayload) {
    const std::string path = Recorded("--chroma 422");
    const auto update = ReadUpdates(path).at(1);
    const auto json = Json::parse(RunRctool("inspect --json --update 1 " + path).m_output);
    EXPECT_EQ(json["payloadBytes"], update.m_encoded.m_vuiPayload.size());
    size_t next = 0;
    for (const auto& block : json["macroblocks"]) {
        EXPECT_EQ(block["bit"], next);
        next += block["bits"].get<size_t>();
        ASSERT_EQ(block["tiles"].size(), 8U);
        size_t tile = block["data"]["bit"];
        for (const auto& seen : block["tiles"]) {
            EXPECT_EQ(seen["bit"], tile);
            tile += seen["bits"].get<size_t>();
        }
    }
    EXPECT_EQ(json["end"]["skip"]["bit"], next);
    EXPECT_EQ(json["end"]["coded"], json["macroblocks"].size());
    EXPECT_EQ((json["end"]["bits"].get<size_t>() + 7) / 8, update.m_encoded.m_vuiPayload.size());
}

TEST_F(Rctool, InspectNamesTheCodeAtWhichDecodingStops) {
    // Skip 0, then a Y tile of 6 bits, then the abort marker at bit 7.
    const EncodedUpdate aborts{10, {0, 0, 32, 16}, {0x15, 0xFF, 0x80, 0}};
    const std::string path = RecordedBits(aborts);
    const ProgramRun json = RunRctool("inspect --json --symbols " + path);
    EXPECT_EQ(json.m_iExitCode, 3);
    const auto fault = Json::parse(json.m_output)["fault"];
    EXPECT_EQ(fault["bit"], 7);
    EXPECT_EQ(fault["macroblock"], 0);
    EXPECT_EQ(fault["tile"], 1);
    EXPECT_EQ(fault["expected"], "a DC code of size 0 to 11");
    EXPECT_EQ(fault["failure"], "StreamError");
    const ProgramRun text = RunRctool("inspect --symbols " + path);
    EXPECT_EQ(text.m_iExitCode, 3);
    EXPECT_NE(text.m_output.find("dc 0 = 0"), std::string::npos);
}

TEST_F(Rctool, InspectShowsOneMacroblockWithItsSymbols) {
    const std::string path = Recorded("--codec lbe --protocol 1");
    const auto json =
        Json::parse(RunRctool("inspect --json --symbols --macroblock 7 " + path).m_output);
    ASSERT_EQ(json["macroblocks"].size(), 1U);
    const auto& block = json["macroblocks"][0];
    EXPECT_EQ(block["macroblock"], 7);
    EXPECT_EQ(block["left"], 112);
    EXPECT_EQ(block["top"], 0);
    ASSERT_EQ(block["tiles"].size(), 2U);
    size_t samples = 0;
    for (const auto& symbol : block["tiles"][0]["symbols"]) {
        EXPECT_EQ(symbol["position"], samples);
        const std::string name = symbol["symbol"];
        samples += name == "literal" ? 1 : std::stoul(name.substr(name.find(' ') + 1));
    }
    EXPECT_EQ(samples, 256U);
}

TEST_F(Rctool, InspectTellsOfAMacroblockThatIsNotCoded) {
    const std::string path = Recorded("--codec ict");
    const ProgramRun run = RunRctool("inspect --update 1 --macroblock 0 " + path);
    EXPECT_EQ(run.m_iExitCode, 0);
    EXPECT_NE(run.m_output.find("macroblock 0 is not coded"), std::string::npos) << run.m_output;
}

TEST_F(Rctool, InspectJudgesARectangleByTheFramebufferOfItsTime) {
    const EncodedUpdate nothingIn48x16{10, {0, 0, 48, 16}, {0xFF, 0xFF, 0xC0}};
    const std::string path = In("grows.rcrec");
    Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 16;
    RecordingWriter writer(path, header);
    RecordedUpdate update;
    update.m_encoded = nothingIn48x16;
    writer.Write(update);
    Settings larger = header.m_settings;
    larger.m_uiWidth = 48;
    writer.Write(larger);
    writer.Write(update);
    writer.Close();
    const ProgramRun refused = RunRctool("inspect " + path);
    EXPECT_EQ(refused.m_iExitCode, 3);
    EXPECT_NE(refused.m_output.find("found: 48 x 16 pixels"), std::string::npos);
    EXPECT_EQ(RunRctool("inspect --update 1 " + path).m_iExitCode, 0);
    EXPECT_NE(RunRctool("decode " + path).m_output.find("2 updates, 1 failed"), std::string::npos);
}

TEST_F(Rctool, InfoShowsNotesWithoutControllingTheTerminal) {
    const std::string path = In("noted.rcrec");
    Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 16;
    RecordingWriter(path, header).Write(Note{"a\x1B[2Jb\n\xFF"});
    EXPECT_NE(RunRctool("info " + path).m_output.find("note           a [2Jb \xFF\n"),
              std::string::npos);
    EXPECT_EQ(Json::parse(RunRctool("info --json " + path).m_output)["notes"][0],
              "a\x1B[2Jb\n\xEF\xBF\xBD");
}

TEST_F(Rctool, HeatmapColoursTheBlocksThatWereCodedBesideTheScreen) {
    const std::string path = Recorded("--codec ict");
    const ProgramRun run =
        RunRctool("heatmap --update 1 --show changes -o " + In("x.png") + " " + path);
    EXPECT_EQ(run.m_iExitCode, 0);
    EXPECT_EQ(run.m_output, "the most in update 1: coded 1 time\n");
    ASSERT_EQ(RunRctool("decode -o " + In("screen.png") + " " + path).m_iExitCode, 0);
    const Picture map = streamencoder::ReadPng(In("x.png"));
    const Picture screen = streamencoder::ReadPng(In("screen.png"));
    const auto json = Json::parse(RunRctool("inspect --json --update 1 " + path).m_output);
    std::vector<bool> coded(50 * 38);
    for (const auto& block : json["macroblocks"])
        coded[block["macroblock"].get<size_t>()] = true;
    ASSERT_TRUE(std::count(coded.begin(), coded.end(), false) > 0);
    ASSERT_EQ(map.m_uiWidth, 800 + 8 + 800U);
    for (size_t y = 0; y < 600; ++y) {
        for (size_t x = 0; x < 800; ++x) {
            // All are the most, so red; the picture does not change that.
            const bool isCoded = coded[x / 16 + y / 16 * 50];
            const streamencoder::RgbPixel expected{static_cast<uint8_t>(isCoded ? 255 : 0), 0, 0};
            ASSERT_EQ(map.At(x, y), expected) << x << ' ' << y;
            const auto& colour = screen.At(x, y);
            const auto& grey = map.At(808 + x, y);
            ASSERT_EQ(grey[0], grey[1]);
            ASSERT_EQ(grey[1], grey[2]);
            ASSERT_NEAR(0.299 * colour[0] + 0.587 * colour[1] + 0.114 * colour[2], grey[0], 3);
        }
    }
    EXPECT_EQ(RunRctool("heatmap --quiet -o " + In("y.png") + " " + path).m_output, "");
}

TEST_F(Rctool, HeatmapHasALegendWithTheColoursOfTheMap) {
    const std::string path = Recorded("--codec ict");
    ASSERT_EQ(RunRctool("heatmap -o " + In("x.png") + " " + path).m_iExitCode, 0);
    const Picture map = streamencoder::ReadPng(In("x.png"));
    // 1608 pixels are more than twice 2 * 360, so the legend's pixels are twice as large.
    ASSERT_EQ(map.m_uiHeight, 600 + 2 * 38U);
    std::vector<streamencoder::RgbPixel> bar;
    for (size_t x = 8; x < 8 + 2 * 352; ++x)
        bar.push_back(map.At(x, 600 + 2 * 20));
    EXPECT_EQ(bar.front(), (streamencoder::RgbPixel{0, 0, 255}));
    EXPECT_EQ(bar.back(), (streamencoder::RgbPixel{255, 0, 0}));
    for (size_t y = 8; y < 600; y += 16) {
        for (size_t x = 8; x < 800; x += 16)
            EXPECT_NE(std::find(bar.begin(), bar.end(), map.At(x, y)), bar.end()) << x << ' ' << y;
    }
}

TEST_F(Rctool, HeatmapNamesTheMostOfAnUpdateAndOfTheRecording) {
    const std::string path = Recorded("--codec lbe");
    std::map<size_t, size_t> sums;
    size_t most = 0;
    for (const std::string update : {"0", "1"}) {
        const auto json =
            Json::parse(RunRctool("inspect --json --update " + update + " " + path).m_output);
        for (const auto& block : json["macroblocks"]) {
            sums[block["macroblock"]] += block["bits"].get<size_t>();
            most = std::max(most, block["bits"].get<size_t>());
        }
    }
    size_t mostOfAll = 0;
    for (const auto& [block, sum] : sums)
        mostOfAll = std::max(mostOfAll, sum);
    EXPECT_EQ(RunRctool("heatmap -o " + In("x.png") + " " + path).m_output,
              "the most in one update: " + std::to_string(most) +
                  " bits a macroblock\nthe most in the whole recording: " +
                  std::to_string(mostOfAll) + " bits a macroblock\n");
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool MemoryIsTheProgramsOwn = false; // A sanitizer takes some as well.
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool MemoryIsTheProgramsOwn = false;
#else
constexpr bool MemoryIsTheProgramsOwn = true;
#endif
#else
constexpr bool MemoryIsTheProgramsOwn = true;
#endif

TEST_F(Rctool, HeatmapTakesAtMostTwiceThePicturesMemory) {
    if (!MemoryIsTheProgramsOwn)
        GTEST_SKIP() << "A sanitizer's own memory counts as the program's: nothing can be held";
    constexpr uint16_t Edge = 4096;
    Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = Edge;
    const std::string path = In("large.rcrec");
    {
        RecordingWriter writer(path, header);
        RecordedUpdate update;
        update.m_encoded = {10, {0, 0, Edge, Edge}, {0xFF, 0xFF, 0xC0}};
        writer.Write(update);
    }
    ASSERT_EQ(RunRctool("heatmap --quiet -o " + In("x.png") + " " + path).m_iExitCode, 0);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    EXPECT_LE(usage.ru_maxrss, 2 * 4 * Edge * Edge / 1024);
}

TEST_F(Rctool, BenchMeasuresAllCodedMacroblocks) {
    const std::string path = Recorded("--layout inplace");
    const auto bench = Json::parse(
        RunRctool("bench --json --passes 3 --threads 0 --kernels sse2 " + path).m_output);
    const auto info = Json::parse(RunRctool("info --json " + path).m_output);
    EXPECT_EQ(bench["codedMacroblocks"], info["codedMacroblocks"]);
    EXPECT_EQ(bench["passes"], 3);
    EXPECT_EQ(bench["threads"], 0);
    EXPECT_EQ(bench["kernels"], "sse2");
    EXPECT_GT(bench["wallNs"], 0);
    const double pixels = 2 * 800 * 608;
    EXPECT_NEAR(bench["megapixelsPerSecond"].get<double>() * bench["wallNs"].get<double>(),
                1e3 * pixels, 1);
    EXPECT_EQ(RunRctool("bench --passes 1 " + path).m_iExitCode, 0);
}

} // namespace
} // namespace Vostrel::rctool
