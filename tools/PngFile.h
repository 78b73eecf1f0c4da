#pragma once

#include "tools/Picture.h"

#include <cstdio>
#include <optional>
#include <string>

namespace Vostrel::streamencoder {

/// What 8-bit RGB cannot hold of a PNG file.
struct PngLoss {
    bool m_bTransparency = false; ///< an alpha channel, or a colour that is transparent
    bool m_b16Bits = false;       ///< a sample
};

/// Reads a PNG file of any colour type as 8-bit RGB. Transparent parts are blended with black,
/// 16-bit samples are rounded. Throws std::runtime_error with the path and the reason.
Picture ReadPng(const std::string& path);

/// The same, and reports what was lost.
Picture ReadPng(const std::string& path, PngLoss& loss);

/// Reads the next of several PNG files that follow each other in a stream, of at most 1 GiB each,
/// and reports what was lost. Nothing at the end of the stream. name: for messages. Throws as
/// ReadPng does.
std::optional<Picture> ReadNextPng(std::FILE* file, const std::string& name, PngLoss& loss);

/// Reads only how large the picture is. Throws as ReadPng does.
PictureSize ReadPngSize(const std::string& path);

/// Writes a picture as an 8-bit RGB PNG file. Throws std::runtime_error with the path and the
/// reason; what was written then stays.
void WritePng(const std::string& path, const Picture& picture);

/// The same to a file that is open for writing, and stays open. path: for messages.
void WritePng(std::FILE* file, const std::string& path, const Picture& picture);

} // namespace Vostrel::streamencoder
