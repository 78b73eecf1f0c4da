#include "tests/tools/rctool/RctoolFixture.h"

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

} // namespace
} // namespace Vostrel::rctool
