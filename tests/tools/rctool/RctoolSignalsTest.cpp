#include "tests/tools/rctool/ChildProgram.h"
#include "tests/tools/rctool/RctoolFixture.h"

#include <sys/stat.h>

namespace Vostrel::rctool {
namespace {

constexpr int EndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// A program that reads its frames from a FIFO waits there for as long as a test likes.
class RctoolSignals : public Rctool {
protected:
    RctoolSignals() { mkfifo(m_fifo.c_str(), 0600); }

    const std::string m_fifo = In("fifo");
    const std::string m_frame = ScreenPath("firmware-800x600-00") + " ";
};

TEST_F(RctoolSignals, EncodeLeavesNoPart) {
    const std::string file = In("x.rcrec");
    const std::string command = "encode --quiet -o " + file + " " + m_frame + m_fifo;
    for (const int number : EndingSignals) {
        ChildProgram child(command + " 2> " + In("errors"));
        const FifoWriter writer(m_fifo);
        ASSERT_TRUE(writer.IsOpen());
        EXPECT_EQ(FilesIn(m_folder).size(), 3U) << "no part was begun";
        child.Signal(number);
        EXPECT_EQ(child.Wait(), 128 + number);
        EXPECT_EQ(FilesIn(m_folder), (std::vector<std::string>{"errors", "fifo"}));
        EXPECT_EQ(ReadBytes(In("errors")).size(), 0U);
    }
}

TEST_F(RctoolSignals, EncodeKeepsTheFileThatItWouldHaveReplaced) {
    const std::string file = In("x.rcrec");
    WriteBytes(file, {'o', 'l', 'd'});
    ChildProgram child("encode --quiet --force -o " + file + " " + m_frame + m_fifo);
    const FifoWriter writer(m_fifo);
    child.Signal(SIGTERM);
    EXPECT_EQ(child.Wait(), 143);
    EXPECT_EQ(ReadBytes(file), (std::vector<uint8_t>{'o', 'l', 'd'}));
    EXPECT_EQ(FilesIn(m_folder), (std::vector<std::string>{"fifo", "x.rcrec"}));
}

TEST_F(RctoolSignals, AppendClosesTheRecordingWithTheFramesItAdded) {
    const std::string path = Recorded("--codec lbe");
    ChildProgram child("encode --quiet --append -o " + path + " " + m_frame + m_fifo + " 2> " +
                       In("errors"));
    const FifoWriter writer(m_fifo);
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 130);
    const auto message = ReadBytes(In("errors"));
    EXPECT_EQ(std::string(message.begin(), message.end()),
              "rctool: " + path + ": Interrupted; frames added: 1\n");
    EXPECT_EQ(RunRctool("decode --verify " + path).m_output,
              "3 updates, 0 failed, 3 compared, 0 differences\n");
    const auto index = RecordingReader(path).ReadIndex();
    ASSERT_TRUE(index);
    EXPECT_EQ(index->size(), 3U);
}

TEST_F(RctoolSignals, AppendOfNothingChangesNothing) {
    const std::string path = Recorded("--codec lbe");
    const auto before = ReadBytes(path);
    ChildProgram child("encode --quiet --append -o " + path + " " + m_fifo);
    const FifoWriter writer(m_fifo);
    child.Signal(SIGHUP);
    EXPECT_EQ(child.Wait(), 129);
    EXPECT_EQ(ReadBytes(path), before);
}

TEST_F(RctoolSignals, IgnoredSignalsDoNotEndIt) {
    const std::string file = In("x.rcrec");
    ChildProgram child("encode --quiet -o " + file + " " + m_frame + m_fifo, {SIGHUP, SIGINT});
    {
        const FifoWriter writer(m_fifo);
        child.Signal(SIGHUP);
        child.Signal(SIGINT);
    }
    EXPECT_EQ(child.Wait(), 2) << "The FIFO held no picture";
}

TEST_F(RctoolSignals, RealTimeReplayEndsWhileItWaits) {
    const std::string path = Recorded("--fps 0.001");
    ChildProgram child("decode --realtime --quiet --all --frametimes " + In("times") + " -o " +
                       In("x.png") + " " + path);
    ASSERT_TRUE(WaitUntil([&] { return std::filesystem::exists(In("x-00000.png")); }));
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 130);
    EXPECT_EQ(FilesIn(m_folder),
              (std::vector<std::string>{"fifo", "recorded.rcrec", "x-00000.png"}));
}

TEST_F(RctoolSignals, ATimeLimitLeavesNoPart) {
    const std::string path = Recorded("--fps 0.001");
    // timeout sends its signal twice in a row.
    const ProgramRun run = RunShell("timeout 0.3 $rctool decode --realtime --quiet --frametimes " +
                                    In("times") + " " + path);
    EXPECT_EQ(run.m_iExitCode, 124);
    EXPECT_EQ(FilesIn(m_folder), (std::vector<std::string>{"fifo", "recorded.rcrec"}));
}

TEST_F(RctoolSignals, AReaderThatLeavesIsStatus141) {
    const std::string path = Recorded("--codec lbe");
    const ProgramRun run = RunShell("($rctool inspect --symbols " + path + " 2>&1; echo $? > " +
                                    In("status") + ") | head -n 1");
    EXPECT_EQ(run.m_output.find("update 0 at"), 0U) << run.m_output;
    EXPECT_EQ(std::count(run.m_output.begin(), run.m_output.end(), '\n'), 1);
    EXPECT_EQ(ReadBytes(In("status")), (std::vector<uint8_t>{'1', '4', '1', '\n'}));
}

TEST_F(RctoolSignals, AFifoWhoseReaderLeavesIsStatus141AndStays) {
    const std::string path = Recorded("");
    ChildProgram child("decode --quiet --format ppm --force -o " + m_fifo + " " + path);
    EXPECT_EQ(RunShell("head -c 1 " + m_fifo).m_output, "P");
    EXPECT_EQ(child.Wait(), 141);
    EXPECT_TRUE(std::filesystem::is_fifo(m_fifo));
}

} // namespace
} // namespace Vostrel::rctool
