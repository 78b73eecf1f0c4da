#include "libimagedecoder/LbeTokens.h"
#include "tests/support/TestBits.h"

#include <gtest/gtest.h>
#include <string>

namespace Vostrel::libimagedecoder {

namespace {

using tests::Bits;

/// What the wire format says of the code that a bit text starts with.
struct Code {
    size_t bits;
    size_t run; ///< 0: with a count, or to the plane's end
    bool literal;
};

Code CodeAt(const std::string& text, size_t literalBits) {
    if (text[0] == '0')
        return {1 + literalBits, 1, true};
    if (text[2] == '0')
        return {4, text[3] == '1' ? size_t{2} : size_t{1}, false};
    const size_t code = std::stoul(text.substr(3, 4), nullptr, 2);
    return {7, code < 14 ? code + 3 : 0, false};
}

class LbeTokensOf : public testing::TestWithParam<uint32_t> {
protected:
    const LbeTokens& m_Tokens = LbeTokens::Of(GetParam());
};

TEST_P(LbeTokensOf, EveryIndexTellsTheCodeThatItStartsWith) {
    for (size_t index = 0; index < 128; ++index) {
        const Code code = CodeAt(Bits(index, 7), GetParam());
        // Kernels make tables of their own of these.
        for (const LbeToken& token : {m_Tokens.m_aTokens[index], MakeLbeToken(index, GetParam())}) {
            EXPECT_EQ(token.m_uiBits, code.bits) << index;
            EXPECT_EQ(token.m_uiRun, code.run) << index;
            EXPECT_EQ(token.m_uiLiteralMask, code.literal ? 0xFFFF : 0) << index;
        }
        EXPECT_EQ(LbeTokens::IsFromAbove(index), !code.literal && Bits(index, 7)[1] == '0')
            << index;
    }
}

TEST_P(LbeTokensOf, NarrowLiteralsHaveTheLengthOfTwoCodesWhateverFollows) {
    if (GetParam() > LbeTokens::MaxPairLiteralBits)
        return;
    for (size_t bits = 0; bits < 1 << 14; ++bits) {
        const std::string text = Bits(bits, 14) + "0000000";
        const size_t first = CodeAt(text, GetParam()).bits;
        const size_t second = CodeAt(text.substr(first), GetParam()).bits;
        ASSERT_EQ(m_Tokens.m_auiPairBits[bits >> 4], first + second) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(LiteralBits, LbeTokensOf, testing::Range(2U, 11U));

} // namespace

} // namespace Vostrel::libimagedecoder
