#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/model/ModelColour.h"
#include "tests/model/ModelUpdate.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using model::ModelRectangle;
using tests::GuardedBuffer;

constexpr uint32_t Untouched = 0x01020304;

struct Depths {
    unsigned char luma;
    unsigned char chroma;
};
constexpr Depths AllDepths[] = {{2, 3}, {2, 4}, {3, 3}, {3, 4}, {4, 3},
                                {4, 4}, {5, 4}, {5, 5}, {6, 4}, {6, 5}};

size_t Size(int value) {
    return static_cast<size_t>(value);
}

std::string TableFailure(unsigned char luma, unsigned char chroma) {
    try {
        ImageDecoderRenderer::GetQuantizedLookupTable(luma, chroma);
        return "none";
    } catch (const ImageDecoderException& exception) {
        return exception.what();
    }
}

/// Draws random levels in one subsampling.
class QuantizedColour : public testing::TestWithParam<unsigned> {
protected:
    model::ModelChroma Chroma() const { return model::ChromaOf(GetParam()); }

    void UseFramebuffer(int width, int height, bool relative) {
        m_iWidth = width;
        m_iHeight = height;
        m_bRelative = relative;
        m_pArgb = std::make_unique<GuardedBuffer<uint32_t>>(Size(width * height));
        std::fill(m_pArgb->begin(), m_pArgb->end(), Untouched);
        m_Renderer.SetFramebufferSize(static_cast<unsigned short>(width),
                                      static_cast<unsigned short>(height), relative);
        m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_pArgb->Data()));
    }

    /// Random levels of the depths for a rectangle, and a random skip mask.
    void Fill(const ModelRectangle& area, Depths depths, int extraStride = 0) {
        m_Area = area;
        m_uiLumaStride = Size(model::RoundUpToBlock(area.width) + 2 * extraStride);
        m_uiChromaStride = m_uiLumaStride / Size(Chroma().divX);
        const size_t rows = Size(model::RoundUpToBlock(area.height));
        m_Luma.resize(m_uiLumaStride * rows);
        m_Chroma.resize(m_uiChromaStride * rows);
        for (auto& level : m_Luma)
            level = static_cast<unsigned char>(m_Random.Below(1u << depths.luma));
        for (auto& value : m_Chroma)
            value = static_cast<unsigned short>(m_Random.Below(1u << 2 * depths.chroma));
        m_uiMaskColumns = (Size(area.width) + 15) / 16;
        const size_t entries = m_uiMaskColumns * ((Size(area.height) + 15) / 16);
        m_pMask = std::make_unique<bool[]>(entries + 1);
        std::generate_n(m_pMask.get(), entries, [&] { return m_Random.OneIn(3); });
    }

    void Draw(Depths depths) {
        using Function = decltype(&ImageDecoderRenderer::DrawDataYCbCr420Quantized);
        constexpr Function Functions[] = {&ImageDecoderRenderer::DrawDataYCbCr420Quantized,
                                          &ImageDecoderRenderer::DrawDataYCbCr422Quantized,
                                          &ImageDecoderRenderer::DrawDataYCbCr444Quantized};
        const auto number = [](int value) { return static_cast<unsigned short>(value); };
        (m_Renderer.*Functions[GetParam()])(depths.luma, depths.chroma, number(m_Area.x),
                                            number(m_Area.y), number(m_Area.width),
                                            number(m_Area.height), m_uiLumaStride, m_uiChromaStride,
                                            m_Luma.data(), m_Chroma.data(), m_pMask.get());
    }

    bool Skips(int column, int row) const {
        return m_pMask[Size(row / 16) * m_uiMaskColumns + Size(column / 16)];
    }

    std::vector<uint32_t> Expected(Depths depths, int contrast = 0) const {
        std::vector<uint32_t> pixels(Size(m_iWidth * m_iHeight), Untouched);
        const auto [divX, divY] = Chroma();
        for (int row = 0; row < m_Area.height / divY * divY; ++row) {
            for (int column = 0; column < m_Area.width / divX * divX; ++column) {
                const int x = m_bRelative ? column : m_Area.x + column;
                const int y = m_bRelative ? row : m_Area.y + row;
                if ((!m_bRelative && (x >= m_iWidth || y >= m_iHeight)) || Skips(column, row))
                    continue;
                const int64_t luma = model::StretchContrast(
                    m_Luma[Size(row) * m_uiLumaStride + Size(column)], contrast, depths.luma);
                const int64_t chroma =
                    m_Chroma[Size(row / divY) * m_uiChromaStride + Size(column / divX)];
                pixels[Size(y * (m_bRelative ? m_Area.width : m_iWidth) + x)] =
                    model::ReducedDepthToArgb(luma, chroma, depths.luma, depths.chroma);
            }
        }
        return pixels;
    }

    void ExpectPixels(const std::vector<uint32_t>& expected) {
        for (size_t i = 0; i < expected.size(); ++i)
            ASSERT_EQ((*m_pArgb)[i], expected[i])
                << "pixel " << i << " of " << m_iWidth << "x" << m_iHeight << ", rectangle "
                << m_Area.x << "," << m_Area.y << " " << m_Area.width << "x" << m_Area.height;
        EXPECT_TRUE(m_pArgb->GuardsIntact());
    }

    void DrawAndExpect(Depths depths, int contrast = 0) {
        const std::vector<uint32_t> expected = Expected(depths, contrast);
        Draw(depths);
        ExpectPixels(expected);
    }

    tests::Random m_Random;
    tests::RecordingLogger m_Logger;
    ImageDecoderRenderer m_Renderer{&m_Logger};
    std::unique_ptr<GuardedBuffer<uint32_t>> m_pArgb;
    int m_iWidth = 0;
    int m_iHeight = 0;
    bool m_bRelative = false;
    ModelRectangle m_Area{};
    size_t m_uiLumaStride = 0;
    size_t m_uiChromaStride = 0;
    size_t m_uiMaskColumns = 0;
    std::vector<unsigned char> m_Luma;
    std::vector<unsigned short> m_Chroma;
    std::unique_ptr<bool[]> m_pMask;
};

TEST(QuantizedTables, EveryEntryOfAllTenIsThePortableColourOfItsLevels) {
    tests::RecordingLogger logger;
    const ImageDecoderRenderer renderer(&logger);
    for (const Depths depths : AllDepths) {
        const unsigned int* const table =
            ImageDecoderRenderer::GetQuantizedLookupTable(depths.luma, depths.chroma);
        const int chromaBits = 2 * depths.chroma;
        for (int index = 0; index < 1 << (depths.luma + chromaBits); ++index)
            ASSERT_EQ(table[index], model::ReducedDepthToArgb(index >> chromaBits,
                                                              index & ((1 << chromaBits) - 1),
                                                              depths.luma, depths.chroma))
                << int{depths.luma} << int{depths.chroma} << " " << index;
    }
}

TEST(QuantizedTables, WhiteAndBlackOfTable444) {
    tests::RecordingLogger logger;
    const ImageDecoderRenderer renderer(&logger);
    const unsigned int* const table = ImageDecoderRenderer::GetQuantizedLookupTable(4, 4);
    EXPECT_EQ(table[15 << 8], 0xFFFFFFFFu);
    EXPECT_EQ(table[0], 0xFF000000u);
}

TEST(QuantizedTables, FiveAndSixBitLumaStopShortOfWhite) {
    tests::RecordingLogger logger;
    const ImageDecoderRenderer renderer(&logger);
    EXPECT_EQ(ImageDecoderRenderer::GetQuantizedLookupTable(5, 4)[31 << 8], 0xFFF8F8F8u);
    EXPECT_EQ(ImageDecoderRenderer::GetQuantizedLookupTable(6, 5)[63 << 10], 0xFFFCFCFCu);
    EXPECT_EQ(ImageDecoderRenderer::GetQuantizedLookupTable(2, 3)[3 << 6], 0xFFFFFFFFu);
}

TEST(QuantizedTables, TheSecondMostNegativeChromaLevelIsOne) {
    tests::RecordingLogger logger;
    const ImageDecoderRenderer renderer(&logger);
    // White less a Cb of 1: blue is 255 + (1814 * -127 + 512 >> 10) = 30, green 255 + 44 clamped.
    EXPECT_EQ(ImageDecoderRenderer::GetQuantizedLookupTable(2, 3)[3 << 6 | 5 << 3], 0xFFFFFF1Eu);
    EXPECT_EQ(ImageDecoderRenderer::GetQuantizedLookupTable(4, 4)[15 << 8 | 9 << 4], 0xFFFFFF1Eu);
    // 248 less a Cb of 1: 248 - 225 = 23, green 248 + 44 clamped.
    EXPECT_EQ(ImageDecoderRenderer::GetQuantizedLookupTable(5, 5)[31 << 10 | 17 << 5], 0xFFF8FF17u);
}

TEST(QuantizedTables, ExactlyTenPairsOfDepthsHaveATable) {
    for (int luma = 0; luma < 256; ++luma) {
        for (int chroma = 0; chroma < 256; ++chroma) {
            const bool known = std::ranges::any_of(AllDepths, [&](Depths depths) {
                return depths.luma == luma && depths.chroma == chroma;
            });
            const std::string expected =
                known                  ? "none"
                : luma < 2 || luma > 6 ? "Invalid uiYValueSizeBits given to DrawDataYCbCrQuantized"
                                       : "Invalid uiCValueSizeBits given to DrawDataYCbCrQuantized";
            ASSERT_EQ(
                TableFailure(static_cast<unsigned char>(luma), static_cast<unsigned char>(chroma)),
                expected)
                << luma << ", " << chroma;
        }
    }
}

TEST(QuantizedTables, AreOfDifferentMemory) {
    std::vector<const unsigned int*> tables;
    for (const Depths depths : AllDepths)
        tables.push_back(ImageDecoderRenderer::GetQuantizedLookupTable(depths.luma, depths.chroma));
    std::ranges::sort(tables);
    EXPECT_EQ(std::ranges::adjacent_find(tables), tables.end());
}

TEST(QuantizedTables, ATableIsFilledInOrderOfLumaCbAndCrLevels) {
    constexpr unsigned char Luma[4] = {10, 20, 30, 40};
    constexpr unsigned char Levels[8] = {128, 100, 90, 80, 150, 160, 170, 180};
    std::vector<unsigned int> table(256);
    tests::RecordingLogger logger;
    const ImageDecoderRenderer renderer(&logger);
    ImageDecoderRenderer::FillQuantizedTransLut(2, Luma, 3, Levels, table.data());
    for (size_t i = 0; i < 256; ++i)
        EXPECT_EQ(table[i], model::ToArgb(Luma[i / 64], Levels[i / 8 % 8], Levels[i % 8],
                                          model::KernelRule::Portable));
}

TEST_P(QuantizedColour, EveryPairOfDepthsIsDrawnAtItsPosition) {
    for (const Depths depths : AllDepths) {
        for (const bool relative : {false, true}) {
            UseFramebuffer(80, 64, relative);
            Fill({16, 16, 48, 32}, depths, 5);
            DrawAndExpect(depths);
        }
    }
}

TEST_P(QuantizedColour, RectanglesOfAnySizeAndPlaceStayInTheFramebuffer) {
    for (int run = 0; run < 300; ++run) {
        UseFramebuffer(m_Random.Between(1, 70), m_Random.Between(1, 70), false);
        Fill({m_Random.Between(0, 40), m_Random.Between(0, 40), m_Random.Between(0, 66),
              m_Random.Between(0, 66)},
             {4, 4}, m_Random.Between(0, 5));
        DrawAndExpect({4, 4});
        if (HasFatalFailure())
            return;
    }
}

TEST_P(QuantizedColour, AScreenWithOddSidesIsFilledToItsLastPixel) {
    UseFramebuffer(1366, 769, false);
    Fill({0, 0, 1376, 784}, {6, 5});
    DrawAndExpect({6, 5});
}

TEST_P(QuantizedColour, RectanglesOutsideTheFramebufferDrawNothing) {
    for (const ModelRectangle& area :
         {ModelRectangle{32, 0, 16, 16}, {0, 32, 16, 16}, {65535, 65535, 32, 32}}) {
        UseFramebuffer(32, 32, false);
        Fill(area, {4, 4});
        Draw({4, 4});
        ExpectPixels(std::vector<uint32_t>(1024, Untouched));
    }
}

TEST_P(QuantizedColour, ContrastStretchesTheLevelsInPlace) {
    for (const Depths depths : AllDepths) {
        for (const int contrast : {3, 16, 64, 100}) {
            m_Renderer.SetContrastEnhance(contrast);
            UseFramebuffer(64, 48, false);
            Fill({0, 0, 64, 48}, depths);
            std::vector<unsigned char> stretched = m_Luma;
            for (int row = 0; row < 48; ++row)
                for (int column = 0; column < 64; ++column)
                    if (!Skips(column, row)) {
                        unsigned char& level = stretched[Size(row * 64 + column)];
                        level = static_cast<unsigned char>(
                            model::StretchContrast(level, contrast, depths.luma));
                    }
            DrawAndExpect(depths, contrast);
            EXPECT_EQ(m_Luma, stretched);
        }
    }
}

TEST_P(QuantizedColour, AnUnknownDepthDrawsNothingButHasStretchedTheLuma) {
    m_Renderer.SetContrastEnhance(100);
    UseFramebuffer(32, 32, false);
    Fill({0, 0, 32, 32}, {6, 3});
    std::fill_n(m_pMask.get(), 4, false);
    std::ranges::fill(m_Luma, static_cast<unsigned char>(60));
    EXPECT_THROW(Draw({6, 3}), ImageDecoderException);
    ExpectPixels(std::vector<uint32_t>(1024, Untouched));
    EXPECT_EQ(std::ranges::count(m_Luma, 63), 1024);
}

TEST_P(QuantizedColour, WithoutAnArgbFramebufferUnknownDepthsStillThrow) {
    UseFramebuffer(32, 32, false);
    m_Renderer.SetFramebufferArgb(nullptr);
    Fill({0, 0, 32, 32}, {4, 4});
    EXPECT_NO_THROW(Draw({4, 4}));
    EXPECT_THROW(Draw({7, 4}), ImageDecoderException);
    ExpectPixels(std::vector<uint32_t>(1024, Untouched));
}

TEST_P(QuantizedColour, HeightOrWidthOneDrawsOnlyWhereChromaIsFullThatWay) {
    m_Renderer.SetContrastEnhance(100);
    for (const ModelRectangle& area : {ModelRectangle{0, 0, 16, 1}, {0, 0, 1, 16}, {3, 3, 1, 1}}) {
        UseFramebuffer(32, 32, false);
        Fill(area, {4, 4});
        m_pMask[0] = false;
        std::ranges::fill(m_Luma, static_cast<unsigned char>(12));
        const bool drawn = area.width >= Chroma().divX && area.height >= Chroma().divY;
        DrawAndExpect({4, 4}, 100);
        EXPECT_EQ(std::count(m_pArgb->begin(), m_pArgb->end(), Untouched) < 1024, drawn);
        EXPECT_EQ(m_Luma[0], 15) << "the levels are stretched all the same";
    }
}

TEST_P(QuantizedColour, PostProcessingDoesNotTouchReducedDepth) {
    m_Renderer.SetClientPostprocessingEnabled(true);
    UseFramebuffer(64, 48, false);
    Fill({0, 0, 64, 48}, {3, 3});
    DrawAndExpect({3, 3});
}

TEST_P(QuantizedColour, LeftoversOfDeeperSamplesStayInsideTheTable) {
    // What skipped blocks still hold of an earlier update, and what they would lead to if drawn.
    for (const Depths depths : AllDepths) {
        UseFramebuffer(48, 32, false);
        Fill({0, 0, 48, 32}, depths);
        std::ranges::generate(m_Luma, [&] { return m_Random.Byte(); });
        std::ranges::generate(m_Chroma,
                              [&] { return static_cast<unsigned short>(m_Random.Bits()); });
        Draw(depths);
        for (int row = 0; row < 32; ++row) {
            for (int column = 0; column < 48; ++column) {
                const uint32_t pixel = (*m_pArgb)[Size(row * 48 + column)];
                const unsigned int* const table =
                    ImageDecoderRenderer::GetQuantizedLookupTable(depths.luma, depths.chroma);
                const size_t entries = size_t{1} << (depths.luma + 2 * depths.chroma);
                if (Skips(column, row)) {
                    ASSERT_EQ(pixel, Untouched);
                } else {
                    ASSERT_NE(std::find(table, table + entries, pixel), table + entries);
                }
            }
        }
        EXPECT_TRUE(m_pArgb->GuardsIntact());
    }
}

TEST_P(QuantizedColour, ContrastLeavesLeftoversInSkippedBlocksAlone) {
    m_Renderer.SetContrastEnhance(100);
    UseFramebuffer(48, 32, false);
    Fill({0, 0, 48, 32}, {2, 3});
    std::fill_n(m_pMask.get(), 6, true);
    std::ranges::fill(m_Luma, static_cast<unsigned char>(63));
    Draw({2, 3});
    EXPECT_EQ(std::ranges::count(m_Luma, 63), 48 * 32);
    ExpectPixels(std::vector<uint32_t>(48 * 32, Untouched));
}

std::string SubsamplingName(const testing::TestParamInfo<unsigned>& chroma) {
    constexpr const char* Names[] = {"In420", "In422", "In444"};
    return Names[chroma.param];
}

INSTANTIATE_TEST_SUITE_P(, QuantizedColour, testing::Values(0u, 1u, 2u), SubsamplingName);

} // namespace

} // namespace Vostrel::libimagedecoder
