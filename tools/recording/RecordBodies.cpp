#include "tools/recording/RecordBodies.h"

#include <zlib.h>

namespace Vostrel::recording {
namespace {

std::vector<uint8_t> Unpack(std::span<const uint8_t> packed, uint64_t size) {
    // A block of deflate's shortest codes: 258 bytes for two bits.
    constexpr uint64_t BestRatio = 1032;
    if (size / BestRatio > packed.size())
        throw BadRecord("a picture is not that of its framebuffer");
    std::vector<uint8_t> bytes(size);
    uLongf unpacked = size;
    if (uncompress(bytes.data(), &unpacked, packed.data(), packed.size()) != Z_OK)
        throw BadRecord("a picture cannot be unpacked");
    bytes.resize(unpacked);
    return bytes;
}

} // namespace

uint16_t FileVersionOf(std::span<const uint8_t> bytes) {
    return ByteSource(bytes.subspan(FileMagic.size())).Get<uint16_t>();
}

Header ParseHeader(std::span<const uint8_t> bytes) {
    ByteSource source(bytes.subspan(FixedHeaderSize));
    Header header;
    static_cast<DecoderFormat&>(header) = GetFormat(source);
    header.m_settings = GetSettings(source);
    header.m_uiStartTime = source.Get<uint64_t>();
    header.m_uiThreads = source.Get<uint32_t>();
    return header;
}

RecordedUpdate ParseUpdate(ByteSource body, uint16_t fileVersion) {
    const auto fieldsSize = body.Get<uint16_t>();
    if (fieldsSize < FirstUpdateFieldsSize)
        throw BadRecord("an update's fields are too short");
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
    ByteSource furtherFields(body.GetBytes(fieldsSize - FirstUpdateFieldsSize));
    if (fileVersion > FirstFileVersion && fieldsSize >= UpdateFieldsSize)
        update.m_uiDecoder = furtherFields.Get<uint8_t>();
    const auto payload = body.GetRest();
    update.m_encoded.m_vuiPayload.assign(payload.begin(), payload.end());
    return update;
}

AddedDecoder ParseDecoder(ByteSource body) {
    AddedDecoder added;
    added.m_uiIndex = body.Get<uint8_t>();
    added.m_format = GetFormat(body);
    body.GetBytes(DecoderFillingSize);
    added.m_format.m_uiThreads = body.Get<uint32_t>();
    return added;
}

RecordedPicture ParsePicture(ByteSource body, uint64_t size) {
    const auto fieldsSize = body.Get<uint16_t>();
    if (fieldsSize < PictureFieldsSize)
        throw BadRecord("a picture's fields are too short");
    const auto compression = body.GetUpTo(Compression::Zlib);
    body.Get<uint8_t>();
    const auto crc = body.Get<uint32_t>();
    body.GetBytes(fieldsSize - PictureFieldsSize);
    const auto data = body.GetRest();

    if (size > MaxBodySize)
        throw BadRecord("a picture is too large");
    RecordedPicture picture;
    if (compression == Compression::Zlib)
        picture.m_vuiBytes = Unpack(data, size);
    else
        picture.m_vuiBytes.assign(data.begin(), data.end());
    if (picture.m_vuiBytes.size() != size || Crc32(picture.m_vuiBytes) != crc)
        throw BadRecord("a picture is not that of its framebuffer");
    return picture;
}

Note ParseNote(ByteSource body) {
    const auto text = body.GetRest();
    return {std::string(text.begin(), text.end())};
}

std::optional<std::vector<IndexEntry>> ParseIndex(ByteSource body, uint64_t offset) {
    const uint64_t count = body.Get<uint32_t>();
    ByteSource entries(body.GetBytes(count * IndexEntrySize));
    std::vector<IndexEntry> index(count);
    for (IndexEntry& entry : index) {
        entry.m_uiOffset = entries.Get<uint64_t>();
        entry.m_uiTime = entries.Get<uint64_t>();
    }
    if (body.Get<uint64_t>() != offset || !body.GetRest().empty())
        return std::nullopt;
    return index;
}

} // namespace Vostrel::recording
