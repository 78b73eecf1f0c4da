#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// How the bits of an update are laid out: what decoder, encoder and stream walker must agree on.
/// The syntax of one encoding's macroblocks is in IctSyntax.h and LbeSyntax.h.
namespace Vostrel::libimagedecoder {

/// A skip code counts the unchanged macroblocks before the next coded one:
///   0                  none
///   10 and 6 bits      0 to 63
///   11 and a long count, whose all-ones value ends the update
constexpr uint32_t SkipPrefixBits = 2;
constexpr uint32_t ShortSkipPrefix = 0b10;
constexpr uint32_t LongSkipPrefix = 0b11;
constexpr uint32_t ShortSkipBits = 6;

/// How the byte length of a macroblock's record is written. The length counts from the start of the
/// skip code before it; 0 means that the macroblock is decoded in place.
struct RecordLengthCode {
    uint32_t m_uiShortBits = 0; ///< 0: records have no length
    uint32_t m_uiLongBits = 0;  ///< if not the same, a bit comes first: 0 short, 1 long

    constexpr bool IsThere() const { return m_uiShortBits != 0; }
    constexpr bool HasTwoForms() const { return m_uiShortBits != m_uiLongBits; }
    constexpr uint32_t PrefixBits() const { return HasTwoForms() ? 1 : 0; }
    constexpr uint32_t MaxBits() const { return PrefixBits() + m_uiLongBits; }
};

/// What depends on the protocol version.
struct UpdateRules {
    uint32_t m_uiLongSkipBits;       ///< of a long count in a skip code
    RecordLengthCode m_IctLength;    ///< of ICT's records
    RecordLengthCode m_LbeLength;    ///< of LBE's records
    bool m_bPredictorsRestart;       ///< DC predictors start at 0 in every macroblock, not only the
                                     ///< first
    uint32_t m_uiLbeChromaCountBits; ///< of the longest run count of a chroma plane
    uint32_t m_uiLbeQualityMask;     ///< bits of the quality that count

    /// The long count that ends an update.
    constexpr uint32_t LongSkipEscape() const { return (1u << m_uiLongSkipBits) - 1; }
};

/// One row for each protocol version, from 0 on.
constexpr std::array<UpdateRules, 3> s_aUpdateRules = {{
    {14, {}, {}, false, 6, 7},
    {16, {}, {}, true, 8, 15},
    {16, {8, 8}, {7, 10}, true, 8, 15},
}};

/// protocolVersion: below s_aUpdateRules.size().
constexpr const UpdateRules& RulesOf(size_t protocolVersion) {
    return s_aUpdateRules[protocolVersion];
}

/// A skip code that was read.
struct SkipCode {
    bool m_bEnd = false;      ///< no coded macroblock follows
    uint32_t m_uiSkipped = 0; ///< unchanged macroblocks
};

/// read(n) returns the next n bits, 1 to 16.
template <class Read>
SkipCode ReadSkipCode(const UpdateRules& rules, Read read) {
    if (read(1) == 0)
        return {};
    if (read(1) == 0)
        return {false, read(ShortSkipBits)};
    const uint32_t count = read(rules.m_uiLongSkipBits);
    return {count == rules.LongSkipEscape(), count};
}

/// The length of a record in bytes. read as above.
template <class Read>
uint32_t ReadRecordLength(const RecordLengthCode& code, Read read) {
    const bool isLong = code.HasTwoForms() && read(1) != 0;
    return read(isLong ? code.m_uiLongBits : code.m_uiShortBits);
}

} // namespace Vostrel::libimagedecoder
