#pragma once

#include "tools/Picture.h"

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

/// Writes a picture as an 8-bit RGB PNG file. Throws std::runtime_error with the path and the
/// reason.
void WritePng(const std::string& path, const Picture& picture);

} // namespace Vostrel::streamencoder
