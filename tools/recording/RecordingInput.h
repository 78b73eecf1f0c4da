#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

namespace Vostrel::recording {

/// Opens a recording, which can then be searched. A pipe or another stream is first copied to a
/// temporary file that has no name any more. Throws RecordingError for a folder, an empty file, a
/// stream of more than MaxStreamSize bytes, and when the file system fails.
std::unique_ptr<std::istream> OpenRecording(const std::string& path);

/// The most bytes that are copied of a stream.
constexpr uint64_t MaxStreamSize = uint64_t{4} << 30;

/// Copies what an open file has left to a temporary file. Of a stream that is no recording, no more
/// than its beginning is copied. name: for messages. Throws RecordingError for more than limit
/// bytes.
std::unique_ptr<std::istream> CopyToTemporaryFile(int descriptor, const std::string& name,
                                                  uint64_t limit = MaxStreamSize);

} // namespace Vostrel::recording
