#include "libimagedecoder/ImageDecoderException.h"
#include "tests/jni/AllocationFailure.h"
#include "tests/jni/PerformFixture.h"

#include <new>

namespace Vostrel::tests {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

/// Tiles without a coefficient, DC included: size 0 and end of block. They come out as the middle
/// of the sample range, so that the macroblock is grey.
constexpr const char* GreyMacroblock = "0 001010 001010 001010 001010 0000 0000 ";
constexpr uint32_t Grey = 0xFF808080;

constexpr const char* FailureLine =
    "ImageDecoderException occured in "
    "Java_nn_qv_rccore_impl_rfb_img_hive_ImageDecoderICTNative_performICT ";

class PerformIctTest : public PerformFixture {
protected:
    PerformIctTest()
        : m_decoder(ICT(createImageDecoder)(m_jvm.env(), nullptr, m_renderer, m_stream, m_logger, 0,
                                            1, 0)) {
        m_helper.m_lines.clear();
    }

    ~PerformIctTest() override { ICT(deleteImageDecoder)(m_jvm.env(), nullptr, m_decoder); }

    jlong perform() { return performIct(call(m_decoder)); }

    jlong m_decoder;
};

TEST_F(PerformIctTest, EndMarkerAloneChangesNothing) {
    feed(End);
    EXPECT_EQ(perform(), 0);
    EXPECT_THAT(m_framebuffer, Each(Untouched));
    EXPECT_THAT(m_helper.m_lines, IsEmpty());
    EXPECT_THAT(m_helper.m_stalls, IsEmpty());
}

TEST_F(PerformIctTest, CodedMacroblockIsDrawnAndReported) {
    feed(std::string(GreyMacroblock) + End);
    EXPECT_EQ(perform(), 0x0000'0000'0010'0010);
    expectPixels(Grey, Untouched);
}

TEST_F(PerformIctTest, RectangleAndSizesCountBySixteenUnsignedBits) {
    feed(std::string(GreyMacroblock) + End);
    Call shifted = call(m_decoder);
    shifted.framebufferWidth = Width + 0x30000;
    shifted.x = 16 - 0x10000;
    shifted.width = 16 + 0x70000;
    EXPECT_EQ(performIct(shifted), 0x0010'0000'0020'0010);
    expectPixels(Untouched, Grey);
}

TEST_F(PerformIctTest, ReferencesAreBalancedAfterEveryCall) {
    feed(End);
    perform();
    const long locals = ownLocals();
    for (int update = 0; update < 3; ++update) {
        feed(std::string(GreyMacroblock) + End, {1, 2, 3});
        perform();
        perform(); // No data: a failure.
        EXPECT_EQ(m_jvm.liveGlobals(), 2u);
        EXPECT_EQ(ownLocals(), locals);
    }
}

TEST_F(PerformIctTest, UnusedBytesGoBackToTheJavaSide) {
    feed(End, {7, 8});
    perform();
    EXPECT_THAT(m_helper.m_stalls, ElementsAre(FakeHelper::Stall{m_jvm.target(m_transfer), 3, 2}));
}

TEST_F(PerformIctTest, UpdateArrivesInPieces) {
    for (const uint8_t byte : model::BytesOf(std::string(GreyMacroblock) + End))
        m_helper.m_pieces.push_back({byte});
    EXPECT_EQ(perform(), 0x0000'0000'0010'0010);
    expectPixels(Grey, Untouched);
    EXPECT_THAT(m_helper.m_capacities, Each(TransferLength));
}

TEST_F(PerformIctTest, ZeroHandlesReturnMinusOneAndLeaveTheStreamAlone) {
    for (jlong Call::*handle : {&Call::decoder, &Call::renderer, &Call::streambuffer}) {
        Call incomplete = call(m_decoder);
        incomplete.*handle = 0;
        const int lengths = m_jvm.calls("GetArrayLength");
        EXPECT_EQ(performIct(incomplete), -1);
        EXPECT_EQ(m_jvm.calls("GetArrayLength"), lengths);
    }
    EXPECT_THAT(m_helper.m_capacities, IsEmpty());
    EXPECT_THAT(m_helper.m_lines, IsEmpty());
}

TEST_F(PerformIctTest, ZeroLoggerHandleDoesNotMatterToAGoodUpdate) {
    feed(End);
    Call withoutLogger = call(m_decoder);
    withoutLogger.logger = 0;
    EXPECT_EQ(performIct(withoutLogger), 0);
}

TEST_F(PerformIctTest, PlanesAreDrawnWithoutAnArgbBuffer) {
    std::vector<uint8_t> luma(Width * Height, 9);
    std::vector<uint8_t> cb(Width * Height / 4, 9);
    std::vector<uint8_t> cr(Width * Height / 4, 9);
    Call planes = call(m_decoder);
    planes.argb = nullptr;
    planes.yPlane = directBuffer(luma);
    planes.cbPlane = directBuffer(cb);
    planes.crPlane = directBuffer(cr);
    feed(std::string(GreyMacroblock) + End);
    EXPECT_EQ(performIct(planes), 0x0000'0000'0010'0010);
    EXPECT_EQ(luma[0], 128);
    EXPECT_EQ(luma[15], 128);
    EXPECT_EQ(luma[16], 9);
    EXPECT_EQ(cb[7], 128);
    EXPECT_EQ(cb[8], 9);
    EXPECT_EQ(cr[7], 128);
    EXPECT_EQ(cr[8], 9);
    EXPECT_THAT(m_framebuffer, Each(Untouched));
}

TEST_F(PerformIctTest, NullPlanesReplaceThoseOfTheUpdateBeforeAndArgbIsDrawn) {
    std::vector<uint8_t> plane(Width * Height);
    Call planes = call(m_decoder);
    planes.argb = nullptr;
    planes.yPlane = planes.cbPlane = planes.crPlane = directBuffer(plane);
    feed(std::string(GreyMacroblock) + End);
    performIct(planes);
    ASSERT_EQ(plane[0], 128);
    plane.assign(plane.size(), 9);

    Call nothing = call(m_decoder);
    nothing.argb = nullptr;
    feed(std::string(GreyMacroblock) + End);
    EXPECT_EQ(performIct(nothing), 0x0000'0000'0010'0010);
    EXPECT_THAT(plane, Each(9));

    feed(std::string(GreyMacroblock) + End);
    EXPECT_EQ(perform(), 0x0000'0000'0010'0010);
    expectPixels(Grey, Untouched);
    EXPECT_THAT(plane, Each(9));
}

TEST_F(PerformIctTest, BufferWithoutAnAddressCountsAsNone) {
    feed(std::string(GreyMacroblock) + End);
    Call heapBuffer = call(m_decoder);
    heapBuffer.argb = m_jvm.local(m_jvm.newDirectBuffer(nullptr));
    EXPECT_EQ(performIct(heapBuffer), 0x0000'0000'0010'0010);
    EXPECT_THAT(m_framebuffer, Each(Untouched));
}

TEST_F(PerformIctTest, NullBuffersAreNotAskedForTheirAddress) {
    feed(End);
    perform();
    EXPECT_EQ(m_jvm.calls("GetDirectBufferAddress"), 1);
}

TEST_F(PerformIctTest, DecoderErrorIsOneLogLineAndMinusOneAndNothingIsPending) {
    feed("0"); // One coded macroblock that never comes.
    EXPECT_EQ(perform(), -1);
    EXPECT_THAT(m_helper.m_lines,
                ElementsAre(std::string(FailureLine) + "Stream has no more bytes!"));
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    EXPECT_FALSE(m_jvm.m_pendingException);
    EXPECT_THAT(m_framebuffer, Each(Untouched));
}

TEST_F(PerformIctTest, DecoderErrorGivesUnusedBytesBackToo) {
    // Nine ones are the luminance DC size by which an encoder aborts an update.
    feed("0 11111111 11111111", {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(perform(), -1);
    EXPECT_THAT(m_helper.m_lines, ElementsAre(std::string(FailureLine) + "StreamError"));
    ASSERT_EQ(m_helper.m_stalls.size(), 1u);
    EXPECT_EQ(m_helper.m_stalls[0].offset + m_helper.m_stalls[0].count, 9);
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
}

TEST_F(PerformIctTest, GoodUpdateAfterABadOneDecodes) {
    feed("0");
    perform();
    feed(std::string(GreyMacroblock) + End);
    EXPECT_EQ(perform(), 0x0000'0000'0010'0010);
    expectPixels(Grey, Untouched);
}

TEST_F(PerformIctTest, ReadOfZeroAtOnceIsTheEndOfData) {
    m_helper.m_claims = {0};
    // Padding reads as skip code 0 and no tile ends within two bytes of zeros.
    EXPECT_EQ(perform(), -1);
    EXPECT_THAT(m_helper.m_lines,
                ElementsAre(std::string(FailureLine) + "Stream has no more bytes!"));
    EXPECT_EQ(m_helper.m_capacities.size(), 1u);
}

TEST_F(PerformIctTest, NegativeReadFailsTheUpdate) {
    m_helper.m_claims = {-1};
    EXPECT_EQ(perform(), -1);
    EXPECT_THAT(m_helper.m_lines,
                ElementsAre(std::string(FailureLine) + "Unable to read from java buffer!"));
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    EXPECT_FALSE(m_jvm.m_pendingException);
}

TEST_F(PerformIctTest, ReadBeyondTheTransferArrayFailsTheUpdate) {
    m_helper.m_claims = {TransferLength + 1};
    EXPECT_EQ(perform(), -1);
    EXPECT_THAT(m_helper.m_lines,
                ElementsAre(std::string(FailureLine) + "Unable to read from java buffer!"));
}

TEST_F(PerformIctTest, ArrayLongerThanToldIsReadWithinTheTold) {
    feed(End);
    Call understated = call(m_decoder);
    understated.length = 3;
    EXPECT_EQ(performIct(understated), 0);
    EXPECT_THAT(m_helper.m_capacities, ElementsAre(3));
}

TEST_F(PerformIctTest, MissingReadFailsTheUpdateAndStaysPending) {
    m_helper.removeMethod("read([BI)I");
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(perform(), -1); }), "Could not find \"read([BI)I\" method");
    EXPECT_THAT(m_helper.m_lines, ElementsAre(std::string(FailureLine) + "Connection closed"));
    ASSERT_TRUE(m_jvm.m_pendingException);
    EXPECT_EQ(m_jvm.m_pendingException->className, "java/lang/NoSuchMethodError");
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
}

TEST_F(PerformIctTest, FailingLookupOfReadIsRememberedByTheStream) {
    m_jvm.failCall("GetMethodID");
    outputOf([&] { EXPECT_EQ(perform(), -1); });
    feed(End);
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(perform(), -1); }), "Could not find \"read([BI)I\" method");
}

TEST_F(PerformIctTest, MissingStallWithUnusedBytesLeavesTheNativeMethod) {
    m_helper.removeMethod("stall([BII)V");
    feed(End, {1});
    EXPECT_EQ(outputOf([&] { EXPECT_THROW(perform(), libimagedecoder::ImageDecoderException); }),
              "Could not find \"stall([BII)V\" method");
    EXPECT_THAT(m_helper.m_lines, IsEmpty());
}

TEST_F(PerformIctTest, OtherExceptionsLeaveTheNativeMethodUncaught) {
    Call negativeLength = call(m_decoder);
    negativeLength.length = -1;
    EXPECT_THROW(performIct(negativeLength), std::bad_alloc);
    EXPECT_THAT(m_helper.m_lines, IsEmpty());
}

/// A logger whose Java object has no print, as the creating methods do not check it.
TEST_F(PerformIctTest, MissingPrintCostsTheLineAlone) {
    m_helper.removeMethod("print(Ljava/lang/String;)V");
    const jlong mute = HELPER(createLogger)(m_jvm.env(), m_helper.get());
    Call failing = call(m_decoder);
    failing.logger = mute;
    feed("0");
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(performIct(failing), -1); }),
              "Could not find \"print(Ljava/lang/String;)V\" method");
    EXPECT_EQ(m_jvm.liveGlobals(), 3u);
    HELPER(deleteLogger)(m_jvm.env(), nullptr, mute);
}

} // namespace
} // namespace Vostrel::tests
