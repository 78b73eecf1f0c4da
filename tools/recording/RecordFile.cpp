#include "tools/recording/RecordFile.h"

#include "tools/recording/RecordingFormat.h"

#include <algorithm>
#include <istream>

namespace Vostrel::recording {
namespace {

bool IsText(std::span<const uint8_t> bytes, std::string_view text) {
    return std::equal(bytes.begin(), bytes.end(), text.begin(), text.end());
}

/// Whether the last four bytes are the CRC of those before.
bool HasGoodCrc(std::span<const uint8_t> bytes) {
    ByteSource crc(bytes.last(CrcSize));
    return Crc32(bytes.first(bytes.size() - CrcSize)) == crc.Get<uint32_t>();
}

} // namespace

std::span<const uint8_t> RawRecord::GetBody() const {
    return std::span(m_vuiBytes).subspan(RecordHeadSize, m_vuiBytes.size() - SmallestRecord);
}

RecordFile::RecordFile(std::unique_ptr<std::istream> in, std::string name)
    : m_pIn(std::move(in)), m_name(std::move(name)) {
    m_pIn->seekg(0, std::ios::end);
    const auto size = m_pIn->tellg();
    if (size < 0)
        throw RecordingError(m_name + "The stream cannot be searched");
    m_uiSize = static_cast<uint64_t>(size);
}

RecordFile::~RecordFile() = default;

std::vector<uint8_t> RecordFile::ReadHeader() {
    const auto start = ReadBytes(0, std::min<uint64_t>(m_uiSize, FixedHeaderSize));
    ByteSource source(start);
    if (start.size() < FixedHeaderSize || !IsText(source.GetBytes(FileMagic.size()), FileMagic))
        throw RecordingError(m_name + "This is no recording");
    const auto version = source.Get<uint16_t>();
    if (version < FirstFileVersion || version > FileVersion)
        throw RecordingError(m_name +
                             "The recording has a version that this program does not know");
    const auto headerSize = source.Get<uint16_t>();
    if (headerSize < HeaderSize || headerSize > m_uiSize)
        throw RecordingError(m_name + "The recording's header is not complete");
    auto bytes = ReadBytes(0, headerSize);
    if (!HasGoodCrc(bytes))
        throw RecordingError(m_name + "The recording's header is damaged");
    return bytes;
}

RecordHead RecordFile::ReadHead(uint64_t offset) {
    const uint64_t left = m_uiSize - offset;
    if (left < SmallestRecord)
        throw BadRecord(EndKind::Cut);
    const auto bytes = ReadBytes(offset, RecordHeadSize);
    ByteSource head(bytes);
    if (!IsText(head.GetBytes(RecordMagic.size()), RecordMagic))
        throw BadRecord("no record begins there");
    const auto type = head.Get<uint8_t>();
    const auto size = head.Get<uint32_t>();
    if (size > MaxBodySize)
        throw BadRecord("a record is too large");
    if (size > left - SmallestRecord)
        throw BadRecord(EndKind::Cut);
    return {type, offset + SmallestRecord + size};
}

RawRecord RecordFile::ReadRecord(uint64_t offset) {
    const RecordHead head = ReadHead(offset);
    auto bytes = ReadBytes(offset, head.m_uiEnd - offset);
    if (!HasGoodCrc(bytes))
        throw BadRecord("a record's checksum is wrong");
    return {head, std::move(bytes)};
}

std::vector<uint8_t> RecordFile::ReadBytes(uint64_t offset, uint64_t count) {
    std::vector<uint8_t> bytes(count);
    m_pIn->clear();
    m_pIn->seekg(static_cast<std::streamoff>(offset));
    m_pIn->read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
    if (!*m_pIn)
        throw RecordingError(m_name + "The file cannot be read");
    return bytes;
}

} // namespace Vostrel::recording
