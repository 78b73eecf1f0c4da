#include "tests/model/CaseFile.h"
#include "tests/tools/RawPng.h"
#include "tests/tools/rctool/RctoolFixture.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <regex>
#include <sstream>

namespace Vostrel::rctool {
namespace {

using Json = nlohmann::json;

TEST_F(Rctool, HelpFitsAScreen) {
    for (const std::string command : {"", "encode ", "decode ", "info ", "list ", "inspect ",
                                      "heatmap ", "export ", "compare ", "bench "}) {
        const ProgramRun run = RunRctool(command + "--help");
        EXPECT_EQ(run.m_iExitCode, 0);
        std::istringstream lines(run.m_output);
        size_t count = 0;
        for (std::string line; std::getline(lines, line); ++count)
            EXPECT_LE(line.size(), 80U) << line;
        EXPECT_LE(count, 30U) << command;
        EXPECT_GT(count, 5U) << command;
    }
}

TEST_F(Rctool, TellsItsVersion) {
    EXPECT_EQ(RunRctool("--version").m_output, "rctool " PROJECT_VERSION_TEXT "\n");
}

TEST_F(Rctool, WrongUsageIsExitCode1) {
    const std::string frame = ScreenPath("console-720x400-00");
    const std::string path = Recorded("--layout continuous");
    for (const std::string& arguments :
         {std::string(),
          std::string("unknown"),
          std::string("encode -o x.rcrec"),
          "encode " + frame,
          "encode " + frame + " -o x.rcrec --protocol 3",
          "encode " + frame + " -o x.rcrec --quality 16",
          "encode " + frame + " -o x.rcrec --codec lbe --quality 12",
          "encode " + frame + " -o x.rcrec --codec jpeg",
          "encode " + frame + " -o x.rcrec --chroma 411",
          "encode " + frame + " -o x.rcrec --layout none",
          "encode " + frame + " -o x.rcrec --fps 0",
          "decode " + path + " --threads 2",
          "decode " + path + " --threads 65",
          "decode " + path + " --kernels mmx",
          "decode " + path + " --format gif",
          "decode " + path + " --all",
          "decode " + path + " --all -o -",
          "decode " + path + " --all -o /dev/stdout",
          "decode " + path + " --all -o /dev/null",
          "decode " + path + " -o - --frametimes -",
          "decode " + path + " -o " + In("x.jpg"),
          "decode " + path + " --all -o " + In("x.jpeg"),
          "heatmap " + path + " -o " + In("x.jpg"),
          "heatmap " + path + " -o " + In("x.ppm"),
          "encode " + frame + " --append -o -",
          "decode " + path + " --verify --kernels portable",
          "decode " + path + " --verify --format planes -o " + In("x"),
          "inspect " + path + " --update 2",
          "inspect " + path + " --macroblock 1900",
          "heatmap " + path + " -o x.png --update 2",
          "bench " + path + " --passes 0",
          "info " + path + " --unknown"}) {
        const ProgramRun run = RunRctool(arguments);
        EXPECT_EQ(run.m_iExitCode, 1) << arguments;
        EXPECT_EQ(run.m_output.find("rctool: "), 0U) << arguments << '\n' << run.m_output;
    }
}

/// What a wrong command line is answered with.
struct UsageMistake {
    std::string m_arguments;
    std::string m_answer; ///< after "rctool: "
};

TEST_F(Rctool, UsageErrorsNameUnknownOptionsFirstAndEndWithTheHelpToTry) {
    const std::string frame = ScreenPath("console-720x400-00");
    const std::string path = RecordedBits({10, {0, 0, 16, 16}, {0xFF, 0xFF, 0xC0}});
    for (const UsageMistake& mistake :
         {UsageMistake{"", "A subcommand is required; try rctool --help"},
          {"encod x.png", "encod: No such command; try rctool --help"},
          {"--quiet", "--quiet: No such option; try rctool --help"},
          {"encode --qualty 3 " + frame, "--qualty: No such option; try rctool encode --help"},
          {"info --all", "--all: No such option; try rctool info --help"},
          {"info", "RECORDING is required; try rctool info --help"},
          {"info " + path + " more", "more: This argument is too many; try rctool info --help"},
          {"decode --all " + path, "--all needs --output; try rctool decode --help"},
          {"inspect --update 1 " + path,
           path + ": The recording has 1 update, counted from 0; try rctool inspect --help"}}) {
        const ProgramRun run = RunRctool(mistake.m_arguments);
        EXPECT_EQ(run.m_iExitCode, 1);
        EXPECT_EQ(run.m_output, "rctool: " + mistake.m_answer + "\n");
    }
}

TEST_F(Rctool, NumbersOutOfRangeAreRefusedWithTheRange) {
    const std::string encode =
        "encode " + ScreenPath("console-720x400-00") + " -o " + In("x") + " ";
    const std::string fps = " is not a number from 0.001 to 1000000";
    const std::string quality = " is not a whole number from 0 to 15";
    for (const UsageMistake& mistake :
         {UsageMistake{encode + "--fps nan", "--fps: nan" + fps},
          {encode + "--fps inf", "--fps: inf" + fps},
          {encode + "--fps=-1", "--fps: -1" + fps},
          {encode + "--fps 1x", "--fps: 1x" + fps},
          {encode + "--quality -1", "--quality: -1" + quality},
          {encode + "--quality 16", "--quality: 16" + quality},
          {"export x --y4m y --fps nan", "--fps: nan" + fps},
          {"decode x --threads 65", "--threads: 65 is not a whole number from 0 to 64"},
          {"bench x --passes 0", "--passes: 0 is not a whole number from 1 to 1000000"}}) {
        const ProgramRun run = RunRctool(mistake.m_arguments);
        EXPECT_EQ(run.m_iExitCode, 1);
        EXPECT_EQ(run.m_output.find("rctool: " + mistake.m_answer + "; try"), 0U) << run.m_output;
    }
}

TEST_F(Rctool, NamesAreUnderstoodInCapitalsAndWithColons) {
    const std::string path = Recorded("--codec ICT --chroma 4:2:2 --layout InPlace");
    RecordingReader reader(path);
    EXPECT_EQ(reader.GetHeader().m_chroma, ChromaSubsampling::Yuv422);
    EXPECT_EQ(reader.GetHeader().m_layout, RecordLayout::InPlace);
    EXPECT_EQ(RecordingReader(Recorded("--codec Lbe")).GetHeader().m_codec, Codec::Lbe);
    const auto decoders = RecordingReader(Recorded("--codec LBE,Ict")).FindDecoders();
    ASSERT_EQ(decoders.size(), 2U);
    EXPECT_EQ(decoders[0].m_codec, Codec::Lbe);
    EXPECT_EQ(decoders[1].m_codec, Codec::Ict);
}

TEST_F(Rctool, OneOfAThingIsNotPlural) {
    const std::string path = RecordedBits({10, {0, 0, 16, 16}, {0xFF, 0xFF, 0xC0}}, 0);
    EXPECT_EQ(RunRctool("decode --verify " + path).m_output,
              "1 update, 0 failed, 1 compared, 0 differences\n");
    const std::regex plural("\\b1 (updates|bytes|bits|macroblocks|coded macroblocks|passes|threads|"
                            "checksums|kinds|times|symbols)\\b");
    for (const std::string command : {"info ", "list ", "inspect ", "bench --passes 1 "}) {
        const ProgramRun run = RunRctool(command + path);
        EXPECT_EQ(run.m_iExitCode, 0);
        EXPECT_FALSE(std::regex_search(run.m_output, plural)) << run.m_output;
    }
    EXPECT_EQ(RunRctool("export " + path + " -o " + In("raw")).m_output,
              In("raw") + ": 1 update\n");
    EXPECT_EQ(RunRctool("export " + path + " --y4m " + In("x.y4m")).m_output,
              In("x.y4m") + ": 32 x 16, 1 frame at 25/1 a second\n");
    const std::string byte = RecordedBits({10, {0, 0, 16, 16}, {0xFF}});
    EXPECT_NE(RunRctool("list " + byte).m_output.find(" 1 byte   unknown\n"), std::string::npos);
}

TEST_F(Rctool, EncodeReportsWhatIsLostOfAPicture) {
    using streamencoder::PngColour;
    using streamencoder::RawPng;
    RawPng(8, PngColour::Rgba).Write(In("alpha.png"), {1, 2, 3, 4});
    RawPng(16, PngColour::Rgb).Write(In("deep.png"), {1, 2, 3, 4, 5, 6});
    const auto errorsOf = [&](const std::string& options) {
        return RunRctool("encode --force -o " + In("x.rcrec") + " " + options, "2>&1 >/dev/null")
            .m_output;
    };
    EXPECT_EQ(errorsOf(In("alpha.png")),
              "rctool: " + In("alpha.png") + ": Its transparent parts are blended with black\n");
    EXPECT_EQ(errorsOf(In("deep.png")),
              "rctool: " + In("deep.png") + ": Its 16-bit samples are rounded to 8 bits\n");
    EXPECT_EQ(errorsOf("- < " + In("alpha.png")),
              "rctool: standard input, picture 0: Its transparent parts are blended with black\n");
    EXPECT_EQ(errorsOf("--quiet " + In("alpha.png")), "");
    EXPECT_EQ(errorsOf(ScreenPath("console-720x400-00")), "");
}

TEST_F(Rctool, FailingFilesAreExitCode2AndNamed) {
    const std::string frame = ScreenPath("console-720x400-00");
    const std::string missing = In("missing");
    const std::string noRecording = frame;
    for (const std::string& arguments :
         {"encode " + missing + " -o " + In("x.rcrec"), "decode " + missing, "info " + missing,
          "inspect " + missing, "heatmap -o " + In("x.png") + " " + missing, "bench " + missing}) {
        const ProgramRun run = RunRctool(arguments);
        EXPECT_EQ(run.m_iExitCode, 2) << arguments;
        EXPECT_NE(run.m_output.find(missing + ": No such file"), std::string::npos) << run.m_output;
    }
    EXPECT_EQ(RunRctool("info " + noRecording).m_output,
              "rctool: " + noRecording + ": This is no recording\n");
    EXPECT_EQ(RunRctool("encode " + frame + " -o " + In("no/such/x.rcrec")).m_output,
              "rctool: " + In("no/such/x.rcrec") + ": No such file or directory\n");
    const ProgramRun full = RunRctool("encode " + frame + " -o /dev/full");
    EXPECT_EQ(full.m_iExitCode, 2);
    EXPECT_EQ(full.m_output, "rctool: /dev/full: No space left on device\n");
    const ProgramRun mixed = RunRctool("encode " + frame + " " + ScreenPath("firmware-800x600-00") +
                                       " -o " + In("x.rcrec"));
    EXPECT_EQ(mixed.m_iExitCode, 2);
    EXPECT_NE(mixed.m_output.find("firmware-800x600-00.png: The frame has 800 x 600 pixels"),
              std::string::npos);
    const std::string path = Recorded("");
    for (const std::string format : {"png", "ppm", "argb"})
        EXPECT_EQ(
            RunRctool("decode " + path + " --format " + format + " -o " + In("no/x")).m_iExitCode,
            2);
    EXPECT_EQ(RunRctool("decode " + path + " --frametimes " + In("no/x")).m_iExitCode, 2);
    EXPECT_EQ(RunRctool("info " + path + " > /dev/full", "").m_iExitCode, 2);
}

TEST_F(Rctool, PrintsALineForEveryFrameUnlessQuiet) {
    const std::string rest = "--force -o " + In("x.rcrec") + " " + Frames;
    const ProgramRun loud = RunRctool("encode " + rest);
    EXPECT_EQ(std::count(loud.m_output.begin(), loud.m_output.end(), '\n'), 2);
    EXPECT_EQ(RunRctool("encode --quiet " + rest).m_output, "");
    EXPECT_EQ(RunRctool("decode --quiet --verify " + In("x.rcrec")).m_output, "");
}

TEST_F(Rctool, AFlippedBitInAPayloadIsNoticedByTheRecordsChecksum) {
    const std::string path = Recorded("--codec lbe");
    auto bytes = ReadBytes(path);
    bytes[bytes.size() / 2] ^= 1;
    WriteBytes(path, bytes);
    for (const std::string command : {"info ", "decode --verify "}) {
        const ProgramRun run = RunRctool(command + path);
        EXPECT_NE(run.m_iExitCode, 0);
        EXPECT_NE(run.m_output.find("checksum is wrong"), std::string::npos) << run.m_output;
    }
}

TEST_F(Rctool, ACutRecordingIsDoneUpToTheCutAndExitCode5) {
    const std::string path = Recorded("--codec lbe");
    RecordingReader reader(path);
    const auto second = reader.FindUpdates().at(1).m_uiOffset;
    auto bytes = ReadBytes(path);
    bytes.resize(second + 100);
    WriteBytes(In("cut.rcrec"), bytes);
    const ProgramRun run =
        RunRctool("decode --verify --format argb -o " + In("x") + " " + In("cut.rcrec"));
    EXPECT_EQ(run.m_iExitCode, 5);
    EXPECT_NE(run.m_output.find("cut in the record at byte " + std::to_string(second)),
              std::string::npos);
    EXPECT_EQ(model::Crc32(ReadBytes(In("x"))), ReadUpdates(path).at(0).m_uiPictureCrc);
    const auto info = Json::parse(RunRctoolQuietly("info --json " + In("cut.rcrec")).m_output);
    EXPECT_EQ(info["updates"], 1);
    EXPECT_EQ(info["end"], "cut");
    EXPECT_EQ(info["endOffset"], second);
    for (const std::string& command :
         {std::string("info "), std::string("bench --passes 1 "), "heatmap -o " + In("x.png ")})
        EXPECT_EQ(RunRctool(command + In("cut.rcrec")).m_iExitCode, 5);
    for (const std::string& command :
         {std::string("inspect --update 1 "), "heatmap --update 1 -o " + In("y.png ")}) {
        const ProgramRun later = RunRctool(command + In("cut.rcrec"));
        EXPECT_EQ(later.m_iExitCode, 5);
        EXPECT_NE(later.m_output.find("The recording has 1 update, counted from 0"),
                  std::string::npos)
            << later.m_output;
    }
}

TEST_F(Rctool, AnUpdateThatFailsIsExitCode3UnlessItFailedWhenRecorded) {
    const EncodedUpdate aborts{10, {0, 0, 16, 16}, {0x7F, 0xC0, 0, 0}};
    const std::string surprising = RecordedBits(aborts, 0);
    const std::string commands[] = {"decode ", "info ", "bench --passes 1 ",
                                    "heatmap --force -o " + In("x.png") + " "};
    for (const std::string& command : commands)
        EXPECT_EQ(RunRctool(command + surprising).m_iExitCode, 3) << command;
    const std::string expected = RecordedBits(aborts, FailedResult);
    for (const std::string& command : commands)
        EXPECT_EQ(RunRctool(command + expected).m_iExitCode, 0) << command;
    EXPECT_EQ(RunRctool("decode --verify " + expected).m_iExitCode, 0);
    EXPECT_NE(RunRctool("decode " + expected).m_output.find("update 0: StreamError, as when"),
              std::string::npos);
    EXPECT_EQ(RunRctool("info " + expected).m_iExitCode, 0);
}

TEST_F(Rctool, TheManualPageTellsOfEveryCommandAndOption) {
    std::ifstream in(RCTOOL_MANUAL_PATH);
    const std::string page{std::istreambuf_iterator<char>(in), {}};
    for (const std::string text : {".TH RCTOOL 1",
                                   ".SS encode",
                                   ".SS decode",
                                   ".SS info",
                                   ".SS inspect",
                                   ".SS heatmap",
                                   ".SS bench",
                                   ".SS list",
                                   ".SS export",
                                   ".SS compare",
                                   "rctool list desktop",
                                   "rctool export desktop",
                                   "rctool compare fine",
                                   "rctool encode \\-o",
                                   "rctool decode desktop",
                                   "rctool info desktop",
                                   "rctool inspect desktop",
                                   "rctool heatmap desktop",
                                   "rctool bench desktop",
                                   "\\-\\-frametimes",
                                   "\\-\\-kernels",
                                   ".SH EXIT STATUS"})
        EXPECT_NE(page.find(text), std::string::npos) << text;
}

} // namespace
} // namespace Vostrel::rctool
