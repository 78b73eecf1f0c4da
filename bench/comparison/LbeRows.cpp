#include "bench/DecodingScene.h"
#include "bench/comparison/InstructionLimit.h"
#include "bench/comparison/Peers.h"
#include "bench/comparison/Rows.h"
#include "bench/comparison/Screens.h"

#include <stdexcept>
#include <string>

// Whole screens as LBE against general compressors of the same pixels.

namespace Vostrel::bench {

using namespace streamencoder;

namespace {

constexpr uint32_t Quality = 10; // 6 bits of luma, 4 of each chroma component
constexpr int ZlibLevel = 6;

struct LbeCase {
    unsigned m_uiRow;
    ChromaSubsampling m_chroma;
    Goal m_goalAgainstZlib;
    Goal m_goalAgainstQoi = {};
    Goal m_goalAgainstLz4 = {};
    Instructions m_instructions = Instructions::All;
};

/// One compressor, its stream of the screen, and how to decode that into a framebuffer of its own.
struct Rival {
    const char* m_measure;
    Goal m_goal;
    std::vector<uint8_t> m_vuiStream;
    void (*m_decode)(const std::vector<uint8_t>& stream, const Pixels& target);
    std::vector<uint32_t> m_vuiFramebuffer = {};

    void Decode(const Picture& shape) {
        m_vuiFramebuffer.resize(shape.m_vPixels.size());
        m_decode(m_vuiStream, {m_vuiFramebuffer.data(), shape.m_uiWidth, shape.m_uiHeight});
    }
};

std::vector<Rival> Rivals(const LbeCase& work, const Pixels& screen) {
    return {
        {"x zlib level 6", work.m_goalAgainstZlib, Zlib::Encode(screen, ZlibLevel), Zlib::Decode},
        {"x QOI", work.m_goalAgainstQoi, Qoi::Encode(screen), Qoi::Decode},
        {"x lz4", work.m_goalAgainstLz4, Lz4::Encode(screen), Lz4::Decode},
        {"x libpng", {}, Png::Encode(screen), Png::Decode}};
}

std::string NameOf(const LbeCase& work) {
    return std::string("LBE ") + (work.m_chroma == ChromaSubsampling::Yuv420 ? "4:2:0" : "4:4:4") +
           " desktop quality " + std::to_string(Quality) + Suffix(work.m_instructions);
}

void MeasureScreen(const LbeCase& work, const RoundSettings& settings, Report& report) {
    const Picture picture = WholeScreen(Screen::Desktop);
    const UpdateFormat format{.m_codec = Codec::Lbe, .m_uiProtocolVersion = 1};
    EncodedUpdate update = EncodeScreen(picture, format, work.m_chroma, Quality);
    const InstructionLimit limit(work.m_instructions);
    DecodingScene scene({Codec::Lbe, 1, work.m_chroma, 0, picture.m_uiWidth, picture.m_uiHeight});
    CheckKernels(scene, work.m_instructions);

    std::vector<uint32_t> words = ArgbWords(picture);
    std::vector<Rival> rivals = Rivals(work, {words.data(), picture.m_uiWidth, picture.m_uiHeight});
    Rounds rounds(settings);
    const size_t ours = rounds.Add([&] { scene.Decode(update); });
    std::vector<size_t> peers;
    peers.reserve(rivals.size());
    for (Rival& rival : rivals)
        peers.push_back(rounds.Add([&] { rival.Decode(picture); }));
    rounds.Run();
    CheckRecognisable(scene.Framebuffer(), picture);

    for (size_t i = 0; i < rivals.size(); ++i) {
        const Rival& rival = rivals[i];
        if (rival.m_vuiFramebuffer != words)
            throw std::logic_error("A peer does not decode its own stream");
        report.Add({work.m_uiRow, NameOf(work), rival.m_measure, rounds.Speedup(ours, peers[i]),
                    rival.m_goal, rounds.Nanoseconds(ours), rounds.Nanoseconds(peers[i]),
                    BitsPerPixel(update),
                    8.0 * static_cast<double>(rival.m_vuiStream.size()) /
                        static_cast<double>(words.size())});
    }
}

} // namespace

void MeasureLbe420(const RoundSettings& settings, Report& report) {
    MeasureScreen({10, ChromaSubsampling::Yuv420, {7}, {1.5}, {Goal::None, 1.0}}, settings, report);
}

void MeasureLbe444(const RoundSettings& settings, Report& report) {
    MeasureScreen({11, ChromaSubsampling::Yuv444, {5, 7}}, settings, report);
}

void MeasureLbeWithLessInstructions(const RoundSettings& settings, Report& report) {
    MeasureScreen({13, ChromaSubsampling::Yuv420, {4}, {}, {}, Instructions::Sse2}, settings,
                  report);
}

} // namespace Vostrel::bench
