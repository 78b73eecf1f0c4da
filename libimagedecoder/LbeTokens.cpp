#include "libimagedecoder/LbeTokens.h"

#include <array>

namespace Vostrel::libimagedecoder {
namespace {

constexpr uint8_t PairBitsAt(size_t index, const LbeToken* tokens) {
    constexpr unsigned int UnseenBits = LbeTokens::PairIndexBits - LbeTokens::IndexBits;
    constexpr size_t IndexMask = (size_t{1} << LbeTokens::PairIndexBits) - 1;
    const unsigned int bits = tokens[index >> UnseenBits].m_uiBits;
    // Three bits of the second code are left at least: they tell its length.
    const size_t second = (index << bits & IndexMask) >> UnseenBits;
    return static_cast<uint8_t>(bits + tokens[second].m_uiBits);
}

constexpr LbeTokens MakeTokens(uint32_t literalBits) {
    LbeTokens tokens{};
    size_t index = 0;
    for (LbeToken& token : tokens.m_aTokens)
        token = MakeLbeToken(index++, literalBits);
    if (literalBits > LbeTokens::MaxPairLiteralBits)
        return tokens;
    index = 0;
    for (uint8_t& bits : tokens.m_auiPairBits)
        bits = PairBitsAt(index++, tokens.m_aTokens);
    return tokens;
}

constexpr size_t Widths = LbeTokens::MaxLiteralBits - LbeTokens::MinLiteralBits + 1;

constexpr std::array<LbeTokens, Widths> MakeAllTokens() {
    std::array<LbeTokens, Widths> all{};
    for (size_t i = 0; i < Widths; ++i)
        all[i] = MakeTokens(static_cast<uint32_t>(i) + LbeTokens::MinLiteralBits);
    return all;
}

constexpr std::array<LbeTokens, Widths> s_aTokens = MakeAllTokens();

} // namespace

const LbeTokens& LbeTokens::Of(uint32_t literalBits) {
    return s_aTokens[literalBits - MinLiteralBits];
}

} // namespace Vostrel::libimagedecoder
