#include "tools/rctool/RecordedUpdates.h"

#include "tools/rctool/ExitCode.h"

#include <cstdio>

namespace Vostrel::rctool {

using recording::EndKind;

namespace {

struct RecordApplier {
    void operator()(const recording::RecordedUpdate&) const {}
    void operator()(const recording::Note&) const {}
    template <class Change>
    void operator()(const Change& change) const {
        m_player.Apply(change);
    }

    recording::Player& m_player;
};

} // namespace

walker::StreamWalker WalkerOf(const recording::RecordingReader& reader,
                              const recording::RecordedUpdate& update) {
    const recording::DecoderFormat& format = reader.GetDecoders().at(update.m_uiDecoder);
    walker::StreamWalker streamWalker({format.m_codec, format.m_uiProtocolVersion, format.m_chroma,
                                       recording::CutsRecords(format)});
    const recording::Settings& settings = reader.GetSettings();
    streamWalker.SetResolution(settings.m_uiWidth, settings.m_uiHeight);
    return streamWalker;
}

void ApplyTo(recording::Player& player, const recording::Record& record, uint64_t offset) {
    try {
        std::visit(RecordApplier{player}, record);
    } catch (const recording::RecordingError& error) {
        throw recording::RecordingError("The record at byte " + std::to_string(offset) + ": " +
                                        error.what());
    }
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
