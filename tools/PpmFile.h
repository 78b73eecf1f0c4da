#pragma once

#include "tools/Picture.h"

#include <string>

namespace Vostrel::streamencoder {

/// Reads a binary PPM file (P6) of 8 bits a sample. Throws std::runtime_error with the path and the
/// reason.
Picture ReadPpm(const std::string& path);

} // namespace Vostrel::streamencoder
