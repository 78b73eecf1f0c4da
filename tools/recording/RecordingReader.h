#pragma once

#include "tools/recording/Recording.h"
#include "tools/recording/RecordingFormat.h"

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::recording {

/// How a recording ends.
enum class EndKind {
    Whole,
    Cut,          ///< amid a record, as after a crash
    Damaged,      ///< at a record with wrong bytes
    LaterVersion, ///< at a record that this reader does not know and must not pass over
};

struct RecordingEnd {
    EndKind m_kind = EndKind::Whole;
    uint64_t m_uiOffset = 0; ///< of the first byte that was not read as a record
    std::string m_reason;    ///< for damaged ones
};

/// Reads a recording record by record. All that is good before a cut or damage is delivered;
/// GetEnd tells what came then. A record takes no more memory than the file has bytes, but for a
/// compressed picture, which takes that of its framebuffer.
class RecordingReader {
public:
    /// Throws RecordingError for a stream that does not begin with the header of a recording.
    explicit RecordingReader(std::unique_ptr<std::istream> in);

    /// The same for a file.
    explicit RecordingReader(const std::string& path);

    ~RecordingReader();

    const Header& GetHeader() const { return m_header; }

    /// The next record; nothing at the end.
    std::optional<Record> Next();

    /// How the recording ends, once Next has returned nothing.
    const RecordingEnd& GetEnd() const { return m_end; }

    /// The index of a recording that was closed.
    std::optional<std::vector<IndexEntry>> ReadIndex();

    /// Where the updates stand, by the index, or by a pass over the records. Reading then goes on
    /// at the first record.
    std::vector<IndexEntry> FindUpdates();

    /// Goes on with the record at an offset that an index names. Throws RecordingError for one
    /// outside the file.
    void GoTo(uint64_t offset);

private:
    /// One record as it stands in the file.
    struct RawRecord {
        uint8_t m_uiType;
        std::vector<uint8_t> m_vuiBody;
    };

    void ReadHeader();
    std::optional<RawRecord> NextRaw();
    std::optional<RawRecord> ReadRawAt(uint64_t offset);
    std::optional<Record> Interpret(const RawRecord& raw);
    RecordedPicture InterpretPicture(ByteSource body) const;
    std::optional<RawRecord> EndAs(EndKind kind, const char* reason = "");
    std::vector<uint8_t> ReadBytes(uint64_t offset, uint64_t count);

    std::unique_ptr<std::istream> m_pIn;
    uint64_t m_uiFileSize = 0;
    uint64_t m_uiFirstRecord = 0;
    uint64_t m_uiOffset = 0;       ///< of the next record
    uint64_t m_uiRecordOffset = 0; ///< of the one that was delivered last
    Header m_header;
    Settings m_settings; ///< in force at m_uiOffset
    RecordingEnd m_end;
};

} // namespace Vostrel::recording
