#include "tools/rctool/Options.h"

#include "tools/rctool/Commands.h"

#include <array>
#include <cstdio>

namespace Vostrel::rctool {

using recording::EndKind;
using recording::KernelVariant;

namespace {

template <size_t count, class Value>
const char* NameIn(const std::array<const char*, count>& names, Value value) {
    return names.at(static_cast<size_t>(value));
}

} // namespace

void AddRecordingArgument(CLI::App& app, std::string& path) {
    app.add_option("RECORDING", path, "a recording (.rcrec)")->required()->type_name("");
}

void AddForce(CLI::App& app, bool& force, const char* help) {
    app.add_flag("--force", force, help);
}

void AddDecodingOptions(CLI::App& app, DecodingOptions& options) {
    app.add_option("--threads", options.m_threads,
                   "worker threads, 0 to 64 [as the recording wants]")
        ->type_name("N")
        ->check(CLI::Range(0, 64).description(""));
    AddChoice<KernelVariant>(app, "--kernels", options.m_kernels,
                             {{"portable", KernelVariant::Portable},
                              {"sse2", KernelVariant::Sse2},
                              {"avx2", KernelVariant::Avx2}},
                             "portable, sse2 or avx2 [the recorded kind]");
}

const char* NameOf(streamencoder::Codec codec) {
    return NameIn(std::array{"ict", "lbe"}, codec);
}

const char* NameOf(streamencoder::ChromaSubsampling chroma) {
    return NameIn(std::array{"420", "422", "444"}, chroma);
}

const char* NameOf(streamencoder::RecordLayout layout) {
    return NameIn(std::array{"continuous", "pool", "inplace"}, layout);
}

const char* NameOf(recording::Sink sink) {
    return NameIn(std::array{"argb", "planes"}, sink);
}

const char* NameOf(KernelVariant variant) {
    return NameIn(std::array{"portable", "sse2", "avx2"}, variant);
}

const char* NameOf(recording::KernelRule rule) {
    return NameIn(std::array{"accelerated", "portable"}, rule);
}

const char* NameOf(streamencoder::Codec codec, libimagedecoder::IctComponent component) {
    if (codec == streamencoder::Codec::Lbe)
        return component == libimagedecoder::ComponentY ? "luma" : "chroma";
    return NameIn(std::array{"Y", "Cb", "Cr"}, component);
}

walker::WalkFormat WalkFormatOf(const recording::Header& header) {
    return {header.m_codec, header.m_uiProtocolVersion, header.m_chroma,
            header.m_uiProtocolVersion >= 2 &&
                header.m_layout == streamencoder::RecordLayout::Pool};
}

int ReportEnd(const std::string& path, const recording::RecordingEnd& end) {
    const auto offset = static_cast<unsigned long long>(end.m_uiOffset);
    switch (end.m_kind) {
    case EndKind::Whole:
        return Done;
    case EndKind::Cut:
        std::fprintf(stderr, "rctool: %s: The file is cut in the record at byte %llu\n",
                     path.c_str(), offset);
        break;
    case EndKind::Damaged:
        std::fprintf(stderr, "rctool: %s: The file is damaged at byte %llu: %s\n", path.c_str(),
                     offset, end.m_reason.c_str());
        break;
    case EndKind::LaterVersion:
        std::fprintf(stderr, "rctool: %s: The record at byte %llu needs a later version\n",
                     path.c_str(), offset);
        break;
    }
    return RecordingEnds;
}

bool ReportFailures(size_t failures, size_t recordedFailures) {
    if (failures <= recordedFailures)
        return false;
    std::fprintf(stderr, "rctool: %zu updates fail, %zu of them when they were recorded\n",
                 failures, recordedFailures);
    return true;
}

std::invalid_argument NoSuchUpdate(const std::string& path, size_t updates) {
    return std::invalid_argument(path + ": The recording has " + std::to_string(updates) +
                                 " updates, counted from 0");
}

recording::RecordedUpdate ReadUpdate(recording::RecordingReader& reader, const std::string& path,
                                     size_t number) {
    const auto index = reader.FindUpdates();
    if (number >= index.size())
        throw NoSuchUpdate(path, index.size());
    reader.GoTo(index[number].m_uiOffset);
    const auto record = reader.Next();
    if (!record)
        throw recording::RecordingError(path +
                                        ": The update is damaged: " + reader.GetEnd().m_reason);
    return std::get<recording::RecordedUpdate>(*record);
}

} // namespace Vostrel::rctool
