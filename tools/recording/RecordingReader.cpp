#include "tools/recording/RecordingReader.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <istream>
#include <system_error>

namespace Vostrel::recording {
namespace {

constexpr uint64_t SmallestRecord = RecordHeadSize + CrcSize;

std::unique_ptr<std::istream> OpenFile(const std::string& path) {
    auto in = std::make_unique<std::ifstream>(path, std::ios::binary);
    // A folder opens well and cannot be read.
    if (!*in || in->peek() == std::istream::traits_type::eof())
        throw RecordingError(
            path + ": " +
            (errno != 0 ? std::generic_category().message(errno) : "The file is empty"));
    return in;
}

bool IsText(std::span<const uint8_t> bytes, std::string_view text) {
    return std::equal(bytes.begin(), bytes.end(), text.begin(), text.end());
}

/// Whether the last four bytes are the CRC of those before.
bool HasGoodCrc(std::span<const uint8_t> bytes) {
    ByteSource crc(bytes.last(CrcSize));
    return Crc32(bytes.first(bytes.size() - CrcSize)) == crc.Get<uint32_t>();
}

RecordedUpdate InterpretUpdate(ByteSource body) {
    const auto fieldsSize = body.Get<uint16_t>();
    if (fieldsSize < UpdateFieldsSize)
        throw RecordingError("an update's fields are too short");
    RecordedUpdate update;
    const auto flags = body.Get<uint8_t>();
    update.m_coverage = body.GetUpTo(Coverage::Rectangle);
    update.m_encoded.m_uiQuality = body.Get<uint32_t>();
    update.m_encoded.m_rectangle.m_uiX = body.Get<uint16_t>();
    update.m_encoded.m_rectangle.m_uiY = body.Get<uint16_t>();
    update.m_encoded.m_rectangle.m_uiWidth = body.Get<uint16_t>();
    update.m_encoded.m_rectangle.m_uiHeight = body.Get<uint16_t>();
    update.m_uiTime = body.Get<uint64_t>();
    const auto result = body.Get<uint64_t>();
    if ((flags & ResultKnown) != 0)
        update.m_result = result;
    update.m_uiPictureCrc = body.Get<uint32_t>();
    body.GetBytes(fieldsSize - UpdateFieldsSize);
    const auto payload = body.GetRest();
    update.m_encoded.m_vuiPayload.assign(payload.begin(), payload.end());
    return update;
}

Note InterpretNote(ByteSource body) {
    const auto text = body.GetRest();
    return {std::string(text.begin(), text.end())};
}

/// The entries of an index that stands at an offset; nothing when it stands elsewhere.
std::optional<std::vector<IndexEntry>> InterpretIndex(ByteSource body, uint64_t offset) {
    ByteSource entries(body.GetBytes(sizeof(uint32_t)));
    const uint64_t count = entries.Get<uint32_t>();
    entries = ByteSource(body.GetBytes(count * IndexEntrySize));
    std::vector<IndexEntry> index(count);
    for (IndexEntry& entry : index) {
        entry.m_uiOffset = entries.Get<uint64_t>();
        entry.m_uiTime = entries.Get<uint64_t>();
    }
    if (body.Get<uint64_t>() != offset || !body.GetRest().empty())
        return std::nullopt;
    return index;
}

} // namespace

RecordingReader::RecordingReader(std::unique_ptr<std::istream> in) : m_pIn(std::move(in)) {
    m_pIn->seekg(0, std::ios::end);
    m_uiFileSize = static_cast<uint64_t>(m_pIn->tellg());
    ReadHeader();
    m_settings = m_header.m_settings;
}

RecordingReader::RecordingReader(const std::string& path) try : RecordingReader(OpenFile(path)) {
} catch (const RecordingError& error) {
    const std::string reason = error.what();
    throw RecordingError(reason.starts_with(path) ? reason : path + ": " + reason);
}

RecordingReader::~RecordingReader() = default;

void RecordingReader::ReadHeader() {
    constexpr size_t SizeEnd = FileMagic.size() + 4;
    const auto start = m_uiFileSize < SizeEnd ? std::vector<uint8_t>() : ReadBytes(0, SizeEnd);
    ByteSource source(start);
    if (start.empty() || !IsText(source.GetBytes(FileMagic.size()), FileMagic))
        throw RecordingError("This is no recording");
    if (source.Get<uint16_t>() != FileVersion)
        throw RecordingError("The recording has a version that this program does not know");
    const auto headerSize = source.Get<uint16_t>();
    if (headerSize < HeaderSize || headerSize > m_uiFileSize)
        throw RecordingError("The recording's header is not complete");

    const auto bytes = ReadBytes(0, headerSize);
    if (!HasGoodCrc(bytes))
        throw RecordingError("The recording's header is damaged");
    source = ByteSource(std::span(bytes).subspan(SizeEnd));
    m_header.m_codec = source.GetUpTo(Codec::Lbe);
    m_header.m_uiProtocolVersion = source.GetUpTo(uint8_t{2});
    m_header.m_chroma = source.GetUpTo(ChromaSubsampling::Yuv444);
    m_header.m_layout = source.GetUpTo(RecordLayout::InPlace);
    m_header.m_settings = GetSettings(source);
    m_header.m_uiStartTime = source.Get<uint64_t>();
    m_header.m_uiThreads = source.Get<uint32_t>();
    m_uiFirstRecord = m_uiOffset = headerSize;
}

std::optional<Record> RecordingReader::Next() {
    while (m_end.m_kind == EndKind::Whole) {
        m_uiRecordOffset = m_uiOffset;
        const auto raw = NextRaw();
        if (!raw)
            break;
        try {
            if (auto record = Interpret(*raw))
                return record;
        } catch (const RecordingError& error) {
            m_uiOffset = m_uiRecordOffset;
            EndAs(EndKind::Damaged, error.what());
        }
    }
    return std::nullopt;
}

/// Nothing for one that is to be passed over.
std::optional<Record> RecordingReader::Interpret(const RawRecord& raw) {
    ByteSource body(raw.m_vuiBody);
    switch (static_cast<RecordType>(raw.m_uiType)) {
    case RecordType::Update:
        return InterpretUpdate(body);
    case RecordType::Settings:
        return m_settings = GetSettings(body);
    case RecordType::Picture:
        return InterpretPicture(body);
    case RecordType::Note:
        return InterpretNote(body);
    default:
        return std::nullopt;
    }
}

RecordedPicture RecordingReader::InterpretPicture(ByteSource body) const {
    const auto fieldsSize = body.Get<uint16_t>();
    if (fieldsSize < PictureFieldsSize)
        throw RecordingError("a picture's fields are too short");
    const auto compression = body.GetUpTo(Compression::Zlib);
    body.Get<uint8_t>();
    const auto crc = body.Get<uint32_t>();
    body.GetBytes(fieldsSize - PictureFieldsSize);
    const auto data = body.GetRest();

    const uint64_t size = PictureSize(m_settings, m_header.m_chroma);
    if (size > MaxBodySize)
        throw RecordingError("a picture is too large");
    RecordedPicture picture;
    picture.m_vuiBytes.resize(size);
    uLongf unpacked = size;
    if (compression == Compression::None)
        picture.m_vuiBytes.assign(data.begin(), data.end());
    else if (uncompress(picture.m_vuiBytes.data(), &unpacked, data.data(), data.size()) != Z_OK)
        throw RecordingError("a picture cannot be unpacked");
    if (picture.m_vuiBytes.size() != size || unpacked != size || Crc32(picture.m_vuiBytes) != crc)
        throw RecordingError("a picture is not that of its framebuffer");
    return picture;
}

/// The record at m_uiOffset, which moves behind it.
std::optional<RecordingReader::RawRecord> RecordingReader::NextRaw() {
    m_end.m_uiOffset = m_uiOffset;
    if (m_uiOffset == m_uiFileSize)
        return std::nullopt;
    auto record = ReadRawAt(m_uiOffset);
    if (!record)
        return std::nullopt;
    if (record->m_uiType > static_cast<uint8_t>(RecordType::Picture) &&
        record->m_uiType < FirstSkippableType)
        return EndAs(EndKind::LaterVersion);
    m_uiOffset += SmallestRecord + record->m_vuiBody.size();
    m_end.m_uiOffset = m_uiOffset;
    return record;
}

std::optional<RecordingReader::RawRecord> RecordingReader::ReadRawAt(uint64_t offset) {
    const uint64_t left = m_uiFileSize - offset;
    if (left < SmallestRecord)
        return EndAs(EndKind::Cut);
    const auto headBytes = ReadBytes(offset, RecordHeadSize);
    ByteSource head(headBytes);
    if (!IsText(head.GetBytes(RecordMagic.size()), RecordMagic))
        return EndAs(EndKind::Damaged, "no record begins there");
    const auto type = head.Get<uint8_t>();
    const auto size = head.Get<uint32_t>();
    if (size > MaxBodySize)
        return EndAs(EndKind::Damaged, "a record is too large");
    if (size > left - SmallestRecord)
        return EndAs(EndKind::Cut);
    const auto bytes = ReadBytes(offset, SmallestRecord + size);
    if (!HasGoodCrc(bytes))
        return EndAs(EndKind::Damaged, "a record's checksum is wrong");
    const auto body = std::span(bytes).subspan(RecordHeadSize, size);
    return RawRecord{type, {body.begin(), body.end()}};
}

std::optional<RecordingReader::RawRecord> RecordingReader::EndAs(EndKind kind, const char* reason) {
    m_end = {kind, m_uiOffset, reason};
    return std::nullopt;
}

std::optional<std::vector<IndexEntry>> RecordingReader::ReadIndex() {
    constexpr uint64_t TailSize = sizeof(uint64_t) + CrcSize;
    if (m_uiFileSize < m_uiFirstRecord + SmallestRecord + TailSize)
        return std::nullopt;
    const auto tail = ReadBytes(m_uiFileSize - TailSize, TailSize);
    const auto offset = ByteSource(tail).Get<uint64_t>();
    if (offset < m_uiFirstRecord || offset > m_uiFileSize - SmallestRecord)
        return std::nullopt;

    const RecordingEnd end = m_end;
    const auto raw = ReadRawAt(offset);
    m_end = end;
    if (!raw || static_cast<RecordType>(raw->m_uiType) != RecordType::Index ||
        offset + SmallestRecord + raw->m_vuiBody.size() != m_uiFileSize)
        return std::nullopt;
    try {
        return InterpretIndex(ByteSource(raw->m_vuiBody), offset);
    } catch (const RecordingError&) {
        return std::nullopt;
    }
}

std::vector<IndexEntry> RecordingReader::FindUpdates() {
    std::vector<IndexEntry> index;
    if (auto written = ReadIndex()) {
        index = std::move(*written);
    } else {
        GoTo(m_uiFirstRecord);
        while (const auto record = Next()) {
            if (const auto* update = std::get_if<RecordedUpdate>(&*record))
                index.push_back({m_uiRecordOffset, update->m_uiTime});
        }
    }
    GoTo(m_uiFirstRecord);
    m_settings = m_header.m_settings;
    return index;
}

void RecordingReader::GoTo(uint64_t offset) {
    if (offset < m_uiFirstRecord || offset > m_uiFileSize)
        throw RecordingError("The recording's index points outside the file");
    m_uiOffset = offset;
    m_end = {};
}

std::vector<uint8_t> RecordingReader::ReadBytes(uint64_t offset, uint64_t count) {
    std::vector<uint8_t> bytes(count);
    m_pIn->clear();
    m_pIn->seekg(static_cast<std::streamoff>(offset));
    m_pIn->read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
    if (!*m_pIn)
        throw RecordingError("The file cannot be read");
    return bytes;
}

} // namespace Vostrel::recording
