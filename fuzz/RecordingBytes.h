#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Recordings as plain bytes, taken apart without the reader.
namespace Vostrel::fuzz {

struct RecordPlace {
    uint8_t m_uiType;
    size_t m_uiBegin;
    size_t m_uiEnd;
};

/// The records that follow each other from the header's end on, by their sizes alone.
std::vector<RecordPlace> PlacesOf(std::span<const uint8_t> bytes);

/// The file with the right checksums in header and records, so that what they protect can be wrong.
std::vector<uint8_t> WithGoodChecksums(std::span<const uint8_t> bytes);

/// The file with notes in place of its indices.
std::vector<uint8_t> WithoutIndex(std::span<const uint8_t> bytes);

} // namespace Vostrel::fuzz
