#pragma once

#include "tools/recording/Recording.h"
#include "tools/recording/RecordingFormat.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::recording {

/// Writes a recording record by record. What has been written can be read, whatever happens next.
///
/// Every operation throws RecordingError, which names the file, when the file system fails.
class RecordingWriter {
public:
    /// Writes the header. name: what messages begin with, such as "FILE: ".
    RecordingWriter(std::unique_ptr<std::ostream> out, const Header& header,
                    const std::string& name = "");

    /// The same for a new file, which replaces one of the same name.
    RecordingWriter(const std::string& path, const Header& header);

    /// Goes on with a recording of a file version that has these updates, and whose last good
    /// record ends at an offset. Whatever follows there is cut off.
    RecordingWriter(const std::string& path, uint16_t fileVersion, uint64_t end,
                    std::vector<IndexEntry> updates);

    ~RecordingWriter();

    /// The decoder must have been written before. Throws RecordingError for another decoder than 0
    /// in a file of version 1.
    void Write(const RecordedUpdate& update);
    void Write(const Settings& settings);
    void Write(const RecordedPicture& picture);
    void Write(const Note& note);

    /// The index must be the next one. Throws RecordingError for a file of version 1.
    void Write(const AddedDecoder& decoder);

    /// Writes the index. Without it the recording is valid, but slower to search.
    void Close();

private:
    void WriteHeader(const Header& header);
    void CheckThatItHoldsDecoder(uint8_t index) const;
    void WriteRecord(RecordType type, const ByteSink& body);
    void WriteBytes(const std::vector<uint8_t>& bytes);

    std::string m_name; ///< of the file, for messages
    uint16_t m_uiFileVersion = FileVersion;
    std::unique_ptr<std::ostream> m_pOut;
    uint64_t m_uiOffset = 0;
    std::vector<IndexEntry> m_vIndex;
};

} // namespace Vostrel::recording
