#pragma once

#include "tools/Picture.h"

#include <string>

namespace Vostrel::streamencoder {

/// Reads a PNG file of any colour type as 8-bit RGB; transparent parts come out on black.
/// Throws std::runtime_error with the path and the reason.
Picture ReadPng(const std::string& path);

/// Reads only how large the picture is. Throws as ReadPng does.
PictureSize ReadPngSize(const std::string& path);

/// Writes a picture as an 8-bit RGB PNG file. Throws std::runtime_error with the path and the
/// reason.
void WritePng(const std::string& path, const Picture& picture);

} // namespace Vostrel::streamencoder
