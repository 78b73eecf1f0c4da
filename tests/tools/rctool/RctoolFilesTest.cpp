#include "tests/tools/rctool/RctoolFixture.h"

namespace Vostrel::rctool {
namespace {

using Bytes = std::vector<uint8_t>;

const Bytes OldContent{'o', 'l', 'd'};

TEST_F(Rctool, FilesThatExistAreReplacedByForceOnly) {
    const std::string path = Recorded("--codec lbe");
    const std::string file = In("x-00001.png");
    for (const std::string& command :
         {"encode --quiet " + Frames + " -o " + file, "decode " + path + " -o " + file,
          "decode " + path + " --all -o " + In("x.png"), "decode " + path + " --frametimes " + file,
          "heatmap " + path + " -o " + file}) {
        std::filesystem::remove(In("x-00000.png"));
        WriteBytes(file, OldContent);
        const ProgramRun run = RunRctool(command);
        EXPECT_EQ(run.m_iExitCode, 2) << command;
        EXPECT_NE(run.m_output.find(file + ": The file exists; --force"), std::string::npos)
            << run.m_output;
        EXPECT_EQ(ReadBytes(file), OldContent) << command;
        EXPECT_EQ(RunRctool(command + " --force").m_iExitCode, 0) << command;
        EXPECT_NE(ReadBytes(file), OldContent) << command;
    }
}

TEST_F(Rctool, WhatFailsLeavesNoFileAndNoLoss) {
    const std::string mixed = ScreenPath("console-720x400-00") + " " + Frames;
    const std::string file = In("x.rcrec");
    EXPECT_EQ(RunRctool("encode " + mixed + " -o " + file).m_iExitCode, 2);
    EXPECT_TRUE(FilesIn(m_folder).empty());
    WriteBytes(file, OldContent);
    EXPECT_EQ(RunRctool("encode --force " + mixed + " -o " + file).m_iExitCode, 2);
    EXPECT_EQ(ReadBytes(file), OldContent);
    EXPECT_EQ(FilesIn(m_folder), std::vector<std::string>{"x.rcrec"});
}

TEST_F(Rctool, AppendGoesOnWithARecording) {
    for (const std::string options : {"--codec lbe --chroma 444 --fps 10", "--layout inplace"}) {
        const std::string path = Recorded(options);
        const Bytes before = ReadBytes(path);
        const auto old = ReadUpdates(path);
        ASSERT_EQ(
            RunRctool("encode --append --fps 4 --quality 3 -o " + path + " " + Frames).m_iExitCode,
            0);
        const Bytes after = ReadBytes(path);
        ASSERT_GT(after.size(), before.size());
        EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin()));

        const auto updates = ReadUpdates(path);
        ASSERT_EQ(updates.size(), 4U);
        EXPECT_EQ(updates[2].m_encoded.m_uiQuality, 3U);
        EXPECT_EQ(updates[2].m_uiTime, old[1].m_uiTime + 250'000);
        EXPECT_EQ(updates[3].m_uiTime, old[1].m_uiTime + 500'000);
        // The first is coded whole, the second without what stays.
        EXPECT_LT(updates[3].m_encoded.m_vuiPayload.size(),
                  updates[2].m_encoded.m_vuiPayload.size() / 4);
        EXPECT_EQ(RunRctool("decode --verify " + path).m_output,
                  "4 updates, 0 failed, 4 compared, 0 differences\n");
        const auto index = RecordingReader(path).ReadIndex();
        ASSERT_TRUE(index);
        EXPECT_EQ(index->size(), 4U);
    }
}

TEST_F(Rctool, AppendingWhatFailsLeavesTheRecordingAsItWas) {
    const std::string path = Recorded("--codec ict");
    const Bytes before = ReadBytes(path);
    const std::string first = ScreenPath("firmware-800x600-00") + " ";
    for (const std::string& frames : {ScreenPath("console-720x400-00"),
                                      first + ScreenPath("console-720x400-00"), first + In("no")}) {
        EXPECT_EQ(RunRctool("encode --append -o " + path + " " + frames).m_iExitCode, 2);
        EXPECT_EQ(ReadBytes(path), before) << frames;
    }
    EXPECT_EQ(RunRctool("encode --append -o " + In("missing") + " " + Frames).m_iExitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(In("missing")));
}

TEST_F(Rctool, AppendDropsACutEndByForceOnly) {
    const std::string path = Recorded("--codec ict");
    const auto second = RecordingReader(path).FindUpdates().at(1).m_uiOffset;
    Bytes cut = ReadBytes(path);
    cut.resize(second + 100);
    WriteBytes(path, cut);
    const ProgramRun refused = RunRctool("encode --append -o " + path + " " + Frames);
    EXPECT_EQ(refused.m_iExitCode, 2);
    EXPECT_NE(refused.m_output.find("cut or damaged at byte " + std::to_string(second)),
              std::string::npos);
    EXPECT_EQ(ReadBytes(path), cut);
    EXPECT_EQ(RunRctool("encode --append --force -o " + path + " " + Frames).m_iExitCode, 0);
    EXPECT_EQ(RunRctool("decode --verify " + path).m_output,
              "3 updates, 0 failed, 3 compared, 0 differences\n");
}

} // namespace
} // namespace Vostrel::rctool
