#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/support/PiecewiseStreambuffer.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/TestBits.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

// What a decoder does from its creation to its first macroblock.

namespace Vostrel::libimagedecoder {
namespace {

using Lines = std::vector<std::string>;

/// Lets a test see the store of the records' bytes.
class OpenIct : public ImageDecoderIct {
public:
    using IImageDecoder::m_uiSegmentStoreUsed;
    using IImageDecoder::m_vecSegmentStore;
    using ImageDecoderIct::ImageDecoderIct;
};

class DecoderCreation : public testing::Test {
protected:
    template <class Decoder>
    Lines LogOf(unsigned long threads) {
        m_Logger.m_vLines.clear();
        const ImageDecoderRenderer renderer(&m_Logger);
        const Decoder decoder(&m_Renderer, &m_Stream, &m_Logger, threads, 2, 0);
        return m_Logger.m_vLines;
    }

    tests::RecordingLogger m_Logger;
    tests::PiecewiseStreambuffer m_Stream{&m_Logger};
    ImageDecoderRenderer m_Renderer{&m_Logger};
};

/// What the factories announce on this processor: the colour conversion, then the transform.
Lines Announcements() {
    tests::RecordingLogger logger;
    YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, true);
    InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct(&logger, true);
    return logger.m_vLines;
}

TEST_F(DecoderCreation, LogsTheConversionThenTheTransformThenTheThreads) {
    Lines expected = Announcements();
    expected.push_back("Using singlethreaded ICT decoder.");
    EXPECT_EQ(LogOf<ImageDecoderIct>(0), expected);
    expected.back() = "Using multithreaded parallel ICT decoder with 2 threads.";
    EXPECT_EQ(LogOf<ImageDecoderIct>(2), expected);
}

TEST_F(DecoderCreation, OfLbeLogsItsThreadsAlone) {
    Lines expected = Announcements();
    expected.back() = "Using singlethreaded LBE decoder.";
    EXPECT_EQ(LogOf<ImageDecoderLbe>(0), expected);
    expected.back() = "Using multithreaded parallel LBE decoder with 2 threads.";
    EXPECT_EQ(LogOf<ImageDecoderLbe>(2), expected);
}

TEST_F(DecoderCreation, AResolutionSizesTheSegmentStoreToHalfItsPixelsAndEmptiesIt) {
    OpenIct decoder(&m_Renderer, &m_Stream, &m_Logger, 0, 1, 0);
    for (const auto& [width, height] : {std::pair(64, 32), {33, 17}, {128, 16}}) {
        decoder.m_uiSegmentStoreUsed = 7;
        decoder.SetResolution(static_cast<unsigned short>(width),
                              static_cast<unsigned short>(height));
        EXPECT_EQ(decoder.m_vecSegmentStore.size(), static_cast<size_t>(width * height / 2));
        EXPECT_EQ(decoder.m_uiSegmentStoreUsed, 0U);
    }
}

TEST_F(DecoderCreation, EveryUpdateBeginsWithAnEmptySegmentStore) {
    OpenIct decoder(&m_Renderer, &m_Stream, &m_Logger, 0, 1, 0);
    decoder.SetResolution(16, 16);
    decoder.m_uiSegmentStoreUsed = 7;
    m_Stream.Load(tests::BytesOf(tests::EndOfUpdate(1)), 16);
    decoder.HandleUpdate(0, 0, 0, 0, 16, 16);
    EXPECT_EQ(decoder.m_uiSegmentStoreUsed, 0U);
}

/// Counts conversions instead of making them.
class CountingConverter : public YCbCr4xxToArgb32::IYCbCr4xxToArgb32 {
public:
    using IYCbCr4xxToArgb32::IYCbCr4xxToArgb32;
    std::uint16_t GetDataAlignmentBytes() const override { return 8; }
    void Convert420(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short, unsigned short, unsigned long, unsigned long, unsigned long,
                    const bool* skipMask) const override {
        ++m_iConversions;
        m_bSkipped = skipMask[0];
    }
    void Convert422(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short, unsigned short, unsigned long, unsigned long, unsigned long,
                    const bool*) const override {}
    void Convert444(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short, unsigned short, unsigned long, unsigned long, unsigned long,
                    const bool*) const override {}

    mutable int m_iConversions = 0;
    mutable bool m_bSkipped = false;
};

TEST_F(DecoderCreation, AnUpdateThatCodesNothingIsDrawnWithAllMacroblocksSkipped) {
    const auto converter = std::make_shared<CountingConverter>(&m_Logger);
    ImageDecoderRenderer renderer(converter);
    std::vector<uint32_t> pixels(256);
    renderer.SetFramebufferSize(16, 16, false);
    renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(pixels.data()));
    ImageDecoderIct decoder(&renderer, &m_Stream, &m_Logger, 0, 1, 0);
    decoder.SetResolution(16, 16);
    m_Stream.Load(tests::BytesOf(tests::EndOfUpdate(1)), 16);
    EXPECT_EQ(decoder.HandleUpdate(0, 0, 0, 0, 16, 16), 0U);
    EXPECT_EQ(converter->m_iConversions, 1);
    EXPECT_TRUE(converter->m_bSkipped);
}

} // namespace
} // namespace Vostrel::libimagedecoder
