#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/Picture.h"

#include <vector>

namespace Vostrel::streamencoder {

/// Tells for every 16x16 block of a rectangle, in row order, whether two pictures of one size
/// differ in it. What lies outside the pictures does not differ.
std::vector<bool> ChangedBlocks(const Picture& picture, const Picture& previous,
                                const libimagedecoder::UpdateRectangle& rectangle);

/// Marks more blocks as changed, so that no two changed ones have more than maxSkip unchanged ones
/// between them (nor the first one before it): one skip code must reach from each to the next.
void BridgeLongGaps(std::vector<bool>& changed, size_t maxSkip);

} // namespace Vostrel::streamencoder
