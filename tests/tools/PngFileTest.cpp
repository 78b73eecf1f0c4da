#include "tools/PngFile.h"
#include "tests/tools/RawPng.h"
#include "tests/tools/Screens.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace Vostrel::streamencoder {
namespace {

TEST(PngFile, PicturesComeBackAsWritten) {
    Picture picture(3, 2);
    picture.At(0, 0) = {1, 2, 3};
    picture.At(2, 1) = {255, 128, 0};
    const std::string path = testing::TempDir() + "PngFileTest.png";
    WritePng(path, picture);
    const Picture read = ReadPng(path);
    std::remove(path.c_str());
    EXPECT_EQ(read.m_uiWidth, 3U);
    EXPECT_EQ(read.m_uiHeight, 2U);
    EXPECT_EQ(read.m_vPixels, picture.m_vPixels);
}

TEST(PngFile, ReadsPaletteScreensAsRgb) {
    const Picture console = Screen("console-720x400-00");
    EXPECT_EQ(console.m_uiWidth, 720U);
    EXPECT_EQ(console.m_uiHeight, 400U);
    EXPECT_EQ(console.At(719, 399), (RgbPixel{0, 0, 0}));
}

TEST(PngFile, TransparentPartsAreBlendedWithBlack) {
    const std::string path = testing::TempDir() + "PngFileAlpha.png";
    PngLoss loss;
    RawPng(8, PngColour::Rgba).Write(path, {200, 100, 50, 0});
    EXPECT_EQ(ReadPng(path, loss).At(0, 0), (RgbPixel{0, 0, 0}));
    EXPECT_TRUE(loss.m_bTransparency);
    EXPECT_FALSE(loss.m_b16Bits);
    RawPng(8, PngColour::Rgba).Write(path, {200, 100, 50, 255});
    EXPECT_EQ(ReadPng(path).At(0, 0), (RgbPixel{200, 100, 50}));
    RawPng(8, PngColour::Palette).Add("PLTE", {200, 100, 50}).Add("tRNS", {0}).Write(path, {0});
    EXPECT_EQ(ReadPng(path, loss).At(0, 0), (RgbPixel{0, 0, 0}));
    EXPECT_TRUE(loss.m_bTransparency);
    RawPng(8, PngColour::Palette).Add("PLTE", {200, 100, 50}).Write(path, {0});
    EXPECT_EQ(ReadPng(path, loss).At(0, 0), (RgbPixel{200, 100, 50}));
    EXPECT_FALSE(loss.m_bTransparency);
    std::remove(path.c_str());
}

TEST(PngFile, SamplesOf16BitsAreRounded) {
    const std::string path = testing::TempDir() + "PngFile16.png";
    PngLoss loss;
    // 257 * value is the exact 16-bit form; up to 128 more or less are rounded to it.
    RawPng(16, PngColour::Rgb).Write(path, {0x80, 0x80, 0x40, 0x00, 0x20, 0x5F});
    EXPECT_EQ(ReadPng(path, loss).At(0, 0), (RgbPixel{0x80, 0x40, 0x20}));
    EXPECT_TRUE(loss.m_b16Bits);
    EXPECT_FALSE(loss.m_bTransparency);
    std::remove(path.c_str());
}

TEST(PngFile, FailuresNameThePath) {
    const std::string path = testing::TempDir() + "no/such/folder/x.png";
    for (const bool write : {true, false}) {
        try {
            write ? WritePng(path, Picture(1, 1)) : void(ReadPng(path));
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()).find(path + ": "), 0U) << error.what();
        }
    }
}

TEST(PngFile, AFailedWriteLeavesWhatStandsThere) {
    const std::string link = testing::TempDir() + "PngFileTest-device";
    std::filesystem::create_symlink("/dev/full", link);
    EXPECT_THROW(WritePng(link, Picture(100, 100)), std::runtime_error);
    EXPECT_TRUE(std::filesystem::remove(link));
}

} // namespace
} // namespace Vostrel::streamencoder
