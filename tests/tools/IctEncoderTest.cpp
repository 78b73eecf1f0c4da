#include "tools/IctEncoder.h"
#include "tests/tools/BitString.h"
#include "tests/tools/ModelViewer.h"
#include "tests/tools/Screens.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <stdexcept>
#include <tuple>

namespace Vostrel::streamencoder {
namespace {

using Chroma = ChromaSubsampling;

UpdateFormat Format(unsigned version, RecordLayout layout = RecordLayout::Pool) {
    UpdateFormat format;
    format.m_uiProtocolVersion = version;
    format.m_layout = layout;
    return format;
}

std::string BitsOf(IctEncoder& encoder, const Picture& picture) {
    return BitStringOf(encoder.EncodeUpdate(picture, nullptr).m_vuiPayload);
}

std::string Whole(const std::string& text) {
    std::string bits = WithoutBlanks(text);
    bits.resize((bits.size() + 7) / 8 * 8, '0');
    return bits;
}

// Level 7 has the luma DC step 16 and the transform's DC is 8 times the mean. White lies
// 127 + 63/128 above the centre: 8 * 127.49 / 16 = 63.7, level 64 (7 bits, code 11110).
TEST(IctEncoder, AWhiteMacroblockHasHandmadeBits) {
    const Picture white(16, 16, {255, 255, 255});
    const std::string luma = "11110 1000000 1010  00 1010  00 1010  00 1010 ";
    const std::string chroma420 = "00 00  00 00 ";
    const std::string end = "11" + std::string(16, '1');

    IctEncoder yuv420(Format(1), Chroma::Yuv420, 7);
    EXPECT_EQ(BitsOf(yuv420, white), Whole("0 " + luma + chroma420 + end));
    IctEncoder yuv422(Format(1), Chroma::Yuv422, 7);
    EXPECT_EQ(BitsOf(yuv422, white), Whole("0 " + luma + chroma420 + chroma420 + end));
    IctEncoder yuv444(Format(1), Chroma::Yuv444, 7);
    EXPECT_EQ(BitsOf(yuv444, white),
              Whole("0 " + luma + chroma420 + chroma420 + chroma420 + chroma420 + end));
}

TEST(IctEncoder, PredictorsCarryOverInVersion0AndRestartInLaterOnes) {
    const Picture white(32, 16, {255, 255, 255});
    const std::string first = "0 11110 1000000 1010  00 1010  00 1010  00 1010  00 00  00 00 ";
    const std::string carriedOver = "0 00 1010  00 1010  00 1010  00 1010  00 00  00 00 ";

    IctEncoder version0(Format(0), Chroma::Yuv420, 7);
    EXPECT_EQ(BitsOf(version0, white), Whole(first + carriedOver + "11" + std::string(14, '1')));
    IctEncoder version1(Format(1), Chroma::Yuv420, 7);
    EXPECT_EQ(BitsOf(version1, white), Whole(first + first + "11" + std::string(16, '1')));
}

TEST(IctEncoder, PredictorsRestartWithEveryUpdate) {
    const Picture white(16, 16, {255, 255, 255});
    IctEncoder encoder(Format(0), Chroma::Yuv420, 7);
    const std::string first = BitsOf(encoder, white);
    EXPECT_EQ(BitsOf(encoder, white), first);
}

TEST(IctEncoder, APoolRecordIsFramedByItsLength) {
    const Picture white(16, 16, {255, 255, 255});
    IctEncoder encoder(Format(2), Chroma::Yuv420, 7);
    // 1 + 8 + 42 bits are 7 bytes.
    EXPECT_EQ(BitsOf(encoder, white),
              Whole("0 00000111 11110 1000000 1010  00 1010  00 1010  00 1010  00 00  00 00 00000"
                    "11 1111111111111111"));
}

TEST(IctEncoder, EqualPicturesGiveTheEndMarkerAlone) {
    const Picture picture(40, 40, {10, 20, 30});
    IctEncoder encoder(Format(2), Chroma::Yuv420, 7);
    EXPECT_EQ(BitStringOf(encoder.EncodeUpdate(picture, &picture).m_vuiPayload),
              Whole("11 1111111111111111"));
}

TEST(IctEncoder, UnchangedMacroblocksAreSkipped) {
    const Picture before(48, 16, {0, 0, 0});
    Picture after = before;
    for (size_t i = 0; i < 256; ++i) {
        after.At(32 + i % 16, i / 16) = {255, 255, 255};
    }
    IctEncoder encoder(Format(1), Chroma::Yuv420, 7);
    EXPECT_EQ(BitStringOf(encoder.EncodeUpdate(after, &before).m_vuiPayload),
              Whole("10 000010 11110 1000000 1010  00 1010  00 1010  00 1010  00 00  00 00"
                    "11 1111111111111111"));
}

TEST(IctEncoder, RectanglesAreRoundedUpToWholeMacroblocks) {
    IctEncoder encoder(Format(1), Chroma::Yuv420, 7);
    const EncodedUpdate whole = encoder.EncodeUpdate(Picture(1920, 1080), nullptr);
    EXPECT_EQ(whole.m_rectangle.m_uiWidth, 1920);
    EXPECT_EQ(whole.m_rectangle.m_uiHeight, 1088);
    const EncodedUpdate part = encoder.EncodeUpdate(Picture(64, 64), nullptr, {3, 5, 17, 1});
    EXPECT_EQ(part.m_rectangle.m_uiX, 3);
    EXPECT_EQ(part.m_rectangle.m_uiY, 5);
    EXPECT_EQ(part.m_rectangle.m_uiWidth, 32);
    EXPECT_EQ(part.m_rectangle.m_uiHeight, 16);
    EXPECT_EQ(part.m_uiQuality, 7U);
}

TEST(IctEncoder, RejectsWhatItCannotEncode) {
    EXPECT_THROW(IctEncoder(Format(1), Chroma::Yuv420, 16), std::invalid_argument);
    EXPECT_THROW(IctEncoder(Format(3), Chroma::Yuv420, 7), std::invalid_argument);
    IctEncoder encoder(Format(1), Chroma::Yuv420, 7);
    const Picture picture(32, 32);
    EXPECT_THROW(encoder.EncodeUpdate(Picture(0, 0), nullptr), std::invalid_argument);
    EXPECT_THROW(encoder.EncodeUpdate(picture, nullptr, {0, 0, 0, 16}), std::invalid_argument);
    EXPECT_THROW(encoder.EncodeUpdate(picture, nullptr, {32, 0, 16, 16}), std::invalid_argument);
    EXPECT_THROW(encoder.EncodeUpdate(picture, nullptr, {0, 32, 16, 16}), std::invalid_argument);
    EXPECT_THROW(encoder.EncodeUpdate(picture, nullptr, {0, 0, 65535, 16}), std::invalid_argument);
    EXPECT_THROW(encoder.EncodeUpdate(Picture(65521, 1), nullptr), std::invalid_argument);
    const Picture other(16, 64);
    EXPECT_THROW(encoder.EncodeUpdate(picture, &other), std::invalid_argument);
}

/// Random blotches and noise: flat blocks, coarse and fine ones, many lengths above 255.
Picture RandomPicture(size_t width, size_t height, std::mt19937& random) {
    Picture picture(width, height);
    for (size_t top = 0; top < height; top += 16) {
        for (size_t left = 0; left < width; left += 16) {
            const unsigned noise = 1U << random() % 9;
            const RgbPixel base{static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                                static_cast<uint8_t>(random())};
            for (size_t y = top; y < std::min(top + 16, height); ++y) {
                for (size_t x = left; x < std::min(left + 16, width); ++x) {
                    for (size_t c = 0; c < 3; ++c) {
                        picture.At(x, y)[c] = static_cast<uint8_t>(base[c] + random() % noise);
                    }
                }
            }
        }
    }
    return picture;
}

/// Version, layout, threads of the decoder, subsampling.
using Mode = std::tuple<unsigned, RecordLayout, unsigned, Chroma>;

class IctEncoderModes : public testing::TestWithParam<Mode> {
protected:
    UpdateFormat m_format = Format(std::get<0>(GetParam()), std::get<1>(GetParam()));
    unsigned m_uiThreads = std::get<2>(GetParam());
    Chroma m_chroma = std::get<3>(GetParam());
};

INSTANTIATE_TEST_SUITE_P(
    WithoutLengths, IctEncoderModes,
    testing::Combine(testing::Values(0U, 1U), testing::Values(RecordLayout::Continuous),
                     testing::Values(0U, 2U),
                     testing::Values(Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444)));
INSTANTIATE_TEST_SUITE_P(
    WithoutPool, IctEncoderModes,
    testing::Combine(testing::Values(2U),
                     testing::Values(RecordLayout::Continuous, RecordLayout::InPlace),
                     testing::Values(0U),
                     testing::Values(Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444)));
INSTANTIATE_TEST_SUITE_P(
    WithPool, IctEncoderModes,
    testing::Combine(testing::Values(2U),
                     testing::Values(RecordLayout::Pool, RecordLayout::InPlace),
                     testing::Values(2U),
                     testing::Values(Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444)));

// Whatever the framing, a decoder ends up with the same samples: those of the simplest one.
TEST_P(IctEncoderModes, SequencesDecodeAsInTheSimplestFraming) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    constexpr int Width = 160;
    constexpr int Height = 64;

    for (const SkipForm skipForm : {SkipForm::OneBit, SkipForm::SixBits, SkipForm::Long}) {
        // The finest quality has many macroblocks that do not fit their length field.
        const auto quality =
            skipForm == SkipForm::OneBit ? 15 : static_cast<uint32_t>(random() % 16);
        m_format.m_minSkipForm = skipForm;
        m_format.m_uiRecordPadding = static_cast<unsigned>(random() % 3);
        IctEncoder encoder(m_format, m_chroma, quality);
        IctEncoder reference(Format(1), m_chroma, quality);
        ModelViewer viewer(encoder, m_uiThreads, Width, Height, model::ModelSink::Argb);
        ModelViewer referenceViewer(reference, 0, Width, Height, model::ModelSink::Argb);

        Picture previous;
        for (int frame = 0; frame < 3; ++frame) {
            Picture picture = RandomPicture(Width, Height, random);
            for (size_t y = 0; frame > 0 && y < Height; ++y) {
                for (size_t x = 0; x < Width; ++x) {
                    if (x / 16 % 3 != y / 16 % 3)
                        picture.At(x, y) = previous.At(x, y);
                }
            }
            const Picture* before = frame > 0 ? &previous : nullptr;
            EXPECT_EQ(viewer.Show(encoder.EncodeUpdate(picture, before)),
                      referenceViewer.Show(reference.EncodeUpdate(picture, before)));
            ASSERT_TRUE(viewer.Memory() == referenceViewer.Memory());
            previous = picture;
        }
    }
}

TEST(IctEncoder, LongGapsAreBridgedByCodedMacroblocks) {
    // 2064 x 2048 pixels are 16512 macroblocks; a skip code of version 0 passes over 16382.
    const Picture before(2064, 2048);
    Picture after = before;
    after.At(2063, 2047) = {255, 255, 255};
    IctEncoder encoder(Format(0), Chroma::Yuv420, 7);
    ModelViewer viewer(encoder, 0, 2064, 2048, model::ModelSink::Planes);
    // Coded are macroblock 16382 (row 126, column 128) and the last one.
    EXPECT_EQ(viewer.Show(encoder.EncodeUpdate(after, &before)),
              uint64_t{2048} << 48 | uint64_t{126 * 16} << 32 | 16 << 16 | 32);
}

double LumaPsnr(const Picture& picture, Chroma chroma, uint32_t quality) {
    IctEncoder encoder(Format(1), chroma, quality);
    ModelViewer viewer(encoder, 0, static_cast<int>(picture.m_uiWidth),
                       static_cast<int>(picture.m_uiHeight), model::ModelSink::Planes);
    const EncodedUpdate update = encoder.EncodeUpdate(picture, nullptr);
    viewer.Show(update);
    const YCbCrPlanes source = ConvertToYCbCr(picture, update.m_rectangle, chroma);
    const YCbCrPlanes decoded = viewer.Planes();
    return Psnr(source.m_y.At(0, 0), source.m_y.m_uiWidth, decoded.m_y.At(0, 0),
                decoded.m_y.m_uiWidth, picture.m_uiWidth, picture.m_uiHeight);
}

TEST(IctEncoder, PsnrRisesWithEveryQualityLevel) {
    const Picture picture = Crop(Screen("desktop-1920x1080-00"), 1000, 300, 256, 128);
    double last = 0;
    for (uint32_t quality = 0; quality < 16; ++quality) {
        const double psnr = LumaPsnr(picture, Chroma::Yuv420, quality);
        RecordProperty("psnr" + std::to_string(quality), std::to_string(psnr));
        EXPECT_GT(psnr, last) << "quality " << quality;
        last = psnr;
    }
    EXPECT_GT(last, 42.0);
}

TEST(IctEncoder, ReconstructionHasNoBias) {
    const Picture picture = Crop(Screen("photo-1920x1080-00"), 600, 300, 256, 128);
    IctEncoder encoder(Format(1), Chroma::Yuv444, 12);
    ModelViewer viewer(encoder, 0, 256, 128, model::ModelSink::Planes);
    const EncodedUpdate update = encoder.EncodeUpdate(picture, nullptr);
    viewer.Show(update);
    const YCbCrPlanes source = ConvertToYCbCr(picture, update.m_rectangle, Chroma::Yuv444);
    const YCbCrPlanes decoded = viewer.Planes();
    for (const auto& [a, b] :
         {std::pair(&source.m_y, &decoded.m_y), std::pair(&source.m_cb, &decoded.m_cb),
          std::pair(&source.m_cr, &decoded.m_cr)}) {
        double sum = 0;
        for (size_t i = 0; i < a->m_vuiSamples.size(); ++i) {
            sum += b->m_vuiSamples[i] - a->m_vuiSamples[i];
        }
        EXPECT_NEAR(sum / static_cast<double>(a->m_vuiSamples.size()), 0, 0.05);
    }
}

} // namespace
} // namespace Vostrel::streamencoder
