#include "libimagedecoder/ImageDecoderException.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace Vostrel::libimagedecoder {

namespace {

void ExpectToTell(const std::string& message) {
    EXPECT_EQ(ImageDecoderException(message).what(), message);
}

TEST(ImageDecoderException, TellsExactlyTheMessageItWasMadeWith) {
    ExpectToTell("StreamError");
    ExpectToTell("");
    ExpectToTell("100 %s % d\n");
    ExpectToTell(std::string(5000, 'x'));
}

TEST(ImageDecoderException, ACopyTellsTheSame) {
    const ImageDecoderException original("Connection closed");
    const ImageDecoderException copy = original;
    EXPECT_STREQ(copy.what(), "Connection closed");
}

TEST(ImageDecoderException, IsARuntimeError) {
    static_assert(std::is_base_of_v<std::runtime_error, ImageDecoderException>);
    EXPECT_THROW(throw ImageDecoderException("x"), std::runtime_error);
}

} // namespace

} // namespace Vostrel::libimagedecoder
