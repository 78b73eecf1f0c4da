#pragma once

#include "tools/recording/Recording.h"
#include "tools/recording/RecordingFormat.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// What header and records say. Every function throws BadRecord for fields that are missing or out
/// of range, and takes no more memory than it is given, but for a picture.
namespace Vostrel::recording {

/// bytes: from the file's first to the header's last.
uint16_t FileVersionOf(std::span<const uint8_t> bytes);
Header ParseHeader(std::span<const uint8_t> bytes);

/// fileVersion: in version 1 every update is for decoder 0.
RecordedUpdate ParseUpdate(ByteSource body, uint16_t fileVersion);

AddedDecoder ParseDecoder(ByteSource body);

/// size: of the framebuffer in bytes. A picture of another size is refused before there is memory
/// for it, where it is compressed beyond what the compression can do.
RecordedPicture ParsePicture(ByteSource body, uint64_t size);

Note ParseNote(ByteSource body);

/// The entries of an index that stands at an offset; nothing when it names another.
std::optional<std::vector<IndexEntry>> ParseIndex(ByteSource body, uint64_t offset);

} // namespace Vostrel::recording
