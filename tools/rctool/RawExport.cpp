#include "tools/rctool/RawExport.h"

#include "tools/rctool/Interruption.h"
#include "tools/rctool/OutputFile.h"
#include "tools/rctool/UpdateJson.h"

#include <filesystem>
#include <span>

namespace Vostrel::rctool {

using recording::RecordedUpdate;

namespace {

void WriteBytes(const std::string& path, bool replace, std::span<const char> bytes) {
    WriteWhole(path, replace, [&](std::FILE* file) {
        std::fwrite(bytes.data(), 1, bytes.size(), file); // Errors are found at the end.
    });
}

void MakeFolder(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw std::runtime_error(folder + ": " + error.message());
}

std::string NameOfUpdate(size_t number) {
    char name[48];
    std::snprintf(name, sizeof(name), "update-%05zu.bin", number);
    return name;
}

} // namespace

size_t ExportRaw(recording::RecordingReader& reader, const std::string& folder, bool replace,
                 Progress& progress) {
    MakeFolder(folder);
    const std::string indexPath = folder + "/" + RawIndexName;
    CheckOutput(indexPath, replace);
    nlohmann::ordered_json index = {{"fileVersion", reader.GetFileVersion()},
                                    {"decoders", nlohmann::ordered_json::array()},
                                    {"updates", nlohmann::ordered_json::array()}};
    size_t count = 0;
    while (const auto record = reader.Next()) {
        CheckForInterruption();
        const auto* const update = std::get_if<RecordedUpdate>(&*record);
        if (update == nullptr)
            continue;
        progress.Step();
        const auto& payload = update->m_encoded.m_vuiPayload;
        const std::string name = NameOfUpdate(count);
        WriteBytes(folder + "/" + name, replace,
                   {reinterpret_cast<const char*>(payload.data()), payload.size()});
        index["updates"].push_back(DescribeUpdate(reader, *update, count));
        index["updates"].back()["file"] = name;
        ++count;
    }
    for (const recording::DecoderFormat& format : reader.GetDecoders())
        index["decoders"].push_back(DescribeDecoder(format));
    constexpr int Indent = 1;
    WriteBytes(indexPath, replace, index.dump(Indent) + "\n");
    return count;
}

} // namespace Vostrel::rctool
