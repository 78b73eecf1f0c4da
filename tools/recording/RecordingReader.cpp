#include "tools/recording/RecordingReader.h"

#include "tools/recording/RecordBodies.h"
#include "tools/recording/RecordingInput.h"

#include <istream>
#include <utility>

namespace Vostrel::recording {

RecordingReader::RecordingReader(std::unique_ptr<std::istream> in)
    : RecordingReader(std::move(in), "") {}

RecordingReader::RecordingReader(const std::string& path)
    : RecordingReader(OpenRecording(path), path + ": ") {}

RecordingReader::RecordingReader(std::unique_ptr<std::istream> in, const std::string& name)
    : m_file(std::move(in), name) {
    const auto bytes = m_file.ReadHeader();
    m_uiFileVersion = FileVersionOf(bytes);
    try {
        m_header = ParseHeader(bytes);
    } catch (const BadRecord& error) {
        throw RecordingError(name + "The recording's header is wrong: " + error.what());
    }
    m_uiFirstRecord = bytes.size();
    Restart();
}

void RecordingReader::Restart() {
    m_uiOffset = m_uiFirstRecord;
    m_settings = m_header.m_settings;
    m_vDecoders.assign(1, m_header);
    m_end = {};
}

std::optional<Record> RecordingReader::Next() {
    while (m_end.m_kind == EndKind::Whole && m_uiOffset < m_file.GetSize()) {
        try {
            const RawRecord raw = m_file.ReadRecord(m_uiOffset);
            auto record = Interpret(raw);
            m_uiRecordOffset = std::exchange(m_uiOffset, raw.GetHead().m_uiEnd);
            if (record)
                return record;
        } catch (const BadRecord& error) {
            m_end = {error.m_kind, m_uiOffset, error.what()};
        }
    }
    m_end.m_uiOffset = m_uiOffset;
    return std::nullopt;
}

/// Nothing for one that is to be passed over.
std::optional<Record> RecordingReader::Interpret(const RawRecord& raw) {
    ByteSource body(raw.GetBody());
    const uint8_t type = raw.GetHead().m_uiType;
    switch (static_cast<RecordType>(type)) {
    case RecordType::Update:
        return CheckedUpdate(ParseUpdate(body, m_uiFileVersion));
    case RecordType::Settings:
        return m_settings = recording::GetSettings(body);
    case RecordType::Picture:
        return ParsePicture(body, PictureSize(m_settings, m_header.m_chroma));
    case RecordType::Decoder:
        if (m_uiFileVersion > FirstFileVersion)
            return Added(ParseDecoder(body));
        break;
    case RecordType::Note:
        return ParseNote(body);
    default:
        break;
    }
    if (type < FirstSkippableType)
        throw BadRecord(EndKind::LaterVersion);
    return std::nullopt;
}

RecordedUpdate RecordingReader::CheckedUpdate(RecordedUpdate update) const {
    if (update.m_uiDecoder >= m_vDecoders.size())
        throw BadRecord("an update is for a decoder that no record describes");
    return update;
}

AddedDecoder RecordingReader::Added(const AddedDecoder& decoder) {
    if (decoder.m_uiIndex != m_vDecoders.size())
        throw BadRecord("a decoder has another index than the next one");
    m_vDecoders.push_back(decoder.m_format);
    return decoder;
}

std::optional<std::vector<IndexEntry>> RecordingReader::ReadIndex() {
    constexpr uint64_t TailSize = sizeof(uint64_t) + CrcSize;
    if (m_file.GetSize() < m_uiFirstRecord + SmallestRecord + TailSize)
        return std::nullopt;
    const auto tail = m_file.ReadBytes(m_file.GetSize() - TailSize, TailSize);
    const auto offset = ByteSource(tail).Get<uint64_t>();
    if (offset < m_uiFirstRecord || offset > m_file.GetSize() - SmallestRecord)
        return std::nullopt;
    try {
        const RawRecord raw = m_file.ReadRecord(offset);
        const bool isLast = raw.GetHead().m_uiEnd == m_file.GetSize();
        if (static_cast<RecordType>(raw.GetHead().m_uiType) == RecordType::Index && isLast)
            return ParseIndex(ByteSource(raw.GetBody()), offset);
    } catch (const BadRecord&) {
        // What stands there is no index.
    }
    return std::nullopt;
}

std::vector<IndexEntry> RecordingReader::FindUpdates() {
    auto index = ReadIndex();
    if (!index || !NamesAllUpdates(*index)) {
        index.emplace();
        Restart();
        while (const auto record = Next()) {
            if (const auto* update = std::get_if<RecordedUpdate>(&*record))
                index->push_back({m_uiRecordOffset, update->m_uiTime});
        }
    }
    Restart();
    return *std::move(index);
}

bool RecordingReader::NamesAllUpdates(const std::vector<IndexEntry>& index) {
    auto next = index.begin();
    try {
        for (Restart(); m_uiOffset < m_file.GetSize(); PassOver()) {
            const RecordHead head = m_file.ReadHead(m_uiOffset);
            if (static_cast<RecordType>(head.m_uiType) != RecordType::Update)
                continue;
            if (next == index.end() || next->m_uiOffset != m_uiOffset)
                return false;
            ++next;
        }
    } catch (const BadRecord&) {
        return false;
    }
    return next == index.end();
}

std::vector<DecoderFormat> RecordingReader::FindDecoders() {
    try {
        for (Restart(); m_uiOffset < m_file.GetSize();)
            PassOver();
    } catch (const BadRecord&) {
        // Reading will come to the same record.
    }
    auto decoders = m_vDecoders;
    Restart();
    return decoders;
}

void RecordingReader::GoTo(uint64_t offset) {
    if (offset < m_uiOffset)
        Restart();
    m_end = {};
    while (m_uiOffset < offset && m_uiOffset < m_file.GetSize())
        PassOver();
    if (m_uiOffset != offset)
        throw RecordingError("No record of the recording begins at byte " + std::to_string(offset));
}

/// Goes on after the record at m_uiOffset. Settings and decoders must be known, and records that
/// must not be passed over must not be among them.
void RecordingReader::PassOver() {
    const RecordHead head = m_file.ReadHead(m_uiOffset);
    const auto type = static_cast<RecordType>(head.m_uiType);
    const bool needsReading = head.m_uiType < FirstSkippableType && type != RecordType::Update &&
                              type != RecordType::Picture;
    if (needsReading)
        Interpret(m_file.ReadRecord(m_uiOffset));
    m_uiOffset = head.m_uiEnd;
}

} // namespace Vostrel::recording
