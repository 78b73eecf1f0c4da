#include "tests/tools/rctool/RctoolFixture.h"

#include <sys/stat.h>

namespace Vostrel::rctool {
namespace {

namespace fs = std::filesystem;

const std::vector<uint8_t> OldContent{'o', 'l', 'd'};

/// Every way to write a file, each in all of its formats.
std::vector<std::string> WritingCommands(const std::string& recording, const std::string& output) {
    const std::string to = " -o " + output + " ";
    return {"decode --format png " + recording + to,
            "decode --format ppm " + recording + to,
            "decode --format argb " + recording + to,
            "decode --format planes " + recording + to,
            "decode --frametimes " + output + " " + recording,
            "heatmap " + recording + to,
            "encode --quiet " + Frames + to};
}

TEST_F(Rctool, ADeviceThatIsFullIsNotRemoved) {
    const std::string path = Recorded("");
    const std::string device = In("device");
    // Were it removed, it would be this link alone.
    fs::create_symlink("/dev/full", device);
    for (const std::string& command : WritingCommands(path, device)) {
        const ProgramRun run = RunRctool(command + " --force");
        EXPECT_EQ(run.m_iExitCode, 2) << command;
        EXPECT_EQ(run.m_output, "rctool: " + device + ": No space left on device\n");
        ASSERT_TRUE(fs::is_symlink(device)) << command;
    }
}

TEST_F(Rctool, AFifoWhoseReaderLeavesIsNotRemoved) {
    const std::string path = Recorded("");
    const std::string fifo = In("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& command : WritingCommands(path, fifo)) {
        // Ignored, the signal of the closed pipe does not end the program before it cleans up.
        RunShell("trap '' PIPE; head -c 1 " + fifo + " > " + In("head") + " & $rctool " + command +
                 " --force 2>&1; wait");
        ASSERT_TRUE(fs::is_fifo(fifo)) << command;
    }
}

TEST_F(Rctool, AFifoGetsWhatAFileWouldGet) {
    const std::string path = Recorded("");
    const std::string fifo = In("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const auto ofFifo = WritingCommands(path, fifo);
    const auto ofFile = WritingCommands(path, In("file"));
    for (size_t i = 0; i < ofFifo.size(); ++i) {
        if (ofFifo[i].find("frametimes") != std::string::npos)
            continue; // It never takes the same time again.
        EXPECT_EQ(RunShell("cat " + fifo + " > " + In("copy") + " & $rctool " + ofFifo[i] +
                           " > /dev/null && wait")
                      .m_iExitCode,
                  0);
        EXPECT_EQ(RunRctool(ofFile[i] + " --force").m_iExitCode, 0);
        EXPECT_EQ(ReadBytes(In("copy")), ReadBytes(In("file"))) << ofFifo[i];
    }
}

TEST_F(Rctool, ASymbolicLinkStaysAndItsTargetIsReplaced) {
    const std::string path = Recorded("");
    fs::create_directory(In("elsewhere"));
    const std::string target = In("elsewhere/target.png");
    const std::string link = In("link.png");
    fs::create_symlink("elsewhere/target.png", In("between.png"));
    fs::create_symlink("between.png", link);
    const std::string command = "decode " + path + " -o " + link;
    EXPECT_EQ(RunRctool(command).m_iExitCode, 0) << "to a name that is not in use";
    const auto picture = ReadBytes(target);
    WriteBytes(target, OldContent);
    const ProgramRun refused = RunRctool(command);
    EXPECT_EQ(refused.m_iExitCode, 2);
    EXPECT_EQ(refused.m_output, "rctool: " + link + ": The file exists; --force replaces it\n");
    EXPECT_EQ(ReadBytes(target), OldContent);
    EXPECT_EQ(RunRctool(command + " --force").m_iExitCode, 0);
    EXPECT_EQ(ReadBytes(target), picture);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fs::is_symlink(In("between.png")));
    EXPECT_EQ(FilesIn(In("elsewhere")), std::vector<std::string>{"target.png"});
}

TEST_F(Rctool, ALinkInACircleIsNamed) {
    fs::create_symlink(In("b"), In("a"));
    fs::create_symlink(In("a"), In("b"));
    EXPECT_EQ(RunRctool("encode --force " + Frames + " -o " + In("a")).m_output,
              "rctool: " + In("a") + ": Too many levels of symbolic links\n");
}

TEST_F(Rctool, WhatAnOpenStreamHoldsIsKept) {
    const std::string path = Recorded("");
    const auto picture = In("picture.ppm");
    ASSERT_EQ(RunRctool("decode -o " + picture + " " + path).m_iExitCode, 0);
    auto expected = OldContent;
    const auto bytes = ReadBytes(picture);
    expected.insert(expected.end(), bytes.begin(), bytes.end());
    const std::string log = In("log");
    const std::string command = "$rctool decode --quiet --format ppm " + path + " -o ";
    for (const std::string& line :
         {command + "/dev/stdout >> " + log, command + "/dev/fd/1 >> " + log,
          command + "/dev/fd/3 3>> " + log, command + "/proc/self/fd/3 --force 3>> " + log}) {
        WriteBytes(log, OldContent);
        EXPECT_EQ(RunShell(line + " 2>&1").m_output, "");
        EXPECT_TRUE(ReadBytes(log) == expected) << line;
    }
}

TEST_F(Rctool, AnotherProgramsPartIsNotTouched) {
    const std::string path = Recorded("");
    // The shell's number becomes the program's.
    const ProgramRun run =
        RunShell("export rctool; sh -c 'printf old > " + In("x.png") +
                 ".part$$; exec $rctool decode " + path + " -o " + In("x.png") + "' 2>&1");
    EXPECT_EQ(run.m_iExitCode, 0) << run.m_output;
    const auto names = FilesIn(m_folder);
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(names[1], "x.png");
    EXPECT_EQ(ReadBytes(In(names[2])), OldContent);
}

TEST_F(Rctool, AFileThatAppearsMeanwhileIsNotReplaced) {
    const std::string fifo = In("fifo");
    const std::string file = In("x.rcrec");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string frame = ScreenPath("console-720x400-00");
    const ProgramRun run = RunShell("$rctool encode --quiet -o " + file + " " + frame + " " + fifo +
                                    " 2>&1 & exec 3> " + fifo + "; printf old > " + file +
                                    "; cat " + frame + " >&3; exec 3>&-; wait $!");
    EXPECT_EQ(run.m_iExitCode, 2);
    EXPECT_EQ(run.m_output, "rctool: " + file + ": The file exists; --force replaces it\n");
    EXPECT_EQ(ReadBytes(file), OldContent);
    EXPECT_EQ(FilesIn(m_folder), (std::vector<std::string>{"fifo", "x.rcrec"}));
}

} // namespace
} // namespace Vostrel::rctool
