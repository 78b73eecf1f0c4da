#pragma once

#include "tools/recording/Recording.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Vostrel::recording {

/// What stands before a record's body.
struct RecordHead {
    uint8_t m_uiType;
    uint64_t m_uiEnd; ///< offset of the first byte behind the record
};

/// One record as it stands in a file, with its checksum found right.
class RawRecord {
public:
    RawRecord(const RecordHead& head, std::vector<uint8_t> bytes)
        : m_head(head), m_vuiBytes(std::move(bytes)) {}

    const RecordHead& GetHead() const { return m_head; }
    std::span<const uint8_t> GetBody() const;

private:
    RecordHead m_head;
    std::vector<uint8_t> m_vuiBytes; ///< from head to checksum
};

/// The bytes of a recording in pieces: its header and its records, whatever they say. Nothing takes
/// more memory than the file has bytes.
///
/// Every operation throws RecordingError when the file system fails.
class RecordFile {
public:
    /// name: of the file, for messages. Throws RecordingError for a stream that cannot be searched.
    RecordFile(std::unique_ptr<std::istream> in, std::string name);
    ~RecordFile();

    uint64_t GetSize() const { return m_uiSize; }

    /// The first bytes, up to the end of the header. Throws RecordingError for a file that does not
    /// begin with a header of a version up to FileVersion.
    std::vector<uint8_t> ReadHeader();

    /// The head of the record at an offset within the file. Throws BadRecord for one that the file
    /// does not hold completely.
    RecordHead ReadHead(uint64_t offset);

    /// The record at an offset within the file. Throws BadRecord.
    RawRecord ReadRecord(uint64_t offset);

    std::vector<uint8_t> ReadBytes(uint64_t offset, uint64_t count);

private:
    std::unique_ptr<std::istream> m_pIn;
    std::string m_name;
    uint64_t m_uiSize = 0;
};

} // namespace Vostrel::recording
