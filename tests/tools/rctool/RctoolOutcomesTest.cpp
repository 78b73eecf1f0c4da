#include "tests/tools/rctool/RctoolFixture.h"

#include <nlohmann/json.hpp>

namespace Vostrel::rctool {
namespace {

using Json = nlohmann::json;

constexpr uint64_t NothingChanged = 0;

// An update of version 1 that changes nothing, and one that holds the marker which aborts.
const EncodedUpdate Good{10, {0, 0, 16, 16}, {0xFF, 0xFF, 0xC0}};
const EncodedUpdate Aborts{10, {0, 0, 16, 16}, {0x7F, 0xC0, 0, 0}};

RecordedUpdate WithResult(const EncodedUpdate& encoded, std::optional<uint64_t> result) {
    RecordedUpdate update;
    update.m_encoded = encoded;
    update.m_result = result;
    return update;
}

/// A recording of version 1, 4:2:0, for a screen of 16x16 pixels.
void Write(const std::string& path, const std::vector<RecordedUpdate>& updates) {
    Header header;
    header.m_uiProtocolVersion = 1;
    header.m_layout = RecordLayout::Continuous;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 16;
    RecordingWriter writer(path, header);
    for (const RecordedUpdate& update : updates)
        writer.Write(update);
    writer.Close();
}

RecordedUpdate WithPicture(const EncodedUpdate& encoded, uint32_t crc) {
    RecordedUpdate update = WithResult(encoded, NothingChanged);
    update.m_coverage = Coverage::Framebuffer;
    update.m_uiPictureCrc = crc;
    return update;
}

// The picture stays 16 x 16 words of zeros; zlib's CRC-32 of 1024 zero bytes.
constexpr uint32_t CrcOfZeros = 0xEFB5AF2E;

void WriteSpoiled(const std::string& path, size_t record, size_t keepBytes) {
    Write(path, {WithResult(Good, NothingChanged), WithResult(Good, NothingChanged)});
    const auto offset = RecordingReader(path).FindUpdates().at(record).m_uiOffset;
    auto bytes = ReadBytes(path);
    if (keepBytes != 0)
        bytes.resize(offset + keepBytes);
    else
        bytes[offset + 20] ^= 1;
    WriteBytes(path, bytes);
}

/// A situation, and the exit code on which the subcommands agree.
struct Situation {
    const char* m_name;
    void (*m_make)(const std::string& path);
    int m_iExitCode;
    bool m_bOnlyCompared = false; ///< info and a plain decode do not see it: they return 0
    int m_iUndecoded = m_iExitCode == 3 || m_iExitCode == 4 ? 0 : m_iExitCode; ///< if not decoded
};

const Situation Situations[] = {
    {"Good", [](const auto& path) { Write(path, {WithResult(Good, NothingChanged)}); }, 0},
    {"FailedWhenRecorded",
     [](const auto& path) { Write(path, {WithResult(Aborts, FailedResult)}); }, 0},
    {"Fails", [](const auto& path) { Write(path, {WithResult(Aborts, NothingChanged)}); }, 3},
    {"FailsWithoutARecordedResult", [](const auto& path) { Write(path, {WithResult(Aborts, {})}); },
     3},
    {"OneFailsAndAnotherOneNoMore",
     [](const auto& path) {
         Write(path, {WithResult(Aborts, NothingChanged), WithResult(Good, FailedResult)});
     },
     3},
    {"RecordedPicture", [](const auto& path) { Write(path, {WithPicture(Good, CrcOfZeros)}); }, 0},
    {"OtherPicture", [](const auto& path) { Write(path, {WithPicture(Good, CrcOfZeros ^ 1)}); }, 4,
     true},
    {"OtherResult", [](const auto& path) { Write(path, {WithResult(Good, 1)}); }, 4, true},
    {"FirstRecordDamaged", [](const auto& path) { WriteSpoiled(path, 0, 0); }, 5},
    {"LaterRecordDamaged", [](const auto& path) { WriteSpoiled(path, 1, 0); }, 5},
    {"CutInTheFirstRecord", [](const auto& path) { WriteSpoiled(path, 0, 20); }, 5},
    {"CutInALaterRecord", [](const auto& path) { WriteSpoiled(path, 1, 20); }, 5},
    {"FailsAndIsCut",
     [](const auto& path) {
         Write(path, {WithResult(Aborts, NothingChanged), WithResult(Good, NothingChanged)});
         auto bytes = ReadBytes(path);
         bytes.resize(RecordingReader(path).FindUpdates().at(1).m_uiOffset + 20);
         WriteBytes(path, bytes);
     },
     3, false, 5},
    {"NoRecording", [](const auto& path) { WriteBytes(path, std::vector<uint8_t>(100, 'x')); }, 2},
    {"MissingFile", [](const auto&) {}, 2}};

/// The name, not the bytes, where a test's parameter is printed.
void PrintTo(const Situation& situation, std::ostream* out) {
    *out << situation.m_name;
}

class RctoolOutcomes : public testing::TestWithParam<Situation> {};

TEST_P(RctoolOutcomes, SubcommandsAgreeOnTheExitCode) {
    const Situation& situation = GetParam();
    const std::string path = testing::TempDir() + "RctoolOutcomes-" + situation.m_name + ".rcrec";
    std::filesystem::remove(path);
    situation.m_make(path);
    const int plain = situation.m_bOnlyCompared ? 0 : situation.m_iExitCode;
    EXPECT_EQ(RunRctool("info " + path).m_iExitCode, plain);
    EXPECT_EQ(RunRctool("decode " + path).m_iExitCode, plain);
    EXPECT_EQ(RunRctool("decode --verify " + path).m_iExitCode, situation.m_iExitCode);
    EXPECT_EQ(RunRctool("inspect " + path).m_iExitCode, situation.m_iExitCode);
    EXPECT_EQ(RunRctool("inspect --json " + path).m_iExitCode, situation.m_iExitCode);
    EXPECT_EQ(RunRctool("heatmap -o /dev/null " + path).m_iExitCode, plain);
    EXPECT_EQ(RunRctool("bench --passes 1 " + path).m_iExitCode, plain);
    EXPECT_EQ(RunRctool("export --y4m /dev/null " + path).m_iExitCode, plain);
    EXPECT_EQ(RunRctool("list " + path).m_iExitCode, situation.m_iUndecoded);
    EXPECT_EQ(RunRctool("compare " + path + " " + path).m_iExitCode, situation.m_iUndecoded);
    const std::string folder = testing::TempDir() + "RctoolOutcomes-" + situation.m_name;
    EXPECT_EQ(RunRctool("export --force -o " + folder + " " + path).m_iExitCode,
              situation.m_iUndecoded);
    std::filesystem::remove_all(folder);
    std::filesystem::remove(path);
}

INSTANTIATE_TEST_SUITE_P(All, RctoolOutcomes, testing::ValuesIn(Situations),
                         [](const auto& test) { return std::string(test.param.m_name); });

TEST_F(Rctool, InspectComparesWithTheRecordedPicture) {
    const std::string path = In("x.rcrec");
    Write(path, {WithPicture(Good, CrcOfZeros ^ 1), WithPicture(Good, CrcOfZeros)});
    const ProgramRun other = RunRctool("inspect " + path);
    EXPECT_NE(other.m_output.find("decodes, but not to the recorded picture\n"
                                  "  picture checksum efb5af2e, recorded efb5af2f\n"),
              std::string::npos)
        << other.m_output;
    const auto json = Json::parse(RunRctool("inspect --json " + path).m_output)["comparison"];
    EXPECT_EQ(json["outcome"], "differs");
    EXPECT_EQ(json["differences"][0]["what"], "picture checksum");
    EXPECT_EQ(json["differences"][0]["found"], "efb5af2e");
    EXPECT_EQ(json["differences"][0]["recorded"], "efb5af2f");

    const ProgramRun same = RunRctool("inspect --update 1 " + path);
    EXPECT_EQ(same.m_iExitCode, 0);
    EXPECT_NE(same.m_output.find("decodes to the recorded picture\n"
                                 "update 0 is the first that differs\n"),
              std::string::npos)
        << same.m_output;
    EXPECT_EQ(Json::parse(RunRctool("inspect --json --update 1 " + path).m_output)["comparison"],
              (Json{{"outcome", "same"}, {"firstDifferentUpdate", 0}}));
}

TEST_F(Rctool, InspectReportsWhyAPictureWasNotCompared) {
    const std::string path = In("x.rcrec");
    const auto reasonOf = [&](const std::string& options) {
        const auto run = RunRctoolQuietly("inspect --json " + options + " " + path);
        return Json::parse(run.m_output)["comparison"].value("reason", "");
    };
    Write(path, {WithPicture(Good, CrcOfZeros ^ 1)});
    EXPECT_EQ(reasonOf("--no-replay"), "--no-replay");
    EXPECT_EQ(RunRctool("inspect --no-replay " + path).m_iExitCode, 0);
    Write(path, {WithResult(Good, {})});
    EXPECT_EQ(reasonOf(""), "nothing was recorded of it");
    WriteSpoiled(path, 0, 0);
    EXPECT_EQ(reasonOf("--update 1"), "the recording is damaged before it");
}

TEST_F(Rctool, InspectReportsWhereDecodingStopsAndWhereTheFaultCanBe) {
    // Skip 0, a Y tile of 6 bits, then the abort marker of 10 bits at bit 7.
    const EncodedUpdate aborts{10, {0, 0, 32, 16}, {0x15, 0xFF, 0x80, 0}};
    const std::string path = RecordedBits(aborts, NothingChanged);
    const std::string text = RunRctool("inspect " + path).m_output;
    EXPECT_NE(text.find("decoding stops at bit 7 (byte 0, bit 7 of it), macroblock 0, tile 1\n"
                        "  expected: a DC code of size 0 to 11\n"
                        "  found: 1111111111, which aborts the update\n"
                        "  the decoder reports: StreamError\n"
                        "  the fault is in bits 0 to 16, if it is in the data\n"
                        "it did not fail when it was recorded\n"),
              std::string::npos)
        << text;
    const auto json = Json::parse(RunRctool("inspect --json " + path).m_output);
    EXPECT_EQ(json["fault"]["range"], (Json{{"bit", 0}, {"bits", 17}}));
    EXPECT_EQ(json["fault"]["dataMayBeCut"], false);
    EXPECT_EQ(json["failedWhenRecorded"], false);
}

TEST_F(Rctool, InspectReportsDataThatMayBeCut) {
    const EncodedUpdate cut{10, {0, 0, 32, 16}, {0x15}};
    const std::string text = RunRctool("inspect " + RecordedBits(cut, FailedResult)).m_output;
    EXPECT_NE(text.find("  the fault is in bits 0 to 7, or bytes after them are missing, if it is "
                        "in the data\nit failed when it was recorded, too\n"),
              std::string::npos)
        << text;
}

TEST_F(Rctool, InspectNamesAQualityOutOfRange) {
    const std::string path = RecordedBits({26, {0, 0, 16, 16}, {0xFF, 0xFF, 0xC0}});
    const ProgramRun run = RunRctool("inspect " + path);
    EXPECT_EQ(run.m_iExitCode, 0);
    EXPECT_NE(run.m_output.find("the quality is out of range: the decoder uses its low bits, 10\n"),
              std::string::npos)
        << run.m_output;
    const auto json = Json::parse(RunRctool("inspect --json " + path).m_output);
    EXPECT_EQ(json["quality"], 26);
    EXPECT_EQ(json["usedQuality"], 10);
    const std::string inRange = RunRctool("inspect " + RecordedBits(Good)).m_output;
    EXPECT_EQ(inRange.find("out of range"), std::string::npos) << inRange;
}

} // namespace
} // namespace Vostrel::rctool
