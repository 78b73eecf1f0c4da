#pragma once

#include "tools/recording/RecordFile.h"
#include "tools/recording/Recording.h"

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::recording {

struct RecordingEnd {
    EndKind m_kind = EndKind::Whole;
    uint64_t m_uiOffset = 0; ///< of the first byte that was not read as a record
    std::string m_reason;    ///< for damaged ones
};

/// Reads a recording record by record. All that is good before a cut or damage is delivered;
/// GetEnd tells what came then. A record takes no more memory than the file has bytes, but for a
/// compressed picture, which takes that of its framebuffer.
///
/// Every operation throws RecordingError when the file system fails.
class RecordingReader {
public:
    /// Throws RecordingError for a stream that does not begin with the header of a recording.
    explicit RecordingReader(std::unique_ptr<std::istream> in);

    /// The same for a file or a stream, which messages name: see OpenRecording.
    explicit RecordingReader(const std::string& path);

    const Header& GetHeader() const { return m_header; }
    uint16_t GetFileVersion() const { return m_uiFileVersion; }

    /// Goes on at the first record.
    void Restart();

    /// The next record; nothing at the end.
    std::optional<Record> Next();

    /// How the recording ends, once Next has returned nothing.
    const RecordingEnd& GetEnd() const { return m_end; }

    /// Where the record stands that was delivered last.
    uint64_t GetOffset() const { return m_uiRecordOffset; }

    /// What holds for the next update.
    const Settings& GetSettings() const { return m_settings; }

    /// The decoders that the next update may name, by their index: at least the header's.
    const std::vector<DecoderFormat>& GetDecoders() const { return m_vDecoders; }

    /// The index of a recording that was closed. Nobody has compared it with the records.
    std::optional<std::vector<IndexEntry>> ReadIndex();

    /// Where the updates stand: by an index that names the same ones as the heads of the records,
    /// else by all that is good. The index also knows updates behind one whose data are damaged.
    /// Reading then goes on at the first record.
    std::vector<IndexEntry> FindUpdates();

    /// All decoders that the recording describes, up to damage. Reading then goes on at the first
    /// record.
    std::vector<DecoderFormat> FindDecoders();

    /// Goes on with the record at an offset, with the settings and decoders that hold there. Throws
    /// RecordingError where no record begins.
    void GoTo(uint64_t offset);

private:
    RecordingReader(std::unique_ptr<std::istream> in, const std::string& name);

    void PassOver();
    bool NamesAllUpdates(const std::vector<IndexEntry>& index);
    std::optional<Record> Interpret(const RawRecord& raw);
    RecordedUpdate CheckedUpdate(RecordedUpdate update) const;
    AddedDecoder Added(const AddedDecoder& decoder);

    RecordFile m_file;
    uint64_t m_uiFirstRecord = 0;
    uint64_t m_uiOffset = 0;       ///< of the next record
    uint64_t m_uiRecordOffset = 0; ///< of the one that was delivered last
    uint16_t m_uiFileVersion = 0;
    Header m_header;
    Settings m_settings;                    ///< in force at m_uiOffset
    std::vector<DecoderFormat> m_vDecoders; ///< described before m_uiOffset
    RecordingEnd m_end;
};

} // namespace Vostrel::recording
