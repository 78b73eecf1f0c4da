#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/Picture.h"

#include <optional>

namespace Vostrel::streamencoder {

/// The smallest rectangle that holds all pixels of a rectangle in which two pictures of one size
/// differ; nothing when there are none. What lies outside the pictures does not differ.
std::optional<libimagedecoder::UpdateRectangle>
ChangedRectangle(const Picture& picture, const Picture& previous,
                 const libimagedecoder::UpdateRectangle& rectangle);

} // namespace Vostrel::streamencoder
