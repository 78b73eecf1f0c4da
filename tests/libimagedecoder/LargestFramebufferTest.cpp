#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/libimagedecoder/SparseMemory.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using tests::SparseMemory;

constexpr unsigned short Largest = 65535;

/// The last macroblock of the largest framebuffer: 15 of its 16 columns and all its rows are
/// visible.
constexpr size_t CornerX = 65520;
constexpr size_t CornerY = 65519;
constexpr size_t VisibleColumns = Largest - CornerX;
constexpr size_t CornerOffset = CornerY * Largest + CornerX;

class LargestFramebuffer : public testing::TestWithParam<unsigned> {
protected:
    /// Draws a white macroblock into the corner, of full depth or of the lowest.
    void DrawWhite(bool quantized) {
        const auto x = static_cast<unsigned short>(CornerX);
        const auto y = static_cast<unsigned short>(CornerY);
        const unsigned chroma = GetParam();
        const unsigned long chromaStride = chroma == 2 ? 16 : 8;
        if (quantized) {
            std::vector<unsigned char> levels(256, 3);
            std::vector<unsigned short> chromaValues(256, 0);
            using Draw = decltype(&ImageDecoderRenderer::DrawDataYCbCr420Quantized);
            constexpr Draw Draws[] = {&ImageDecoderRenderer::DrawDataYCbCr420Quantized,
                                      &ImageDecoderRenderer::DrawDataYCbCr422Quantized,
                                      &ImageDecoderRenderer::DrawDataYCbCr444Quantized};
            (m_Renderer.*Draws[chroma])(2, 3, x, y, 16, 16, 16, chromaStride, levels.data(),
                                        chromaValues.data(), &m_bNotSkipped);
            return;
        }
        std::vector<unsigned char> luma(256, 255);
        std::vector<unsigned char> neutral(256, 128);
        DrawPlanes(luma.data(), neutral.data(), neutral.data(), 16, chromaStride);
    }

    void DrawPlanes(unsigned char* luma, unsigned char* cb, unsigned char* cr,
                    unsigned long lumaStride, unsigned long chromaStride) {
        using Draw = decltype(&ImageDecoderRenderer::DrawDataYCbCr420);
        constexpr Draw Draws[] = {&ImageDecoderRenderer::DrawDataYCbCr420,
                                  &ImageDecoderRenderer::DrawDataYCbCr422,
                                  &ImageDecoderRenderer::DrawDataYCbCr444};
        (m_Renderer.*Draws[GetParam()])(static_cast<unsigned short>(CornerX),
                                        static_cast<unsigned short>(CornerY), 16, 16, lumaStride,
                                        chromaStride, luma, cb, cr, &m_bNotSkipped);
    }

    tests::RecordingLogger m_Logger;
    ImageDecoderRenderer m_Renderer{&m_Logger};
    bool m_bNotSkipped = false;
};

TEST_P(LargestFramebuffer, ItsLastMacroblockIsDrawnAtItsPlaceAndNowhereElse) {
    SparseMemory argb(size_t{Largest} * Largest * 4);
    m_Renderer.SetFramebufferSize(Largest, Largest, false);
    m_Renderer.SetFramebufferArgb(argb.Data());
    std::vector<uint32_t*> rows;
    // With the pixel to the left of each row, which must stay as it is.
    for (size_t row = 0; row < 16; ++row)
        rows.push_back(reinterpret_cast<uint32_t*>(argb.Open((CornerOffset + row * Largest - 1) * 4,
                                                             (VisibleColumns + 1) * 4)) +
                       1);
    for (const bool quantized : {false, true}) {
        DrawWhite(quantized);
        for (uint32_t* const row : rows) {
            EXPECT_EQ(std::count(row, row + VisibleColumns, 0xFFFFFFFF), 15);
            EXPECT_EQ(row[-1], 0u);
            std::fill_n(row, VisibleColumns, 0);
        }
    }
}

TEST_P(LargestFramebuffer, APackedRectangleIsDrawnAtItsStart) {
    tests::GuardedBuffer<uint32_t> argb(256);
    m_Renderer.SetFramebufferSize(Largest, Largest, true);
    m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(argb.Data()));
    for (const bool quantized : {false, true}) {
        DrawWhite(quantized);
        EXPECT_EQ(std::count(argb.begin(), argb.end(), 0xFFFFFFFF), 256);
        EXPECT_TRUE(argb.GuardsIntact());
        std::fill(argb.begin(), argb.end(), 0);
    }
}

TEST_P(LargestFramebuffer, PlanesAreReadAtTheCornersOffset) {
    constexpr size_t Columns = 16; // The destination starts at its first byte, so all are visible.
    const size_t chromaColumns = GetParam() == 2 ? Columns : Columns / 2;
    const size_t chromaRows = GetParam() == 0 ? 8 : 16;
    const size_t chromaStride = GetParam() == 2 ? Largest : Largest / 2;
    SparseMemory source(CornerOffset + 4096);
    SparseMemory luma(size_t{Largest} * Largest);
    SparseMemory chroma(size_t{Largest} * Largest);
    const auto fill = [](uint8_t* samples, uint8_t first) {
        for (size_t i = 0; i < 256; ++i)
            samples[i] = static_cast<uint8_t>(first + i);
    };
    // The chroma source moves by half of the luma offset.
    fill(source.Open(CornerOffset, 256), 1);
    fill(source.Open(CornerOffset / 2, 256), 7);
    for (size_t row = 0; row < 16; ++row) {
        luma.Open(row * Largest, Columns);
        chroma.Open(row * chromaStride, chromaColumns);
    }
    m_Renderer.SetFramebufferSize(Largest, Largest, false);
    m_Renderer.SetFramebufferY(luma.Data());
    m_Renderer.SetFramebufferCb(chroma.Data());
    m_Renderer.SetFramebufferCr(chroma.Data());
    DrawPlanes(source.Data(), source.Data(), source.Data(), 16, 8);
    for (size_t row = 0; row < 16; ++row) {
        for (size_t column = 0; column < Columns; ++column)
            ASSERT_EQ(luma.Data()[row * Largest + column],
                      static_cast<uint8_t>(1 + 16 * row + column));
    }
    for (size_t row = 0; row < chromaRows; ++row) {
        for (size_t column = 0; column < chromaColumns; ++column)
            ASSERT_EQ(chroma.Data()[row * chromaStride + column],
                      static_cast<uint8_t>(7 + 8 * row + column));
    }
}

INSTANTIATE_TEST_SUITE_P(, LargestFramebuffer, testing::Values(0u, 1u, 2u));

} // namespace

} // namespace Vostrel::libimagedecoder
