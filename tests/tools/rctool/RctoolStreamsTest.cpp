#include "tests/tools/rctool/RctoolFixture.h"

#include <sys/stat.h>

namespace Vostrel::rctool {
namespace {

TEST_F(Rctool, WhatCannotBePrintedIsStatus2) {
    const std::string path = Recorded("--codec lbe");
    for (const std::string& arguments :
         {std::string("--help"), std::string("--version"), std::string("decode --help"),
          "info " + path, "info --json " + path, "inspect " + path, "inspect --json " + path,
          "inspect --json --symbols " + path, "decode " + path, "decode --verify " + path,
          "decode --frametimes - " + path, "bench --passes 1 " + path,
          "bench --passes 1 --json " + path, "heatmap -o " + In("heat.png") + " " + path,
          "encode -o " + In("again.rcrec") + " " + Frames}) {
        const ProgramRun run = RunShell("$rctool " + arguments + " 2>&1 > /dev/full");
        EXPECT_EQ(run.m_iExitCode, 2) << arguments;
        EXPECT_EQ(run.m_output.find("rctool: standard output: "), 0U) << arguments << '\n'
                                                                      << run.m_output;
    }
}

TEST_F(Rctool, AClosedOutputIsNoticedAndMixedIntoNoFile) {
    const std::string path = Recorded("");
    const ProgramRun info = RunShell("$rctool info " + path + " 2>&1 >&-");
    EXPECT_EQ(info.m_iExitCode, 2);
    EXPECT_EQ(info.m_output, "rctool: standard output: Bad file descriptor\n");
    const std::string again = In("again.rcrec");
    EXPECT_EQ(RunShell("$rctool encode -o " + again + " " + Frames + " >&-").m_iExitCode, 2);
    EXPECT_EQ(ReadBytes(again), ReadBytes(path));
    const std::string quiet = "$rctool encode --quiet --force -o " + again + " " + Frames;
    EXPECT_EQ(RunShell(quiet + " <&- >&- 2>&-").m_iExitCode, 0);
    EXPECT_EQ(ReadBytes(again), ReadBytes(path));
}

TEST_F(Rctool, AManualPageThatCannotBeWrittenIsAFailure) {
    EXPECT_NE(RunShell(RCTOOL_MANPAGE_PATH " 2>&1 > /dev/full").m_iExitCode, 0);
}

TEST_F(Rctool, RecordingsAreReadFromStreams) {
    const std::string path = Recorded("--codec lbe");
    const std::string fifo = In("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string command :
         {"info --json ", "decode --verify ", "inspect --update 1 ", "heatmap --quiet -o - "}) {
        const ProgramRun ofFile = RunRctool(command + path);
        EXPECT_EQ(ofFile.m_iExitCode, 0);
        for (const std::string& line :
             {"$rctool " + command + "- < " + path, "cat " + path + " | $rctool " + command + "-",
              "cat " + path + " | $rctool " + command + "/dev/stdin",
              "cat " + path + " > " + fifo + " & $rctool " + command + fifo,
              "cat " + path + " | $rctool " + command + "/dev/fd/3 3<&0"}) {
            const ProgramRun run = RunShell(line + " 2>&1");
            EXPECT_EQ(run.m_iExitCode, 0) << line;
            EXPECT_EQ(run.m_output, ofFile.m_output) << line;
        }
    }
    std::filesystem::create_directory(In("temporary"));
    EXPECT_EQ(RunShell("cat " + path + " | TMPDIR=" + In("temporary") + " $rctool info - 2>&1")
                  .m_iExitCode,
              0);
    EXPECT_TRUE(FilesIn(In("temporary")).empty());
    EXPECT_EQ(
        RunShell("cat " + path + " | TMPDIR=" + In("missing") + " $rctool info - 2>&1").m_iExitCode,
        2);
    const ProgramRun cut = RunShell("head -c 5000 " + path + " | $rctool decode - 2>&1");
    EXPECT_EQ(cut.m_iExitCode, 5);
    EXPECT_NE(cut.m_output.find("/dev/stdin: The file is cut"), std::string::npos) << cut.m_output;
}

TEST_F(Rctool, FramesAreReadFromStreams) {
    const auto expected = ReadBytes(Recorded(""));
    const std::string first = ScreenPath("firmware-800x600-00");
    const std::string second = ScreenPath("firmware-800x600-01");
    const std::string fifo = In("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string encode = "$rctool encode --force -o " + In("x.rcrec") + " ";
    for (const std::string& line :
         {"cat " + Frames + " | " + encode + "-", encode + first + " - < " + second,
          encode + "- " + second + " < " + first,
          "cat " + Frames + " > " + fifo + " & " + encode + fifo}) {
        std::filesystem::remove(In("x.rcrec"));
        EXPECT_EQ(RunShell(line + " > /dev/null").m_iExitCode, 0) << line;
        EXPECT_EQ(ReadBytes(In("x.rcrec")), expected) << line;
    }
    EXPECT_EQ(RunShell("cat " + Frames + " | " + encode + "- | cut -d: -f1").m_output,
              "standard input, picture 0\nstandard input, picture 1\n");
}

TEST_F(Rctool, OutputsGoToTheStandardOutputAndTextToTheErrors) {
    const std::string path = Recorded("--codec ict");
    for (const std::string output : {"-", "/dev/stdout"}) {
        const std::string redirected = " -o " + output + " 2>&1 > " + In("output");
        const ProgramRun encode = RunShell("$rctool encode " + Frames + redirected);
        EXPECT_EQ(encode.m_iExitCode, 0);
        EXPECT_EQ(std::count(encode.m_output.begin(), encode.m_output.end(), '\n'), 2);
        EXPECT_EQ(ReadBytes(In("output")), ReadBytes(path));
        for (const std::string command :
             {"decode ", "decode --format ppm ", "decode --format argb ", "decode --format planes ",
              "heatmap "}) {
            const std::string file = In("file");
            const ProgramRun toFile = RunRctool(command + path + " --force -o " + file);
            const ProgramRun toOutput = RunShell("$rctool " + command + path + redirected);
            EXPECT_EQ(toOutput.m_iExitCode, 0) << toOutput.m_output;
            EXPECT_EQ(toOutput.m_output, toFile.m_output) << command;
            EXPECT_EQ(ReadBytes(In("output")), ReadBytes(file)) << command;
        }
    }
    const ProgramRun times =
        RunShell("$rctool decode " + path + " --frametimes - 2>&1 > /dev/null");
    EXPECT_EQ(times.m_output, "2 updates, 0 failed\n");
    // A recording goes through a pipe without being searched.
    EXPECT_EQ(
        RunShell("$rctool encode --quiet " + Frames + " -o - | $rctool decode --verify -").m_output,
        "2 updates, 0 failed, 2 compared, 0 differences\n");
}

TEST_F(Rctool, WhatIsNoFileOfItsKindIsNamedAsWhatItIs) {
    std::filesystem::create_directory(In("folder"));
    WriteBytes(In("empty"), {});
    WriteBytes(In("text"), {'t', 'e', 'x', 't'});
    const std::string frame = ScreenPath("console-720x400-00");
    const std::string encode = "$rctool encode --force -o " + In("x") + " ";
    for (const auto& [line, message] : std::vector<std::pair<std::string, std::string>>{
             {encode + In("folder"), In("folder") + ": Is a directory"},
             {encode + In("empty"), In("empty") + ": The file is empty"},
             {encode + In("text"), In("text") + ": Not a PNG file"},
             {encode + "- < /dev/null", "standard input: There is no picture"},
             {encode + "- < " + In("text"), "standard input, picture 0: Not a PNG file"},
             {"head -c 500 " + frame + " | " + encode + "-",
              "standard input, picture 0: read beyond end of data"},
             {"cat " + frame + " " + In("text") + " | " + encode + "- --quiet",
              "standard input, picture 1: Not a PNG file"},
             {"$rctool encode --force " + frame + " -o " + In("folder"),
              In("folder") + ": Is a directory"},
             {"$rctool info " + In("folder"), In("folder") + ": Is a directory"},
             {"$rctool info " + In("empty"), In("empty") + ": The file is empty"},
             {"$rctool info - < /dev/null", "/dev/stdin: The file is empty"},
             {"$rctool info - < /dev/zero", "/dev/stdin: This is no recording"},
             {"cat " + frame + " | $rctool info -", "/dev/stdin: This is no recording"}}) {
        const ProgramRun run = RunShell(line + " 2>&1");
        EXPECT_EQ(run.m_iExitCode, 2) << line;
        EXPECT_EQ(run.m_output, "rctool: " + message + "\n") << line;
    }
    EXPECT_EQ(FilesIn(m_folder), (std::vector<std::string>{"empty", "folder", "text"}));
}

TEST_F(Rctool, TheExtensionOfAPictureNamesItsFormat) {
    const std::string path = Recorded("--codec lbe");
    EXPECT_EQ(RunRctool("decode " + path + " -o " + In("x.jpg")).m_output,
              "rctool: " + In("x.jpg") +
                  ": Pictures have the extension .png, .ppm, .argb or .planes; "
                  "try rctool decode --help\n");
    EXPECT_FALSE(std::filesystem::exists(In("x.jpg")));
    const std::vector<uint8_t> png{0x89, 'P', 'N', 'G'};
    const std::vector<uint8_t> ppm{'P', '6', '\n', '8'};
    for (const auto& [options, start] :
         std::vector<std::pair<std::string, std::vector<uint8_t>>>{{"-o x.jpg --format png", png},
                                                                   {"-o x.png --format ppm", ppm},
                                                                   {"-o x.PNG", png},
                                                                   {"-o x.Ppm", ppm},
                                                                   {"-o plain", png},
                                                                   {"-o .png", png}}) {
        ASSERT_EQ(RunShell("cd " + m_folder + " && $rctool decode --quiet --force " + path + " " +
                           options + " 2>&1")
                      .m_output,
                  "");
        auto bytes = ReadBytes(In(options.substr(3, options.find(" --") - 3)));
        bytes.resize(4);
        EXPECT_EQ(bytes, start) << options;
    }
}

} // namespace
} // namespace Vostrel::rctool
