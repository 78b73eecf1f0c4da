#include "tests/model/ModelDecoder.h"
#include "tests/model/BitText.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

const std::string End = "11 1111111111111111 ";
/// A 4:2:0 macroblock without any difference or coefficient: four luma and two chroma tiles.
const std::string Grey420 = "001010 001010 001010 001010 0000 0000 ";

ModelOutcome Update(ModelDecoder& decoder, unsigned quality, const ModelRectangle& area,
                    const std::string& text) {
    const std::vector<uint8_t> bytes = BytesOf(text);
    ModelStream stream(bytes, bytes.size() + 1);
    return decoder.Update(quality, area, stream);
}

ModelDecoder Decoder(ModelCodec codec, int width, int height) {
    ModelDecoder decoder({codec, 1, 0, 0, KernelRule::Portable});
    decoder.SetFramebuffer(ModelSink::Argb, width, height);
    return decoder;
}

TEST(ModelDecoder, AGreyMacroblockIsDrawnGrey) {
    ModelDecoder decoder = Decoder(ModelCodec::Ict, 16, 16);
    const ModelOutcome outcome = Update(decoder, 0x25, {0, 0, 16, 16}, "0 " + Grey420 + End);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, 0x0000'0000'0010'0010u);
    std::vector<uint8_t> grey(16 * 16 * 4, 0x80);
    for (size_t i = 3; i < grey.size(); i += 4)
        grey[i] = 0xFF;
    EXPECT_EQ(decoder.Renderer().Memory(), grey);
}

TEST(ModelDecoder, ARectangleMayOverhangByPartOfABlockOnly) {
    ModelDecoder decoder = Decoder(ModelCodec::Ict, 20, 10);
    EXPECT_EQ(Update(decoder, 0, {0, 0, 32, 16}, End).error, "");
    for (const ModelRectangle& area : {ModelRectangle{0, 0, 33, 16}, {0, 0, 32, 17}}) {
        const ModelOutcome outcome = Update(decoder, 0, area, End);
        EXPECT_EQ(outcome.error, "StreamError");
        EXPECT_EQ(outcome.result, ~uint64_t{0});
        EXPECT_EQ(outcome.consumedBytes, 0u);
    }
}

TEST(ModelDecoder, LbeQualityOutsideTheTableReadsNothing) {
    ModelDecoder decoder = Decoder(ModelCodec::Lbe, 16, 16);
    const ModelOutcome outcome = Update(decoder, 12, {0, 0, 100, 100}, End);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, ~uint64_t{0});
    EXPECT_EQ(outcome.consumedBytes, 0u);
}

TEST(ModelDecoder, AnEmptyRectangleTakesItsSkipCodeAlone) {
    ModelDecoder decoder = Decoder(ModelCodec::Ict, 16, 16);
    const ModelOutcome outcome = Update(decoder, 0, {0, 0, 16, 0}, "0 1111111 11111111");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.consumedBytes, 1u);
}

TEST(ModelDecoder, AFailedUpdateDrawsNothingAndTheNextOneDoes) {
    ModelDecoder decoder = Decoder(ModelCodec::Ict, 16, 16);
    const ModelOutcome failed = Update(decoder, 0, {0, 0, 16, 16}, "0 1111111110" + Grey420);
    EXPECT_EQ(failed.error, "StreamError");
    EXPECT_EQ(decoder.Renderer().Memory(), std::vector<uint8_t>(1024, 0));
    EXPECT_EQ(Update(decoder, 0, {0, 0, 16, 16}, "0 " + Grey420 + End).error, "");
    EXPECT_EQ(decoder.Renderer().Memory()[0], 0x80);
}

} // namespace

} // namespace Vostrel::model
