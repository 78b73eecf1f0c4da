#include "tools/rctool/Recorder.h"

#include "tools/rctool/Destination.h"
#include "tools/rctool/RecordedUpdates.h"
#include "tools/rctool/StdioStream.h"
#include "tools/recording/DecoderFactory.h"

#include <filesystem>

namespace Vostrel::rctool {

using namespace recording;

namespace {

void CheckThatItCanGoOn(const std::string& path, const RecordingEnd& end, bool dropRest) {
    if (end.m_kind == EndKind::Whole)
        return;
    const std::string place = std::to_string(end.m_uiOffset);
    if (end.m_kind == EndKind::LaterVersion)
        throw RecordingError(path + ": The record at byte " + place + " needs a later version");
    if (!dropRest)
        throw RecordingError(path + ": The recording is cut or damaged at byte " + place +
                             "; --force drops what follows there");
}

FileLock LockRecording(const std::string& path) {
    if (FindDestination(path).m_kind != DestinationKind::File)
        throw RecordingError(path + ": Frames can be added to files only");
    return FileLock(path);
}

} // namespace

Recorder::Recorder(std::FILE* file, const std::string& path, const Header& header)
    : m_path(path), m_header(header), m_pPlayer(std::make_unique<Player>(header, PlayerOptions{})) {
    m_header.m_uiThreads = m_pPlayer->GetThreads();
    m_vDecoders.assign(1, m_header);
    m_pWriter = std::make_unique<RecordingWriter>(std::make_unique<StdioStream>(file), m_header,
                                                  path + ": ");
}

Recorder::Recorder(const std::string& path, bool dropRest)
    : m_path(path), m_lock(LockRecording(path)) {
    RecordingReader reader(path);
    m_header = reader.GetHeader();
    m_pPlayer = std::make_unique<Player>(m_header, PlayerOptions{});
    auto updates = PlayAll(reader);
    m_header.m_settings = reader.GetSettings();
    m_vDecoders = reader.GetDecoders();
    const RecordingEnd& end = reader.GetEnd();
    CheckThatItCanGoOn(path, end, dropRest);
    m_pWriter = std::make_unique<RecordingWriter>(path, reader.GetFileVersion(), end.m_uiOffset,
                                                  std::move(updates));
    m_oldEnd = end.m_uiOffset;
}

Recorder::~Recorder() {
    if (!m_oldEnd)
        return;
    m_pWriter.reset();
    std::error_code ignored;
    std::filesystem::resize_file(m_path, *m_oldEnd, ignored);
}

std::vector<IndexEntry> Recorder::PlayAll(RecordingReader& reader) {
    std::vector<IndexEntry> updates;
    ForEachUpdate(reader, *m_pPlayer, [&](const RecordedUpdate& update) {
        m_pPlayer->Play(update);
        m_time = update.m_uiTime;
        updates.push_back({reader.GetOffset(), update.m_uiTime});
        return true;
    });
    return updates;
}

uint8_t Recorder::AddDecoder(DecoderFormat format) {
    if (m_vDecoders.size() == MaxDecoders)
        throw RecordingError(m_path + ": The recording holds as many decoders as it can");
    format.m_uiThreads = ChooseThreads(format, std::nullopt);
    const AddedDecoder added{static_cast<uint8_t>(m_vDecoders.size()), format};
    m_pPlayer->Apply(added);
    m_pWriter->Write(added);
    m_vDecoders.push_back(format);
    return added.m_uiIndex;
}

void Recorder::Use(const Settings& settings) {
    m_pPlayer->Apply(settings);
    m_pWriter->Write(settings);
    m_header.m_settings = settings;
}

void Recorder::Write(const EncodedUpdate& encoded, uint8_t decoder, uint64_t time, bool checked) {
    RecordedUpdate update;
    update.m_uiDecoder = decoder;
    update.m_encoded = encoded;
    update.m_uiTime = time;
    if (checked)
        AddChecksum(update);
    m_pWriter->Write(update);
    m_time = time;
    ++m_uiAdded;
}

void Recorder::AddChecksum(RecordedUpdate& update) {
    const auto played = m_pPlayer->Play(update);
    if (!played.m_failure.empty())
        throw RecordingError("An update cannot be decoded: " + played.m_failure);
    update.m_result = played.m_uiResult;
    update.m_coverage = Coverage::Framebuffer;
    update.m_uiPictureCrc =
        m_pPlayer->GetFramebuffer().GetCrc(update.m_coverage, update.m_encoded.m_rectangle);
}

void Recorder::Close() {
    m_pWriter->Close();
    m_oldEnd.reset();
}

} // namespace Vostrel::rctool
