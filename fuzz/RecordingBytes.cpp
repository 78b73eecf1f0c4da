#include "fuzz/RecordingBytes.h"

#include "tests/model/CaseFile.h"

namespace Vostrel::fuzz {
namespace {

constexpr size_t HeaderSizeAt = 10;
constexpr size_t SmallestHeader = 40;
constexpr size_t HeadBytes = 8;
constexpr size_t CrcBytes = 4;
constexpr uint32_t LargestBody = 0x3FFFFFFF;
constexpr uint8_t IndexType = 128;
constexpr uint8_t NoteType = 129;

uint32_t NumberAt(std::span<const uint8_t> bytes, size_t offset, size_t size) {
    uint32_t number = 0;
    for (size_t i = size; i-- > 0;)
        number = number << 8 | bytes[offset + i];
    return number;
}

/// 0 for a file that is too short for its header.
size_t HeaderEnd(std::span<const uint8_t> bytes) {
    if (bytes.size() < SmallestHeader)
        return 0;
    const size_t size = NumberAt(bytes, HeaderSizeAt, 2);
    return size < SmallestHeader || size > bytes.size() ? 0 : size;
}

void RepairCrc(std::span<uint8_t> part) {
    const auto covered = part.first(part.size() - CrcBytes);
    uint32_t crc = model::Crc32({covered.begin(), covered.end()});
    for (uint8_t& byte : part.last(CrcBytes)) {
        byte = static_cast<uint8_t>(crc);
        crc >>= 8;
    }
}

} // namespace

std::vector<RecordPlace> PlacesOf(std::span<const uint8_t> bytes) {
    std::vector<RecordPlace> places;
    size_t begin = HeaderEnd(bytes);
    while (begin != 0 && bytes.size() - begin >= HeadBytes + CrcBytes) {
        const size_t body = NumberAt(bytes, begin + 4, 4);
        if (body > LargestBody || body > bytes.size() - begin - HeadBytes - CrcBytes)
            break;
        const size_t end = begin + HeadBytes + body + CrcBytes;
        places.push_back({bytes[begin + 3], begin, end});
        begin = end;
    }
    return places;
}

std::vector<uint8_t> WithGoodChecksums(std::span<const uint8_t> bytes) {
    std::vector<uint8_t> repaired(bytes.begin(), bytes.end());
    if (const size_t header = HeaderEnd(bytes); header != 0)
        RepairCrc(std::span(repaired).first(header));
    for (const RecordPlace& place : PlacesOf(bytes))
        RepairCrc(std::span(repaired).subspan(place.m_uiBegin, place.m_uiEnd - place.m_uiBegin));
    return repaired;
}

std::vector<uint8_t> WithoutIndex(std::span<const uint8_t> bytes) {
    std::vector<uint8_t> changed(bytes.begin(), bytes.end());
    for (const RecordPlace& place : PlacesOf(bytes)) {
        const auto record =
            std::span(changed).subspan(place.m_uiBegin, place.m_uiEnd - place.m_uiBegin);
        if (place.m_uiType != IndexType)
            continue;
        // One whose checksum was wrong keeps a wrong one.
        const std::vector<uint8_t> before(record.begin(), record.end());
        RepairCrc(record);
        if (!std::equal(before.begin(), before.end(), record.begin())) {
            std::copy(before.begin(), before.end(), record.begin());
            continue;
        }
        record[3] = NoteType;
        RepairCrc(record);
    }
    return changed;
}

} // namespace Vostrel::fuzz
