#include "tests/tools/rctool/ChildProgram.h"
#include "tests/tools/rctool/RctoolFixture.h"

#include <sys/stat.h>

namespace Vostrel::rctool {
namespace {

TEST_F(Rctool, AFileThatIsBeingWrittenIsRefused) {
    const std::string path = Recorded("--codec lbe");
    std::filesystem::create_symlink(path, In("link"));
    const std::string fifo = In("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string frame = ScreenPath("firmware-800x600-00");
    for (const std::string writer : {"--append", "--force"}) {
        ChildProgram child("encode --quiet " + writer + " -o " + path + " " + frame + " " + fifo);
        const FifoWriter waiting(fifo);
        ASSERT_TRUE(waiting.IsOpen());
        const auto before = ReadBytes(path);
        for (const std::string& command :
             {"encode --append -o " + path + " " + frame, "encode --force -o " + path + " " + frame,
              "encode --append -o " + In("link") + " " + frame,
              "decode --force --format png -o " + path + " " + path}) {
            const ProgramRun run = RunRctool(command);
            EXPECT_EQ(run.m_iExitCode, 2) << command;
            EXPECT_NE(run.m_output.find(": The file is being written by another program\n"),
                      std::string::npos)
                << run.m_output;
        }
        EXPECT_EQ(ReadBytes(path), before);
        child.Signal(SIGTERM);
        EXPECT_EQ(child.Wait(), 143);
        EXPECT_EQ(RunRctool("encode --quiet --append -o " + path + " " + frame).m_output, "");
    }
    EXPECT_EQ(RunRctool("decode --verify " + path).m_output,
              "5 updates, 0 failed, 5 compared, 0 differences\n");
}

TEST_F(Rctool, OnlyAFileCanBeAppendedTo) {
    const std::string fifo = In("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(RunRctool("encode --append -o " + fifo + " " + Frames).m_output,
              "rctool: " + fifo + ": Frames can be added to files only\n");
}

} // namespace
} // namespace Vostrel::rctool
