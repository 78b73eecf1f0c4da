#include "tools/YCbCrPlanes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace Vostrel::streamencoder {
namespace {

using Chroma = ChromaSubsampling;

struct Sample {
    double m_fY;
    double m_fCb;
    double m_fCr;
};

/// The equations of full-range BT.601 in plain floating point.
Sample Convert(double red, double green, double blue) {
    const double y = 0.299 * red + 0.587 * green + 0.114 * blue;
    return {y, (blue - y) / 1.772 + 128, (red - y) / 1.402 + 128};
}

TEST(ConvertToYCbCr, GreyHasNoColour) {
    for (int grey = 0; grey < 256; ++grey) {
        const auto value = static_cast<uint8_t>(grey);
        const Picture picture(16, 16, {value, value, value});
        for (const Chroma chroma : {Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444}) {
            const YCbCrPlanes planes = ConvertToYCbCr(picture, {0, 0, 16, 16}, chroma);
            EXPECT_EQ(*planes.m_y.At(5, 5), value);
            EXPECT_EQ(*planes.m_cb.At(5, 5), 128);
            EXPECT_EQ(*planes.m_cr.At(5, 5), 128);
        }
    }
}

TEST(ConvertToYCbCr, PrimariesStayInRange) {
    const YCbCrPlanes blue =
        ConvertToYCbCr(Picture(16, 16, {0, 0, 255}), {0, 0, 16, 16}, Chroma::Yuv444);
    EXPECT_EQ(*blue.m_y.At(0, 0), 29);
    EXPECT_EQ(*blue.m_cb.At(0, 0), 255);
    EXPECT_EQ(*blue.m_cr.At(0, 0), 107);
    const YCbCrPlanes red =
        ConvertToYCbCr(Picture(16, 16, {255, 0, 0}), {0, 0, 16, 16}, Chroma::Yuv444);
    EXPECT_EQ(*red.m_y.At(0, 0), 76);
    EXPECT_EQ(*red.m_cb.At(0, 0), 85);
    EXPECT_EQ(*red.m_cr.At(0, 0), 255);
}

TEST(ConvertToYCbCr, FollowsTheEquationsOnRandomPixels) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    Picture picture(64, 64);
    for (RgbPixel& pixel : picture.m_vPixels) {
        for (uint8_t& channel : pixel) {
            channel = static_cast<uint8_t>(random());
        }
    }
    for (const Chroma chroma : {Chroma::Yuv420, Chroma::Yuv422, Chroma::Yuv444}) {
        const YCbCrPlanes planes = ConvertToYCbCr(picture, {0, 0, 64, 64}, chroma);
        const size_t divX = ChromaDivX(chroma);
        const size_t divY = ChromaDivY(chroma);
        for (size_t y = 0; y < 64 / divY; ++y) {
            for (size_t x = 0; x < 64 / divX; ++x) {
                Sample mean{};
                for (size_t dy = 0; dy < divY; ++dy) {
                    for (size_t dx = 0; dx < divX; ++dx) {
                        const RgbPixel& pixel = picture.At(x * divX + dx, y * divY + dy);
                        const Sample sample = Convert(pixel[0], pixel[1], pixel[2]);
                        mean.m_fCb += sample.m_fCb / static_cast<double>(divX * divY);
                        mean.m_fCr += sample.m_fCr / static_cast<double>(divX * divY);
                        EXPECT_NEAR(*planes.m_y.At(x * divX + dx, y * divY + dy), sample.m_fY,
                                    0.51);
                    }
                }
                EXPECT_NEAR(*planes.m_cb.At(x, y), mean.m_fCb, 0.51);
                EXPECT_NEAR(*planes.m_cr.At(x, y), mean.m_fCr, 0.51);
            }
        }
    }
}

TEST(ConvertToYCbCr, PlanesCoverWholeBlocks) {
    const Picture picture(50, 40);
    const auto sizes = [&](Chroma chroma) {
        const YCbCrPlanes planes = ConvertToYCbCr(picture, {0, 0, 50, 40}, chroma);
        EXPECT_EQ(planes.m_y.m_uiWidth, 64U);
        EXPECT_EQ(planes.m_y.m_uiHeight, 48U);
        EXPECT_EQ(planes.m_cr.m_uiWidth, planes.m_cb.m_uiWidth);
        EXPECT_EQ(planes.m_cr.m_uiHeight, planes.m_cb.m_uiHeight);
        return std::pair(planes.m_cb.m_uiWidth, planes.m_cb.m_uiHeight);
    };
    EXPECT_EQ(sizes(Chroma::Yuv420), (std::pair<size_t, size_t>(32, 24)));
    EXPECT_EQ(sizes(Chroma::Yuv422), (std::pair<size_t, size_t>(32, 48)));
    EXPECT_EQ(sizes(Chroma::Yuv444), (std::pair<size_t, size_t>(64, 48)));
}

TEST(ConvertToYCbCr, TheNearestEdgePixelRepeatsBeyondThePicture) {
    Picture picture(17, 17);
    picture.At(16, 4) = {50, 50, 50};
    picture.At(3, 16) = {60, 60, 60};
    picture.At(16, 16) = {70, 70, 70};
    const YCbCrPlanes planes = ConvertToYCbCr(picture, {0, 0, 17, 17}, Chroma::Yuv444);
    EXPECT_EQ(*planes.m_y.At(31, 4), 50);
    EXPECT_EQ(*planes.m_y.At(3, 31), 60);
    EXPECT_EQ(*planes.m_y.At(31, 31), 70);
}

TEST(ConvertToYCbCr, ARectangleInsideTakesThePixelsBesideIt) {
    Picture picture(64, 64);
    picture.At(40, 33) = {80, 80, 80};
    const YCbCrPlanes planes = ConvertToYCbCr(picture, {32, 32, 5, 1}, Chroma::Yuv444);
    EXPECT_EQ(*planes.m_y.At(8, 1), 80);
}

} // namespace
} // namespace Vostrel::streamencoder
