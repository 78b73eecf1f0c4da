#include "tests/tools/Screens.h"
#include "tools/IctEncoder.h"
#include "tools/StreamFile.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace Vostrel::streamencoder {
namespace {

struct Outcome {
    int m_iExitCode;
    std::string m_output; ///< of both channels
};

Outcome RunRcencode(const std::string& arguments) {
    const std::string command = std::string(RCENCODE_PATH) + " " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) {
        output.append(buffer, count);
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

std::string ScreenPath(const std::string& name) {
    return std::string(TEST_DATA_DIR) + "/screens/" + name + ".png";
}

class Rcencode : public testing::Test {
protected:
    ~Rcencode() override { std::remove(m_stream.c_str()); }

    std::string m_stream = testing::TempDir() + "RcencodeTest-" +
                           testing::UnitTest::GetInstance()->current_test_info()->name() + ".rcst";
};

TEST_F(Rcencode, HelpFitsAScreen) {
    const Outcome outcome = RunRcencode("--help");
    EXPECT_EQ(outcome.m_iExitCode, 0);
    EXPECT_LE(std::count(outcome.m_output.begin(), outcome.m_output.end(), '\n'), 25);
    EXPECT_NE(outcome.m_output.find("Exit code: 0"), std::string::npos);
}

TEST_F(Rcencode, EncodesASequenceAsTheLibraryDoes) {
    const Outcome outcome = RunRcencode(
        "--codec ict --version 2 --chroma 422 --quality 4 --layout continuous -o " + m_stream +
        " " + ScreenPath("firmware-800x600-00") + " " + ScreenPath("firmware-800x600-01"));
    EXPECT_EQ(outcome.m_iExitCode, 0) << outcome.m_output;
    EXPECT_EQ(std::count(outcome.m_output.begin(), outcome.m_output.end(), '\n'), 2);

    const StreamFile file = ReadStreamFile(m_stream);
    EXPECT_EQ(file.m_header.m_codec, Codec::Ict);
    EXPECT_EQ(file.m_header.m_uiProtocolVersion, 2);
    EXPECT_EQ(file.m_header.m_chroma, ChromaSubsampling::Yuv422);
    EXPECT_EQ(file.m_header.m_layout, RecordLayout::Continuous);
    EXPECT_EQ(file.m_header.m_uiWidth, 800);
    EXPECT_EQ(file.m_header.m_uiHeight, 600);
    ASSERT_EQ(file.m_vUpdates.size(), 2U);

    UpdateFormat format;
    format.m_layout = RecordLayout::Continuous;
    IctEncoder encoder(format, ChromaSubsampling::Yuv422, 4);
    const Picture first = Screen("firmware-800x600-00");
    const Picture second = Screen("firmware-800x600-01");
    EXPECT_EQ(file.m_vUpdates[0].m_vuiPayload, encoder.EncodeUpdate(first, nullptr).m_vuiPayload);
    EXPECT_EQ(file.m_vUpdates[1].m_vuiPayload, encoder.EncodeUpdate(second, &first).m_vuiPayload);
    EXPECT_EQ(file.m_vUpdates[1].m_uiQuality, 4U);
}

TEST_F(Rcencode, LbeHasAQualityOfItsOwnForEveryVersion) {
    for (const auto& [version, quality] : {std::pair("0", 7U), std::pair("1", 10U)}) {
        const Outcome outcome =
            RunRcencode(std::string("--quiet --codec lbe --version ") + version + " -o " +
                        m_stream + " " + ScreenPath("console-720x400-00"));
        EXPECT_EQ(outcome.m_iExitCode, 0) << outcome.m_output;
        const StreamFile file = ReadStreamFile(m_stream);
        EXPECT_EQ(file.m_header.m_codec, Codec::Lbe);
        ASSERT_EQ(file.m_vUpdates.size(), 1U);
        EXPECT_EQ(file.m_vUpdates[0].m_uiQuality, quality);
    }
    EXPECT_EQ(RunRcencode("--codec lbe --quality 12 -o " + m_stream + " " +
                          ScreenPath("console-720x400-00"))
                  .m_iExitCode,
              2);
}

TEST_F(Rcencode, QuietPrintsNothing) {
    const Outcome outcome =
        RunRcencode("--quiet -o " + m_stream + " " + ScreenPath("console-720x400-00"));
    EXPECT_EQ(outcome.m_iExitCode, 0);
    EXPECT_EQ(outcome.m_output, "");
}

TEST_F(Rcencode, WrongUsageIsExitCode2) {
    const std::string frame = ScreenPath("console-720x400-00");
    for (const std::string& arguments :
         {std::string("-o x.rcst"), frame, frame + " -o x.rcst --version 3",
          frame + " -o x.rcst --quality 16", frame + " -o x.rcst --codec jpeg",
          frame + " -o x.rcst --chroma 411", frame + " -o x.rcst --layout none",
          frame + " -o x.rcst --unknown"}) {
        const Outcome outcome = RunRcencode(arguments);
        EXPECT_EQ(outcome.m_iExitCode, 2) << arguments;
        EXPECT_EQ(outcome.m_output.find("rcencode: "), 0U) << outcome.m_output;
    }
}

TEST_F(Rcencode, FailingFilesAreExitCode1AndNamed) {
    const std::string frame = ScreenPath("console-720x400-00");
    const std::string missing = testing::TempDir() + "no-such-frame.png";
    const Outcome unreadable = RunRcencode(missing + " -o " + m_stream);
    EXPECT_EQ(unreadable.m_iExitCode, 1);
    EXPECT_NE(unreadable.m_output.find(missing + ": No such file"), std::string::npos);
    const Outcome unwritable = RunRcencode(frame + " -o " + testing::TempDir() + "no/such/x.rcst");
    EXPECT_EQ(unwritable.m_iExitCode, 1);
    const std::string other = ScreenPath("firmware-800x600-00");
    const Outcome mixed = RunRcencode(frame + " " + other + " -o " + m_stream);
    EXPECT_EQ(mixed.m_iExitCode, 1);
    EXPECT_NE(mixed.m_output.find(other + ": Successive pictures"), std::string::npos);
}

} // namespace
} // namespace Vostrel::streamencoder
