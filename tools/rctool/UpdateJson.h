#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/recording/RecordingReader.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>

namespace Vostrel::rctool {

/// The rectangle that an update changed by its recorded result; nothing when the result is not
/// known, a failure, or that nothing changed.
std::optional<libimagedecoder::UpdateRectangle>
ChangedPart(const recording::RecordedUpdate& update);

/// One word for the recorded result: unknown, failed, unchanged or changed.
const char* NameOfResult(const recording::RecordedUpdate& update);

/// Codec, protocol version, chroma, layout and threads.
nlohmann::ordered_json DescribeDecoder(const recording::DecoderFormat& format);

/// What is known of an update that a reader has just delivered, without its payload. number: in its
/// recording.
nlohmann::ordered_json DescribeUpdate(const recording::RecordingReader& reader,
                                      const recording::RecordedUpdate& update, size_t number);

} // namespace Vostrel::rctool
