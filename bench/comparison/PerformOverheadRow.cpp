#include "bench/DecodingScene.h"
#include "bench/comparison/LevelPicture.h"
#include "bench/comparison/Rows.h"
#include "bench/comparison/Screens.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>

// What a call from Java costs beyond the decoding: the same update through performICT in a JVM, and
// through HandleUpdate here.

namespace Vostrel::bench {

using namespace streamencoder;

namespace {

#ifdef PERFORM_OVERHEAD_COMMAND
constexpr const char* JvmCommand = PERFORM_OVERHEAD_COMMAND;
#else
constexpr const char* JvmCommand = nullptr; // built without Java
#endif

constexpr size_t Edge = 64;
constexpr uint32_t Level = 8;

/// A file that is gone afterwards.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::vector<uint8_t>& bytes)
        : m_path(std::filesystem::temp_directory_path() /
                 ("update-" + std::to_string(getpid()) + ".ict")) {
        std::ofstream file(m_path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string Path() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

/// The only number that a command prints.
double NumberPrintedBy(const std::string& command) {
    const auto close = [](std::FILE* pipe) { pclose(pipe); };
    const std::unique_ptr<std::FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
    double number = 0;
    if (!pipe || std::fscanf(pipe.get(), "%lf", &number) != 1)
        throw std::runtime_error("No figure from " + command);
    return number;
}

void MeasureUpdate(const char* name, EncodedUpdate& update, const RoundSettings& settings,
                   Report& report) {
    DecodingScene scene({Codec::Ict, 0, ChromaSubsampling::Yuv420, 0, Edge, Edge});
    Rounds rounds(settings);
    const size_t native = rounds.Add([&] { scene.Decode(update); });
    rounds.Run();

    const TemporaryFile file(update.m_vuiPayload);
    const std::string edge = ' ' + std::to_string(Edge);
    // The JVM inherits the core.
    const double inJvm =
        NumberPrintedBy(std::string(JvmCommand) + ' ' + file.Path() + edge + edge + ' ' +
                        std::to_string(Level) + ' ' + std::to_string(settings.m_uiRounds));
    report.Add({14,
                name,
                "us more than HandleUpdate",
                (inJvm - rounds.Nanoseconds(native)) / 1000,
                {10, 3, false},
                inJvm,
                rounds.Nanoseconds(native)});
}

} // namespace

void MeasurePerformOverhead(const RoundSettings& settings, Report& report) {
    if (JvmCommand == nullptr) {
        std::puts(" 14  needs a build with IMAGEDECODER_JAVA=ON");
        return;
    }
    const Picture picture = Cut(WholeScreen(Screen::Desktop), 640, 320, Edge, Edge);
    const LevelPicture levels = QuantisePicture(picture, ChromaSubsampling::Yuv420, Level);
    const UpdateFormat format{.m_codec = Codec::Ict, .m_uiProtocolVersion = 0};
    const std::vector<bool> nothing(Edge * Edge / 256);
    EncodedUpdate unchanged = WriteIctUpdate(levels, Level, format, 0, 0, nothing);
    EncodedUpdate coded = WriteIctUpdate(levels, Level, format);
    MeasureUpdate("performICT of 64x64, nothing coded", unchanged, settings, report);
    MeasureUpdate("performICT of 64x64, all coded", coded, settings, report);
}

} // namespace Vostrel::bench
