#pragma once

#include "libimagedecoder/LbeSyntax.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// What a code of an LBE plane does, as far as its first seven bits tell.
struct LbeToken {
    uint8_t m_uiBits;         ///< of the code; of a long run without its count
    uint8_t m_uiRun;          ///< samples, 1..16; 0: a run with a count, or to the plane's end
    uint16_t m_uiLiteralMask; ///< all ones for a literal, whose sample ends the code; else 0
};

/// The token of an index of seven bits. literalBits: 2..10.
constexpr LbeToken MakeLbeToken(size_t index, uint32_t literalBits);

/// The codes of a plane whose literals have a certain width, for the fast kernels.
///
/// Plain arrays, because files that are compiled for other processors read them: a member function
/// of std::array might be left out of line there.
struct LbeTokens {
    static constexpr unsigned int IndexBits = 7;
    static constexpr unsigned int PairIndexBits = 10;
    static constexpr uint32_t MinLiteralBits = 2;
    static constexpr uint32_t MaxLiteralBits = 10;
    /// Up to this width a literal leaves enough of the index to see the length of a second code.
    static constexpr uint32_t MaxPairLiteralBits = 6;

    LbeToken m_aTokens[size_t{1} << IndexBits];
    /// Bits of two codes together, by the first ten of them; nothing for wider literals.
    uint8_t m_auiPairBits[size_t{1} << PairIndexBits];

    /// literalBits: 2..10.
    static const LbeTokens& Of(uint32_t literalBits);

    // What the bits of an index say.
    static constexpr size_t LiteralBelow = 0x40; ///< indexes below it start with a literal
    static constexpr size_t FromLeft = 0x20;     ///< a run; else from above
    static constexpr size_t LongRun = 0x10;      ///< its code in the low four bits; else bit 3
    static constexpr size_t ToPlaneEnd = 0x01;   ///< in a token without a run; else it has a count

    static constexpr bool IsFromAbove(size_t index) {
        return (index & (LiteralBelow | FromLeft)) == LiteralBelow;
    }
};

constexpr LbeToken MakeLbeToken(size_t index, uint32_t literalBits) {
    constexpr size_t LongCodes = size_t{1} << LbeRunCodeBits;
    if (index < LbeTokens::LiteralBelow)
        return {static_cast<uint8_t>(1 + literalBits), 1, 0xFFFF};
    if ((index & LbeTokens::LongRun) == 0)
        return {4, static_cast<uint8_t>(1 + (index >> 3 & 1)), 0};
    const size_t code = index % LongCodes;
    const size_t run = code < LbeCountFollows ? code + LbeShortestLongRun : 0;
    return {LbeTokens::IndexBits, static_cast<uint8_t>(run), 0};
}

} // namespace Vostrel::libimagedecoder
