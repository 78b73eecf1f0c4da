#pragma once

#include "libimagedecoder/LbePlaneDecoder.h"
#include "tools/BitWriter.h"

#include <cstdint>
#include <span>

namespace Vostrel::streamencoder {

/// Appends the samples of one plane of an LBE block as literals and runs, in the fewest bits that
/// there are. There are as many samples as the format says, none wider than a literal.
void WriteLbePlane(std::span<const uint16_t> samples, const libimagedecoder::LbePlaneFormat& format,
                   BitWriter& bits);

} // namespace Vostrel::streamencoder
