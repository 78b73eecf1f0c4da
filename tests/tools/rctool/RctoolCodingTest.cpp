#include "libimagedecoder/KernelLevels.h"
#include "tests/model/CaseFile.h"
#include "tests/model/ModelDecoder.h"
#include "tests/tools/rctool/RctoolFixture.h"
#include "tools/IctEncoder.h"

#include <algorithm>
#include <chrono>
#include <sstream>

namespace Vostrel::rctool {
namespace {

/// What the model shows after the updates of a recording, and its result of the last.
struct ModelPicture {
    std::vector<uint8_t> m_vuiArgb;
    uint64_t m_uiResult;
};

ModelPicture ShowWithModel(const std::string& path, model::KernelRule rule) {
    RecordingReader reader(path);
    const Header& header = reader.GetHeader();
    model::ModelDecoder decoder(
        {header.m_codec == Codec::Ict ? model::ModelCodec::Ict : model::ModelCodec::Lbe,
         header.m_uiProtocolVersion, static_cast<unsigned>(header.m_chroma),
         header.m_layout == RecordLayout::Pool ? 1U : 0U, rule});
    decoder.SetFramebuffer(model::ModelSink::Argb, header.m_settings.m_uiWidth,
                           header.m_settings.m_uiHeight);
    uint64_t result = 0;
    for (const RecordedUpdate& update : ReadUpdates(path)) {
        const auto& encoded = update.m_encoded;
        const auto& area = encoded.m_rectangle;
        model::ModelStream stream(encoded.m_vuiPayload, encoded.m_vuiPayload.size());
        result = decoder
                     .Update(encoded.m_uiQuality,
                             {area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight}, stream)
                     .result;
    }
    return {decoder.Renderer().Memory(), result};
}

TEST_F(Rctool, EncodesWhatTheEncoderGives) {
    const std::string path =
        Recorded("--codec ict --protocol 2 --chroma 422 --quality 4 --layout continuous --fps 10");
    RecordingReader reader(path);
    EXPECT_EQ(reader.GetHeader().m_chroma, ChromaSubsampling::Yuv422);
    EXPECT_EQ(reader.GetHeader().m_layout, RecordLayout::Continuous);
    EXPECT_EQ(reader.GetHeader().m_settings.m_uiWidth, 800);
    EXPECT_EQ(reader.GetHeader().m_settings.m_uiHeight, 600);
    EXPECT_EQ(reader.FindUpdates().size(), 2U);
    EXPECT_TRUE(reader.ReadIndex());

    streamencoder::UpdateFormat format;
    format.m_layout = RecordLayout::Continuous;
    streamencoder::IctEncoder encoder(format, ChromaSubsampling::Yuv422, 4);
    const Picture first = Screen("firmware-800x600-00");
    const Picture second = Screen("firmware-800x600-01");
    const auto updates = ReadUpdates(path);
    ASSERT_EQ(updates.size(), 2U);
    EXPECT_EQ(updates[0].m_encoded.m_vuiPayload, encoder.EncodeUpdate(first, nullptr).m_vuiPayload);
    EXPECT_EQ(updates[1].m_encoded.m_vuiPayload, encoder.EncodeUpdate(second, &first).m_vuiPayload);
    EXPECT_EQ(updates[0].m_uiTime, 0U);
    EXPECT_EQ(updates[1].m_uiTime, 100'000U);
}

TEST_F(Rctool, LbeHasADefaultQualityForEveryVersion) {
    for (const auto& [version, quality] : {std::pair("0", 7U), std::pair("1", 10U)}) {
        const auto updates =
            ReadUpdates(Recorded(std::string("--codec lbe --protocol ") + version));
        EXPECT_EQ(updates.at(0).m_encoded.m_uiQuality, quality);
    }
}

TEST_F(Rctool, RecordsTheChecksumsAndResultsOfTheModel) {
    for (const std::string options : {"--codec ict --quality 9", "--codec lbe --chroma 444"}) {
        const std::string path = Recorded(options);
        const auto last = ReadUpdates(path).at(1);
        const ModelPicture shown = ShowWithModel(path, model::KernelRule::Accelerated);
        EXPECT_EQ(last.m_coverage, Coverage::Framebuffer);
        EXPECT_EQ(last.m_uiPictureCrc, model::Crc32(shown.m_vuiArgb));
        EXPECT_EQ(last.m_result, shown.m_uiResult);
    }
    EXPECT_EQ(ReadUpdates(Recorded("--no-checksums")).at(0).m_coverage, Coverage::Nothing);
}

TEST_F(Rctool, DecodesToThePictureOfTheModelInEveryFormatThreadCountAndKernel) {
    const std::string path = Recorded("--quality 6");
    for (const auto& level : libimagedecoder::ListKernelLevelsOfThisProcessor()) {
        const std::string kernels = level.m_pName;
        const auto rule =
            kernels == "portable" ? model::KernelRule::Portable : model::KernelRule::Accelerated;
        const auto argb = ShowWithModel(path, rule).m_vuiArgb;
        for (const std::string threads : {"1", "3"}) {
            const std::string decode =
                "decode " + path + " --kernels " + kernels + " --threads " + threads;
            ASSERT_EQ(RunRctool(decode + " --force --format argb -o " + In("x.argb")).m_iExitCode,
                      0);
            EXPECT_EQ(ReadBytes(In("x.argb")), argb);
        }
        ASSERT_EQ(
            RunRctool("decode --force " + path + " --kernels " + kernels + " -o " + In("x.png"))
                .m_iExitCode,
            0);
        const Picture png = streamencoder::ReadPng(In("x.png"));
        ASSERT_EQ(RunRctool("decode --force " + path + " --kernels " + kernels +
                            " --format ppm -o " + In("x.ppm"))
                      .m_iExitCode,
                  0);
        const auto ppm = ReadBytes(In("x.ppm"));
        const std::string head = "P6\n800 600\n255\n";
        ASSERT_EQ(ppm.size(), head.size() + 3 * 800 * 600);
        EXPECT_TRUE(std::equal(head.begin(), head.end(), ppm.begin()));
        for (size_t i = 0; i < png.m_vPixels.size(); ++i) {
            for (size_t colour = 0; colour < 3; ++colour) {
                ASSERT_EQ(png.m_vPixels[i][colour], argb[4 * i + 2 - colour]);
                ASSERT_EQ(ppm[head.size() + 3 * i + colour], argb[4 * i + 2 - colour]);
            }
        }
    }
}

TEST_F(Rctool, DecodesPlanesAsTheModelDoes) {
    const std::string path = In("one.rcrec");
    const std::string frame = ScreenPath("console-720x400-00");
    ASSERT_EQ(RunRctool("encode --quiet --chroma 422 -o " + path + " " + frame).m_iExitCode, 0);
    ASSERT_EQ(RunRctool("decode --format planes -o " + In("x.yuv") + " " + path).m_iExitCode, 0);
    model::ModelDecoder decoder({model::ModelCodec::Ict, 2, 1, 1, model::KernelRule::Accelerated});
    decoder.SetFramebuffer(model::ModelSink::Planes, 720, 400);
    const auto update = ReadUpdates(path).at(0).m_encoded;
    model::ModelStream stream(update.m_vuiPayload, update.m_vuiPayload.size());
    decoder.Update(update.m_uiQuality, {0, 0, 720, 400}, stream);
    EXPECT_EQ(ReadBytes(In("x.yuv")), decoder.Renderer().Memory());
    EXPECT_EQ(RunRctool("decode --format planes -o " + In("x.yuv") + " " + Recorded("--codec lbe"))
                  .m_iExitCode,
              1);
}

TEST_F(Rctool, TheExtensionOfAPictureNamesItsFormat) {
    const std::string path = Recorded("--codec ict");
    for (const std::string format : {"ppm", "argb", "planes", "png"}) {
        const std::string named = In("named." + format);
        const std::string told = In("told");
        ASSERT_EQ(RunRctool("decode " + path + " -o " + named).m_iExitCode, 0);
        ASSERT_EQ(
            RunRctool("decode --force " + path + " --format " + format + " -o " + told).m_iExitCode,
            0);
        EXPECT_EQ(ReadBytes(named), ReadBytes(told)) << format;
    }
    ASSERT_EQ(RunRctool("decode " + path + " -o " + In("picture")).m_iExitCode, 0);
    EXPECT_EQ(ReadBytes(In("picture")), ReadBytes(In("named.png")));
}

TEST_F(Rctool, WritesAPictureAfterEveryUpdate) {
    const std::string path = Recorded("--codec lbe");
    ASSERT_EQ(RunRctool("decode --all --format argb -o " + In("x.argb") + " " + path).m_iExitCode,
              0);
    const auto updates = ReadUpdates(path);
    EXPECT_EQ(model::Crc32(ReadBytes(In("x-00000.argb"))), updates[0].m_uiPictureCrc);
    EXPECT_EQ(model::Crc32(ReadBytes(In("x-00001.argb"))), updates[1].m_uiPictureCrc);
    EXPECT_FALSE(std::filesystem::exists(In("x.argb")));
}

TEST_F(Rctool, VerifyNoticesAChecksumAndAResultThatDiffer) {
    const std::string path = Recorded("--codec ict");
    EXPECT_EQ(RunRctool("decode --verify " + path).m_output,
              "2 updates, 0 failed, 2 compared, 0 differences\n");
    EXPECT_EQ(RunRctool("decode --verify --threads 2 --kernels sse2 " + path).m_iExitCode, 0);

    RecordingReader reader(path);
    auto updates = ReadUpdates(path);
    updates[1].m_uiPictureCrc ^= 1;
    updates[0].m_result = *updates[0].m_result ^ 1;
    {
        RecordingWriter writer(In("wrong.rcrec"), reader.GetHeader());
        for (const auto& update : updates)
            writer.Write(update);
    }
    const ProgramRun run = RunRctool("decode --verify " + In("wrong.rcrec"));
    EXPECT_EQ(run.m_iExitCode, 4);
    EXPECT_NE(run.m_output.find("update 0: result"), std::string::npos);
    EXPECT_NE(run.m_output.find("update 1: picture checksum"), std::string::npos);
    EXPECT_EQ(RunRctool("decode " + In("wrong.rcrec")).m_iExitCode, 0);
    const ProgramRun nothing = RunRctool("decode --verify " + Recorded("--no-checksums"));
    EXPECT_EQ(nothing.m_iExitCode, 4);
}

TEST_F(Rctool, FrameTimesHaveALineForEveryUpdate) {
    const std::string path = Recorded("--fps 40");
    const ProgramRun run = RunRctoolQuietly("decode --frametimes - " + path);
    std::istringstream lines(run.m_output);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "update,time_us,quality,x,y,width,height,payload_bytes,failed,wall_ns,"
                    "own_cpu_ns,worker_cpu_ns");
    const auto updates = ReadUpdates(path);
    for (size_t i = 0; i < updates.size(); ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        std::ostringstream start;
        start << i << ',' << 25000 * i << ",10,0,0,800,608,"
              << updates[i].m_encoded.m_vuiPayload.size() << ",0,";
        EXPECT_EQ(line.rfind(start.str(), 0), 0U) << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), ','), 11);
    }
    EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(Rctool, RealTimeWaitsForTheRecordedTimes) {
    const std::string path = Recorded("--fps 4");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(RunRctool("decode --realtime --verify " + path).m_iExitCode, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(250));
}

} // namespace
} // namespace Vostrel::rctool
