#include "tools/LbeEncoder.h"
#include "tests/model/ModelColour.h"
#include "tests/tools/BitString.h"
#include "tests/tools/LibraryViewer.h"
#include "tests/tools/ModelViewer.h"
#include "tests/tools/Screens.h"

#include <gtest/gtest.h>

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

std::string Whole(const std::string& text) {
    std::string bits = WithoutBlanks(text);
    bits.resize((bits.size() + 7) / 8 * 8, '0');
    return bits;
}

TEST(LbeEncoder, AWhiteBlockHasHandmadeBits) {
    const Picture white(16, 16, {255, 255, 255});
    LbeEncoder version1(Format(1), Chroma::Yuv420, 6); // 4 bits of luma, 3 of chroma
    EXPECT_EQ(BitStringOf(version1.EncodeUpdate(white, nullptr).m_vuiPayload),
              Whole("0  0 1111 1 11 1111  1 11 1111  11 1111111111111111"));
    LbeEncoder version2(Format(2), Chroma::Yuv420, 6);
    // 1 + 8 + 19 bits are 4 bytes.
    EXPECT_EQ(BitStringOf(version2.EncodeUpdate(white, nullptr).m_vuiPayload),
              Whole("0 0 0000100  0 1111 1 11 1111  1 11 1111 0000  11 1111111111111111"));
}

TEST(LbeEncoder, ChromaValuesHoldTheCbLevelAboveTheCrLevel) {
    // Red: Y 76 is level 4 of 4 bits (68), Cb 85 is the pattern 111 (86), Cr 255 is 011.
    LbeEncoder encoder(Format(0), Chroma::Yuv444, 6);
    EXPECT_EQ(BitStringOf(encoder.EncodeUpdate(Picture(16, 16, {255, 0, 0}), nullptr).m_vuiPayload),
              Whole("0  0 0100 1 11 1111  0 111 011 1 11 1111  11 11111111111111"));
}

TEST(LbeEncoder, RejectsQualitiesWithoutDepths) {
    for (const uint32_t quality : {0U, 1U, 12U, 18U}) {
        EXPECT_THROW(LbeEncoder(Format(1), Chroma::Yuv420, quality), std::invalid_argument);
    }
    EXPECT_THROW(LbeEncoder(Format(0), Chroma::Yuv420, 8), std::invalid_argument);
    EXPECT_THROW(LbeEncoder(Format(3), Chroma::Yuv420, 8), std::invalid_argument);
}

/// The index of the nearest expansion, the lower one of two.
template <class Expand>
int64_t Nearest(Expand expand, int bits, int sample) {
    int64_t best = 0;
    for (int64_t level = 1; level < 1 << bits; ++level) {
        if (std::abs(expand(level, bits) - sample) < std::abs(expand(best, bits) - sample))
            best = level;
    }
    return best;
}

/// What a viewer shows of a picture at reduced depth, by the model's colours.
std::vector<uint32_t> ReducedPicture(const Picture& picture, Chroma chroma, int lumaBits,
                                     int chromaBits) {
    const YCbCrPlanes planes = ConvertToYCbCr(
        picture,
        {0, 0, static_cast<uint16_t>(picture.m_uiWidth), static_cast<uint16_t>(picture.m_uiHeight)},
        chroma);
    std::array<int64_t, 256> luma;
    std::array<int64_t, 256> colour;
    for (int sample = 0; sample < 256; ++sample) {
        luma[static_cast<size_t>(sample)] = Nearest(model::ExpandLuma, lumaBits, sample);
        colour[static_cast<size_t>(sample)] = Nearest(model::ExpandChroma, chromaBits, sample);
    }
    std::vector<uint32_t> argb;
    for (size_t y = 0; y < picture.m_uiHeight; ++y) {
        for (size_t x = 0; x < picture.m_uiWidth; ++x) {
            const size_t chromaX = x / ChromaDivX(chroma);
            const size_t chromaY = y / ChromaDivY(chroma);
            const int64_t packed = colour[*planes.m_cb.At(chromaX, chromaY)] << chromaBits |
                                   colour[*planes.m_cr.At(chromaX, chromaY)];
            argb.push_back(model::ReducedDepthToArgb(luma[*planes.m_y.At(x, y)], packed, lumaBits,
                                                     chromaBits));
        }
    }
    return argb;
}

std::vector<uint8_t> BytesOf(const std::vector<uint32_t>& argb) {
    std::vector<uint8_t> bytes;
    for (const uint32_t word : argb) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<uint8_t>(word >> shift));
        }
    }
    return bytes;
}

struct Depths {
    int m_iLuma;
    int m_iChroma;
};
constexpr Depths DepthsOfQuality[12] = {{},     {},     {2, 3}, {2, 4}, {3, 3}, {3, 4},
                                        {4, 3}, {4, 4}, {5, 4}, {5, 5}, {6, 4}, {6, 5}};

/// Flat parts, edges and noise.
Picture RandomPicture(size_t width, size_t height, std::mt19937& random) {
    Picture picture(width, height);
    for (size_t top = 0; top < height; top += 16) {
        for (size_t left = 0; left < width; left += 16) {
            const unsigned colours = 1U << random() % 9;
            std::vector<RgbPixel> palette(colours);
            for (RgbPixel& colour : palette) {
                colour = {static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                          static_cast<uint8_t>(random())};
            }
            for (size_t y = top; y < std::min(top + 16, height); ++y) {
                for (size_t x = left; x < std::min(left + 16, width); ++x) {
                    picture.At(x, y) = palette[random() % colours];
                }
            }
        }
    }
    return picture;
}

/// Version, layout, threads of the decoder, subsampling.
using Mode = std::tuple<unsigned, RecordLayout, unsigned, Chroma>;

class LbeEncoderModes : public testing::TestWithParam<Mode> {
protected:
    UpdateFormat m_format = Format(std::get<0>(GetParam()), std::get<1>(GetParam()));
    unsigned m_uiThreads = std::get<2>(GetParam());
    Chroma m_chroma = std::get<3>(GetParam());
    uint32_t m_uiLastQuality = m_format.m_uiProtocolVersion == 0 ? 7 : 11;
};

const auto AllChromas = testing::Values(Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444);

INSTANTIATE_TEST_SUITE_P(WithoutLengths, LbeEncoderModes,
                         testing::Combine(testing::Values(0U, 1U),
                                          testing::Values(RecordLayout::Continuous),
                                          testing::Values(0U), AllChromas));
INSTANTIATE_TEST_SUITE_P(WithoutPool, LbeEncoderModes,
                         testing::Combine(testing::Values(2U),
                                          testing::Values(RecordLayout::Continuous,
                                                          RecordLayout::InPlace),
                                          testing::Values(0U), AllChromas));
INSTANTIATE_TEST_SUITE_P(WithPool, LbeEncoderModes,
                         testing::Combine(testing::Values(2U),
                                          testing::Values(RecordLayout::Pool,
                                                          RecordLayout::InPlace),
                                          testing::Values(2U), AllChromas));

TEST_P(LbeEncoderModes, EveryQualityIsLosslessOnItsLevels) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    const Picture before = RandomPicture(112, 32, random);
    Picture after = before;
    const Picture fresh = RandomPicture(112, 32, random);
    for (size_t i = 0; i < after.m_vPixels.size(); ++i) {
        if (i / 16 % 3 == 0)
            after.m_vPixels[i] = fresh.m_vPixels[i];
    }

    for (uint32_t quality = 2; quality <= m_uiLastQuality; ++quality) {
        m_format.m_bLongLengthPrefix = random() % 2 == 0;
        m_format.m_uiRecordPadding = static_cast<unsigned>(random() % 3);
        m_format.m_minSkipForm = static_cast<SkipForm>(random() % 3);
        LbeEncoder encoder(m_format, m_chroma, quality);
        ModelViewer modelViewer(encoder, m_uiThreads, 112, 32, model::ModelSink::Argb);
        LibraryViewer libraryViewer(encoder, m_uiThreads, 112, 32);
        for (const EncodedUpdate& update :
             {encoder.EncodeUpdate(before, nullptr), encoder.EncodeUpdate(after, &before)}) {
            EXPECT_EQ(modelViewer.Show(update), libraryViewer.Show(update));
        }
        const auto [lumaBits, chromaBits] = DepthsOfQuality[quality];
        const auto expected = ReducedPicture(after, m_chroma, lumaBits, chromaBits);
        ASSERT_TRUE(modelViewer.Memory() == BytesOf(expected)) << "quality " << quality;
        ASSERT_TRUE(libraryViewer.GetArgb() == expected) << "quality " << quality;
    }
}

TEST_P(LbeEncoderModes, ScreensAreLosslessOnTheirLevels) {
    const Picture frames[] = {Screen("firmware-800x600-00"), Screen("firmware-800x600-01")};
    for (uint32_t quality = 2; quality <= m_uiLastQuality; quality += 5) {
        LbeEncoder encoder(m_format, m_chroma, quality);
        LibraryViewer viewer(encoder, m_uiThreads, 800, 600);
        viewer.Show(encoder.EncodeUpdate(frames[0], nullptr));
        viewer.Show(encoder.EncodeUpdate(frames[1], &frames[0]));
        const auto [lumaBits, chromaBits] = DepthsOfQuality[quality];
        ASSERT_TRUE(viewer.GetArgb() == ReducedPicture(frames[1], m_chroma, lumaBits, chromaBits))
            << "quality " << quality;
    }
}

} // namespace
} // namespace Vostrel::streamencoder
