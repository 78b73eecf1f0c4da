// Writes seeds for the update, walk, tile, plane and recording harnesses: small pictures from the
// encoders in every version, subsampling, layout and a range of qualities.

#include "fuzz/UpdateInput.h"
#include "tests/model/ModelLbe.h"
#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"
#include "tools/recording/RecordingWriter.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace Vostrel::fuzz {
namespace {

using namespace streamencoder;
namespace fs = std::filesystem;

/// Something of everything: an even ground, a slope, sharp edges and noise.
Picture MakePicture(size_t width, size_t height, unsigned style) {
    Picture picture(width, height, {200, 180, 90});
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            const auto slope = static_cast<uint8_t>(4 * x + 2 * y);
            if (style == 1)
                picture.At(x, y) = {slope, static_cast<uint8_t>(255 - slope), 60};
            else if (style == 2 && (x / 3 + y / 5) % 2 == 0)
                picture.At(x, y) = {0, 0, 255};
            else if (style == 3 && x < 8)
                picture.At(x, y) = {static_cast<uint8_t>(x * y * 89), slope, 7};
        }
    }
    return picture;
}

std::unique_ptr<UpdateEncoder> MakeEncoder(const UpdateFormat& format, ChromaSubsampling chroma,
                                           unsigned step) {
    if (format.m_codec == Codec::Lbe)
        return std::make_unique<LbeEncoder>(
            format, chroma, 2 + step % (format.m_uiProtocolVersion == 0 ? 6u : 10u));
    return std::make_unique<IctEncoder>(format, chroma, step * 5 % 16);
}

FuzzedUpdate Fuzzed(const EncodedUpdate& update) {
    const auto& area = update.m_rectangle;
    FuzzedUpdate fuzzed;
    fuzzed.m_uiKind = FuzzedUpdate::FarRectangle;
    fuzzed.m_uiQuality = static_cast<uint8_t>(update.m_uiQuality);
    fuzzed.m_uiContrast = 20;
    fuzzed.m_uiPiece = 255;
    fuzzed.m_uiX = area.m_uiX;
    fuzzed.m_uiY = area.m_uiY;
    fuzzed.m_uiWidth = area.m_uiWidth;
    fuzzed.m_uiHeight = area.m_uiHeight;
    fuzzed.m_Payload = update.m_vuiPayload;
    return fuzzed;
}

void Write(const fs::path& folder, const std::vector<uint8_t>& bytes, unsigned number) {
    fs::create_directories(folder);
    std::ofstream file(folder / ("seed-" + std::to_string(number)), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

/// Two updates of a sequence, the second with a block that changed.
struct Seed {
    EncodedUpdate m_first;
    EncodedUpdate m_second;
    FuzzedLife m_life; ///< its payloads are those of the two
};

Seed MakeSeed(const UpdateFormat& format, ChromaSubsampling chroma, unsigned number) {
    const size_t width = 17 + number * 7 % 23;
    const size_t height = 9 + number * 11 % 25;
    const auto encoder = MakeEncoder(format, chroma, number);
    const Picture first = MakePicture(width, height, number % 4);
    Picture second = first;
    second.At(width - 1, height - 1) = {1, 2, 3};

    Seed seed{encoder->EncodeUpdate(first, nullptr), encoder->EncodeUpdate(second, &first), {}};
    FuzzedLife& life = seed.m_life;
    life.m_uiVersion = static_cast<uint8_t>(format.m_uiProtocolVersion);
    life.m_uiChroma = static_cast<uint8_t>(chroma);
    life.m_uiThreads = format.m_layout == RecordLayout::Continuous
                           ? uint8_t{0}
                           : static_cast<uint8_t>(1 + number % 4);
    life.m_uiKernel = static_cast<uint8_t>(number % KernelVariants());
    life.m_uiSink = static_cast<uint8_t>(number % 5 == 0 ? 1 : 0);
    life.m_uiPlace = static_cast<uint8_t>(number % 2);
    life.m_uiWidth = static_cast<uint8_t>(width - 1);
    life.m_uiHeight = static_cast<uint8_t>(height - 1);
    life.m_vUpdates = {Fuzzed(seed.m_first), Fuzzed(seed.m_second)};
    return seed;
}

/// The tiles of an update of version 1, whose first bit is a skip code.
std::vector<uint8_t> TileInput(const FuzzedLife& life) {
    std::vector<uint8_t> bytes{
        life.m_uiKernel, 1, life.m_vUpdates[0].m_uiQuality, 0, 0, 0, 0, 0, 255, 1};
    const auto payload = life.m_vUpdates[0].m_Payload;
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

/// The same for the planes of LBE blocks.
std::vector<uint8_t> PlaneInput(const FuzzedLife& life) {
    const auto depths = *model::LbeDepths(life.m_vUpdates[0].m_uiQuality, 1);
    const auto choiceOf = [](int literalBits) { return static_cast<uint8_t>(literalBits - 2); };
    const auto chromaShape = static_cast<uint8_t>(life.m_uiChroma);
    std::vector<uint8_t> bytes{life.m_uiKernel,
                               2,
                               choiceOf(depths.lumaBits),
                               1,
                               chromaShape,
                               choiceOf(2 * depths.chromaBits),
                               1,
                               0,
                               255,
                               1};
    const auto payload = life.m_vUpdates[0].m_Payload;
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

/// A recording with a record of every kind, closed or not.
std::vector<uint8_t> RecordingInput(const Seed& seed, const UpdateFormat& format, unsigned number) {
    recording::Header header;
    header.m_codec = format.m_codec;
    header.m_uiProtocolVersion = static_cast<uint8_t>(format.m_uiProtocolVersion);
    header.m_chroma = static_cast<ChromaSubsampling>(seed.m_life.Chroma());
    header.m_layout = format.m_layout;
    header.m_settings.m_uiWidth = 8;
    header.m_settings.m_uiHeight = 4;
    header.m_uiThreads = seed.m_life.m_uiThreads;
    auto out = std::make_unique<std::ostringstream>();
    const std::ostringstream& memory = *out;
    recording::RecordingWriter writer(std::move(out), header);
    constexpr size_t PictureBytes = size_t{8} * 4 * 4;
    writer.Write(recording::RecordedPicture{std::vector<uint8_t>(PictureBytes, 0x40)});
    recording::RecordedUpdate update;
    update.m_encoded = seed.m_first;
    update.m_result = number % 2 == 0 ? std::optional(recording::FailedResult) : std::nullopt;
    writer.Write(update);
    recording::Settings settings = header.m_settings;
    settings.m_uiContrast = static_cast<uint8_t>(number % 101);
    writer.Write(settings);
    recording::AddedDecoder other{1, header};
    other.m_format.m_codec = format.m_codec == Codec::Ict ? Codec::Lbe : Codec::Ict;
    writer.Write(other);
    update.m_uiDecoder = static_cast<uint8_t>(number % 2);
    update.m_encoded = seed.m_second;
    update.m_uiTime = number;
    update.m_coverage = static_cast<recording::Coverage>(number % 3);
    writer.Write(update);
    writer.Write(recording::Note{"seed"});
    if (number % 4 != 0)
        writer.Close();
    const std::string text = memory.str();
    return {text.begin(), text.end()};
}

void MakeAll(const fs::path& folder) {
    unsigned number = 0;
    for (const Codec codec : {Codec::Ict, Codec::Lbe}) {
        const std::string name = codec == Codec::Ict ? "Ict" : "Lbe";
        for (unsigned version = 0; version <= 2; ++version) {
            for (unsigned chroma = 0; chroma <= 2; ++chroma) {
                for (unsigned layout = 0; layout <= (version == 2 ? 2u : 0u); ++layout) {
                    for (unsigned step = 0; step < 4; ++step) {
                        UpdateFormat format;
                        format.m_codec = codec;
                        format.m_uiProtocolVersion = version;
                        format.m_layout = static_cast<RecordLayout>(layout);
                        format.m_minSkipForm = static_cast<SkipForm>(step % 3);
                        format.m_bLongLengthPrefix = step == 3;
                        const Seed seed =
                            MakeSeed(format, static_cast<ChromaSubsampling>(chroma), ++number);
                        Write(folder / (name + "Update"), WriteLife(seed.m_life), number);
                        Write(folder / (name + "Walk"), WriteLife(seed.m_life), number);
                        if (number % 8 == 0)
                            Write(folder / (name + "Rows"), WriteLife(seed.m_life), number);
                        if (number % 8 == 1)
                            Write(folder / "Recording", RecordingInput(seed, format, number),
                                  number);
                        if (codec == Codec::Ict && version == 1)
                            Write(folder / "Tile", TileInput(seed.m_life), number);
                        if (codec == Codec::Lbe && version == 1)
                            Write(folder / "LbePlane", PlaneInput(seed.m_life), number);
                    }
                }
            }
        }
    }
}

} // namespace
} // namespace Vostrel::fuzz

int main(int argc, char** argv) {
    if (argc != 2)
        return 1;
    Vostrel::fuzz::MakeAll(argv[1]);
    return 0;
}
