#pragma once

#include <cstdint>

namespace Vostrel::libimagedecoder {

/// What a 16-bit peek at an ICT code decodes to.
struct huff_entry_t {
    uint8_t size;       ///< DC: category; AC: bit size of the coefficient; 0xFF while unfilled
    uint8_t run;        ///< AC: zeros before the coefficient
    uint8_t stallCount; ///< how many of the 16 bits are not part of the code
    uint16_t stallBits; ///< those bits
};

} // namespace Vostrel::libimagedecoder
