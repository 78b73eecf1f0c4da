#include "tools/rctool/RecordedUpdates.h"

#include "tools/rctool/Counted.h"
#include "tools/rctool/ExitCode.h"

#include <cstdio>
#include <stdexcept>

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

int ReportFailures(size_t unexpectedFailures) {
    if (unexpectedFailures == 0)
        return Done;
    std::fprintf(stderr, "rctool: %s cannot be decoded, and could when recorded\n",
                 Counted(unexpectedFailures, "update").c_str());
    return UpdateFailed;
}

int ReportNoSuchUpdate(const std::string& path, size_t updates,
                       const recording::RecordingEnd& end) {
    const std::string message =
        path + ": The recording has " + Counted(updates, "update") + ", counted from 0";
    if (end.m_kind == EndKind::Whole)
        throw std::invalid_argument(message);
    std::fprintf(stderr, "rctool: %s\n", message.c_str());
    return ReportEnd(path, end);
}

int ReportNoUpdates(const std::string& path, const recording::RecordingEnd& end) {
    if (end.m_kind == EndKind::Whole)
        throw std::runtime_error(path + ": The recording holds no updates");
    return ReportEnd(path, end);
}

size_t CountUpdates(recording::RecordingReader& reader) {
    const auto index = reader.ReadIndex();
    return index ? index->size() : 0;
}

recording::RecordingEnd ReadToEnd(recording::RecordingReader& reader) {
    while (reader.Next())
        CheckForInterruption();
    return reader.GetEnd();
}

} // namespace Vostrel::rctool
