#pragma once

#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "tools/BitWriter.h"
#include "tools/IctQuantiser.h"

#include <span>

namespace Vostrel::streamencoder {

/// The code tables of one component.
struct IctComponentCode {
    std::span<const libimagedecoder::HuffmanYCbCrDcAc::HuffCodeEntry> m_dc;
    std::span<const libimagedecoder::HuffmanYCbCrDcAc::HuffCodeEntry> m_ac;

    static IctComponentCode Luma();
    static IctComponentCode Chroma();
};

/// Appends the levels (within +-IctQuantiser::MaxLevel) of one tile: the DC level as its difference
/// from dcPredictor, which then becomes that level, and the AC levels in zigzag order as runs of
/// zeros and values. Every tile ends in an end-of-block code, also one whose last level is not
/// zero: the decoder stops at nothing else.
void WriteIctTile(const IctLevels& levels, const IctComponentCode& code, int& dcPredictor,
                  BitWriter& bits);

} // namespace Vostrel::streamencoder
