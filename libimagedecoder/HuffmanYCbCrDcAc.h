#pragma once

#include <array>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The four code tables of the ICT encoding, each indexed by the symbol that it codes.
///
/// They are the typical tables of baseline JPEG (ITU-T T.81, K.3.3), except that DC luminance has a
/// thirteenth symbol: 12 is no bit size but the marker by which an encoder aborts an update.
/// An AC symbol holds the run of zeros in its high nibble and the bit size in its low nibble.
struct HuffmanYCbCrDcAc {
    struct HuffCodeEntry {
        uint8_t m_uiLength; ///< in bits, 1..16; 0 = the symbol has no code
        uint16_t m_uiCode;  ///< right-aligned in m_uiLength bits
    };

    static const std::array<HuffCodeEntry, 13> s_aDcLuminance;
    static const std::array<HuffCodeEntry, 256> s_aAcLuminance;
    static const std::array<HuffCodeEntry, 12> s_aDcChrominance;
    static const std::array<HuffCodeEntry, 256> s_aAcChrominance;
};

} // namespace Vostrel::libimagedecoder
