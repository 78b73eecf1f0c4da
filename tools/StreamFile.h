#pragma once

#include "tools/UpdateEncoder.h"
#include "tools/UpdateFormat.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Vostrel::streamencoder {

/// What a decoder of a stream file's updates must know. docs/stream-file.md describes the bytes.
struct StreamHeader {
    Codec m_codec = Codec::Ict;
    uint8_t m_uiProtocolVersion = 2;
    ChromaSubsampling m_chroma = ChromaSubsampling::Yuv420;
    RecordLayout m_layout = RecordLayout::Pool;
    uint16_t m_uiWidth = 0; ///< of the framebuffer, in pixels
    uint16_t m_uiHeight = 0;
};

/// A sequence of updates with what is needed to play it.
struct StreamFile {
    StreamHeader m_header;
    std::vector<EncodedUpdate> m_vUpdates;
};

/// Writes a stream file. Failures show in the state of the output stream.
void WriteStreamFile(std::ostream& out, const StreamFile& file);

/// Reads a stream file. Throws std::runtime_error for bytes that are none, for a later version, and
/// for a file that ends amid an update.
StreamFile ReadStreamFile(std::istream& in);

/// The same for a path. Both throw std::runtime_error, with the path, when the file system fails.
void WriteStreamFile(const std::string& path, const StreamFile& file);
StreamFile ReadStreamFile(const std::string& path);

} // namespace Vostrel::streamencoder
