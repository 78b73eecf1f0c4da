#include "tests/jni/PerformFixture.h"

namespace Vostrel::tests {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

/// Quality 2 has 2 bits of luma and 3 of each chroma: one luma literal of the brightest level, then
/// runs from the left and, for neutral chroma, from above to the end of their planes.
const std::string WhiteBlock = "0 0 11 1 11 1111 1 01 1111 ";
constexpr uint32_t White = 0xFFFFFFFF;

class PerformLbeTest : public PerformFixture {
protected:
    PerformLbeTest()
        : m_decoder(LBE(createImageDecoder)(m_jvm.env(), nullptr, m_renderer, m_stream, m_logger, 0,
                                            1, 0)) {
        m_helper.m_lines.clear();
    }

    ~PerformLbeTest() override { LBE(deleteImageDecoder)(m_jvm.env(), nullptr, m_decoder); }

    jlong perform() { return performLbe(call(m_decoder)); }

    jlong m_decoder;
};

TEST_F(PerformLbeTest, EndMarkerAloneChangesNothing) {
    feed(End);
    EXPECT_EQ(perform(), 0);
    EXPECT_THAT(m_framebuffer, Each(Untouched));
}

TEST_F(PerformLbeTest, CodedBlockIsDrawnAndReported) {
    feed(WhiteBlock + End, {5});
    EXPECT_EQ(perform(), 0x0000'0000'0010'0010);
    expectPixels(White, Untouched);
    ASSERT_EQ(m_helper.m_stalls.size(), 1u);
    EXPECT_EQ(m_helper.m_stalls[0].count, 1);
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
}

TEST_F(PerformLbeTest, RectangleAndSizesCountBySixteenUnsignedBits) {
    feed(WhiteBlock + End);
    Call shifted = call(m_decoder);
    shifted.framebufferWidth = Width + 0x30000;
    shifted.x = 16 - 0x10000;
    shifted.width = 16 + 0x70000;
    EXPECT_EQ(performLbe(shifted), 0x0010'0000'0020'0010);
    expectPixels(Untouched, White);
}

TEST_F(PerformLbeTest, ZeroHandlesReturnMinusOneAndLeaveTheStreamAlone) {
    for (jlong Call::*handle : {&Call::decoder, &Call::renderer, &Call::streambuffer}) {
        Call incomplete = call(m_decoder);
        incomplete.*handle = 0;
        EXPECT_EQ(performLbe(incomplete), -1);
    }
    EXPECT_THAT(m_helper.m_capacities, IsEmpty());
}

TEST_F(PerformLbeTest, NullBufferDrawsNothing) {
    feed(WhiteBlock + End);
    Call nothing = call(m_decoder);
    nothing.argb = nullptr;
    EXPECT_EQ(performLbe(nothing), 0x0000'0000'0010'0010);
    EXPECT_THAT(m_framebuffer, Each(Untouched));
}

TEST_F(PerformLbeTest, DecoderErrorIsOneLogLineAndMinusOneAndNothingIsPending) {
    feed("0");
    EXPECT_EQ(perform(), -1);
    EXPECT_THAT(m_helper.m_lines,
                ElementsAre("ImageDecoderException occured in "
                            "Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderLBENative_performLBE "
                            "Stream has no more bytes!"));
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    EXPECT_FALSE(m_jvm.m_pendingException);
}

TEST_F(PerformLbeTest, QualityOutsideTheTableReturnsAllOnesAndReadsNothing) {
    Call unknown = call(m_decoder);
    unknown.quality = 12;
    EXPECT_EQ(performLbe(unknown), -1);
    EXPECT_THAT(m_helper.m_capacities, IsEmpty());
    EXPECT_THAT(m_helper.m_lines, IsEmpty());
}

} // namespace
} // namespace Vostrel::tests
