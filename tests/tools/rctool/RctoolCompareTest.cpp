#include "tests/tools/rctool/RctoolFixture.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace Vostrel::rctool {
namespace {

using Json = nlohmann::json;

class RctoolCompare : public Rctool {
protected:
    std::string Saved(const std::string& name, const Picture& picture) const {
        streamencoder::WritePng(In(name), picture);
        return In(name);
    }

    std::string Encoded(const std::string& name, const std::string& arguments) const {
        EXPECT_EQ(RunRctool("encode --quiet -o " + In(name) + " " + arguments).m_iExitCode, 0);
        return In(name);
    }
};

TEST_F(RctoolCompare, ListHasALineForEveryUpdate) {
    Picture frame(40, 20, {10, 20, 30});
    const std::string first = Saved("a.png", frame);
    frame.At(20, 0) = {255, 255, 255};
    const std::string path =
        Encoded("x.rcrec", "--codec ict,lbe --fps 4 " + first + " " + Saved("b.png", frame) + " " +
                               first + " --quality 11");
    const auto updates = ReadUpdatesOnly(path);
    const auto bytes = [&](size_t i) {
        char text[32];
        std::snprintf(text, sizeof(text), "%8zu bytes", updates[i].m_encoded.m_vuiPayload.size());
        return std::string(text);
    };
    EXPECT_EQ(RunRctool("list " + path).m_output,
              "    0     0.000000 s  decoder 0 ict  quality 11  0,0 48x32            " + bytes(0) +
                  "  changed 0,0 48x32\n"
                  "    1     0.250000 s  decoder 1 lbe  quality 11  0,0 48x32            " +
                  bytes(1) +
                  "  changed 16,0 16x16\n"
                  "    2     0.500000 s  decoder 0 ict  quality 11  0,0 48x32            " +
                  bytes(2) + "  changed 16,0 16x16\n");
    const Json json = Json::parse(RunRctool("list --json " + path).m_output);
    EXPECT_EQ(json["fileVersion"], 2);
    EXPECT_EQ(json["decoders"][1]["codec"], "lbe");
    const Json& second = json["updates"][1];
    EXPECT_EQ(second["rectangle"], Json::parse(R"({"x":0,"y":0,"width":48,"height":32})"));
    EXPECT_EQ(second["changed"], Json::parse(R"({"x":16,"y":0,"width":16,"height":16})"));
    EXPECT_EQ(second["framebuffer"], Json::parse(R"({"width":40,"height":20})"));
    EXPECT_EQ(second["pictureCrc"], updates[1].m_uiPictureCrc);
    EXPECT_EQ(second["time"], 250'000);
    const Json info = Json::parse(RunRctool("info --json " + path).m_output);
    EXPECT_EQ(info["decoders"][0]["updates"], 2);
    EXPECT_EQ(info["decoders"][1]["updates"], 1);
    size_t bits = 0;
    for (const auto& use : info["bits"])
        bits += use.get<size_t>();
    EXPECT_EQ(bits, 8 * info["payloadBytes"].get<size_t>());
    EXPECT_NE(RunRctool("info " + path).m_output.find("decoder 1      1 update, lbe 420"),
              std::string::npos);
}

TEST_F(RctoolCompare, ListSubtractsThePositionThatAResultCarries) {
    const std::string frame = Saved("a.png", Picture(100, 60, {10, 20, 30}));
    const std::string path = Encoded("x.rcrec", "--rectangle 33,17,20,20 " + frame);
    const Json changed = Json::parse(RunRctool("list --json " + path).m_output)["updates"][0];
    EXPECT_EQ(changed["changed"], Json::parse(R"({"x":33,"y":17,"width":32,"height":32})"));
}

TEST_F(RctoolCompare, ListNamesWhatCameOfAnUpdate) {
    const EncodedUpdate nothing{10, {0, 0, 16, 16}, {0xFF, 0xFF}};
    const auto resultOf = [&](std::optional<uint64_t> result) -> std::string {
        const std::string path = RecordedBits(nothing, result);
        return Json::parse(RunRctool("list --json " + path).m_output)["updates"][0]["result"];
    };
    EXPECT_EQ(resultOf({}), "unknown");
    EXPECT_EQ(resultOf(0), "unchanged");
    EXPECT_EQ(resultOf(FailedResult), "failed");
}

TEST_F(RctoolCompare, EqualPicturesAreExitCode0) {
    const std::string a = Saved("a.png", Picture(20, 10, {1, 2, 3}));
    std::ofstream(In("a.ppm"), std::ios::binary) << "P6\n# by hand\n20 10\n255\n"
                                                 << [] {
                                                        std::string samples;
                                                        for (int i = 0; i < 200; ++i)
                                                            samples += "\x01\x02\x03";
                                                        return samples;
                                                    }();
    for (const std::string& b : {a, In("a.ppm")}) {
        const ProgramRun run = RunRctool("compare " + a + " " + b + " -o " + In("d.png"));
        EXPECT_EQ(run.m_iExitCode, 0) << run.m_output;
        EXPECT_NE(run.m_output.find("equal\n"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(In("d.png")));
    }
}

TEST_F(RctoolCompare, PicturesThatDifferAreExitCode4WithPsnrPlaceAndPictureOfDifferences) {
    Picture picture(20, 10, {100, 100, 100});
    const std::string a = Saved("a.png", picture);
    picture.At(3, 4) = {110, 100, 100};
    picture.At(5, 4) = {100, 100, 80};
    const std::string b = Saved("b.png", picture);
    const ProgramRun run = RunRctool("compare " + a + " " + b + " -o " + In("d.png"));
    EXPECT_EQ(run.m_iExitCode, 4);
    // Squares 100 + 400 over 600 samples.
    const double psnr = 10 * std::log10(255.0 * 255.0 * 600 / 500);
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f dB", psnr);
    EXPECT_EQ(run.m_output, std::string(text) + ", pixels that differ: 2, in 3,4 3x1\n" +
                                In("d.png") + ": differences, 12.8 times as bright\n");
    const Picture shown = streamencoder::ReadPng(In("d.png"));
    EXPECT_EQ(shown.At(5, 4), (streamencoder::RgbPixel{0, 0, 255}));
    EXPECT_EQ(shown.At(3, 4), (streamencoder::RgbPixel{128, 0, 0}));
    EXPECT_EQ(shown.At(0, 0), (streamencoder::RgbPixel{0, 0, 0}));
    const ProgramRun json = RunRctool("compare --json " + a + " " + b);
    EXPECT_EQ(json.m_iExitCode, 4);
    EXPECT_NEAR(Json::parse(json.m_output)["psnr"].get<double>(), psnr, 1e-9);
    EXPECT_EQ(RunRctool("compare --quiet " + a + " " + b).m_output, "");
    const ProgramRun sizes = RunRctool("compare " + a + " " + Saved("c.png", Picture(20, 11)));
    EXPECT_EQ(sizes.m_iExitCode, 4);
    EXPECT_EQ(sizes.m_output, "20 x 10 pixels and 20 x 11 pixels\n");
}

TEST_F(RctoolCompare, RecordingsAreComparedUpdateByUpdate) {
    Picture frame(40, 20, {10, 20, 30});
    const std::string first = Saved("a.png", frame);
    frame.At(20, 0) = {255, 255, 255};
    const std::string second = Saved("b.png", frame);
    const std::string fine = Encoded("fine.rcrec", first + " " + second + " " + first);
    const std::string same =
        Encoded("same.rcrec", "--layout inplace --fps 3 " + first + " " + second + " " + first);
    const ProgramRun equal = RunRctool("compare " + fine + " " + same);
    EXPECT_EQ(equal.m_iExitCode, 0);
    EXPECT_EQ(equal.m_output, "equal\nupdates: 3 and 3, that differ: 0\n");
    const std::string other =
        Encoded("other.rcrec", first + " " + first + " " + first + " " + first);
    const ProgramRun run = RunRctool("compare --json " + fine + " " + other);
    EXPECT_EQ(run.m_iExitCode, 4);
    const Json json = Json::parse(run.m_output);
    EXPECT_EQ(json["updates"], Json::parse("[3, 4]"));
    ASSERT_EQ(json["differences"].size(), 1U);
    EXPECT_EQ(json["differences"][0]["update"], 1);
    EXPECT_EQ(json["differences"][0]["rectangle"]["x"], 16);
    // The overall ratio is over three times as many samples.
    EXPECT_NEAR(json["psnr"].get<double>(),
                json["differences"][0]["psnr"].get<double>() + 10 * std::log10(3.0), 1e-9);
    EXPECT_NE(RunRctool("compare " + fine + " " + other).m_output.find("update 1: "),
              std::string::npos);
    EXPECT_EQ(RunRctool("compare " + fine + " " + first).m_iExitCode, 1);
    EXPECT_EQ(RunRctool("compare " + fine + " " + In("missing")).m_iExitCode, 2);
    auto bytes = ReadBytes(same);
    bytes.resize(bytes.size() - 1);
    WriteBytes(same, bytes);
    EXPECT_EQ(RunRctool("compare " + fine + " " + same).m_iExitCode, 5);
}

TEST_F(RctoolCompare, WrongPpmFilesAreNamed) {
    const std::string good = Saved("a.png", Picture(2, 1));
    for (const std::string text :
         {"P6", "P6 2 1 65535\n", "P6 0 1 255\n", "P6 2 1 255\n12345", "P6 70000 1 255\n"}) {
        std::ofstream(In("x.ppm"), std::ios::binary) << text;
        const ProgramRun run = RunRctool("compare " + good + " " + In("x.ppm"));
        EXPECT_EQ(run.m_iExitCode, 2) << text;
        EXPECT_EQ(run.m_output.find("rctool: " + In("x.ppm") + ": "), 0U) << run.m_output;
    }
}

} // namespace
} // namespace Vostrel::rctool
