#include "tests/libimagedecoder/RendererFixture.h"

// Drawing into an ARGB framebuffer.

namespace Vostrel::libimagedecoder {

TEST_P(Renderer, WholeFrameArgbPutsTheRectangleAtItsPosition) {
    for (const ModelRectangle& area :
         {ModelRectangle{0, 0, 96, 64}, {16, 16, 48, 32}, {7, 3, 32, 16}, {80, 48, 16, 16}}) {
        UseArgb(96, 64, false);
        Source source(m_Random, Chroma(), area, 0, 0);
        DrawAndExpectArgb(source);
    }
}

TEST_P(Renderer, RectangleRelativeArgbPacksTheRectangleAtTheStart) {
    for (const ModelRectangle& area :
         {ModelRectangle{0, 0, 96, 64}, {16, 16, 48, 32}, {1000, 2000, 32, 16}}) {
        UseArgb(96, 64, true);
        Source source(m_Random, Chroma(), area, 0, 0);
        DrawAndExpectArgb(source);
    }
}

TEST_P(Renderer, RectangleRelativeArgbStaysInASmallerFramebuffer) {
    UseArgb(21, 19, true);
    Source source(m_Random, Chroma(), {0, 0, 32, 32}, 0, 0);
    DrawAndExpectArgb(source);
}

TEST_P(Renderer, StridesMayBeWiderThanTheRectangle) {
    UseArgb(96, 64, false);
    Source source(m_Random, Chroma(), {16, 16, 48, 32}, 9, 0);
    DrawAndExpectArgb(source);
}

TEST_P(Renderer, TheFramebuffersEdgesCutTheRectangle) {
    for (const auto& [width, height] : {std::pair(40, 24),
                                        {41, 25},
                                        {33, 17},
                                        {47, 31},
                                        {1, 1},
                                        {2, 3},
                                        {15, 16},
                                        {17, 50},
                                        {50, 17}}) {
        for (const int x : {0, 1, 16, 17, 32, 40}) {
            for (const int y : {0, 1, 15, 16, 24}) {
                UseArgb(width, height, false);
                Source source(m_Random, Chroma(), {x, y, 48, 32}, 0, 0);
                DrawAndExpectArgb(source);
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_P(Renderer, RectanglesOfAnySizeAreDrawnUpToTheirLastWholeChromaSample) {
    for (int run = 0; run < 300; ++run) {
        UseArgb(m_Random.Between(1, 70), m_Random.Between(1, 70), false);
        const ModelRectangle area{m_Random.Between(0, 40), m_Random.Between(0, 40),
                                  m_Random.Between(0, 66), m_Random.Between(0, 66)};
        Source source(m_Random, Chroma(), area, m_Random.Between(0, 5), 0);
        DrawAndExpectArgb(source);
        if (HasFatalFailure())
            return;
    }
}

TEST_P(Renderer, AScreenWithOddSidesIsFilledToItsLastPixel) {
    UseArgb(1366, 769, false);
    Source source(m_Random, Chroma(), {0, 0, 1376, 784}, 0, 0);
    DrawAndExpectArgb(source);
}

TEST_P(Renderer, WithPostProcessingOffTheOutputIsTheKernels) {
    using Function = decltype(&IYCbCr4xxToArgb32::Convert420);
    constexpr Function Functions[] = {&IYCbCr4xxToArgb32::Convert420,
                                      &IYCbCr4xxToArgb32::Convert422,
                                      &IYCbCr4xxToArgb32::Convert444};
    UseArgb(96, 64, false);
    Source source(m_Random, Chroma(), {16, 16, 64, 48}, 0, 0);
    std::vector<uint32_t> expected(96 * 64, Untouched);
    (*m_pConverter.*Functions[Subsampling()])(
        &expected[16 * 96 + 16], source.y.data(), source.cb.data(), source.cr.data(), 64, 48, 96,
        source.lumaStride, source.chromaStride, source.mask.get());
    Draw(source);
    ExpectArgb(expected, source.area);
}

TEST_P(Renderer, PostProcessingPullsEveryPixelBackToItsLuma) {
    m_Renderer.SetClientPostprocessingEnabled(true);
    for (const bool relative : {false, true}) {
        for (const int contrast : {0, 35, 100}) {
            m_Renderer.SetContrastEnhance(contrast);
            UseArgb(101, 75, relative);
            Source source(m_Random, Chroma(), {17, 9, 96, 80}, 3, 0);
            DrawAndExpectArgb(source, contrast, true);
        }
    }
}

TEST_P(Renderer, PostProcessingLeavesADifferenceOfOneAlone) {
    m_Renderer.SetClientPostprocessingEnabled(true);
    UseArgb(256, 256, false);
    Source source(m_Random, Chroma(), {0, 0, 256, 256}, 0, 0);
    const std::vector<uint32_t> converted = ExpectedArgb(source, 0, false);
    Draw(source);
    size_t alike = 0;
    for (size_t i = 0; i < converted.size(); ++i) {
        const uint32_t pixel = converted[i];
        const uint32_t brightness =
            (77 * (pixel >> 16 & 0xFF) + 150 * (pixel >> 8 & 0xFF) + 29 * (pixel & 0xFF)) / 256;
        if (pixel == Untouched || brightness + 1 < source.y[i] || brightness > source.y[i] + 1u)
            continue;
        ++alike;
        ASSERT_EQ((*m_pArgb)[i], pixel) << i;
    }
    EXPECT_GT(alike, 1000u);
}

TEST_P(Renderer, PostProcessingCanBeSwitchedOffAgain) {
    m_Renderer.SetClientPostprocessingEnabled(true);
    m_Renderer.SetClientPostprocessingEnabled(false);
    UseArgb(32, 32, false);
    Source source(m_Random, Chroma(), {0, 0, 32, 32}, 0, 0);
    DrawAndExpectArgb(source);
}

TEST_P(Renderer, ContrastStretchesTheLumaPlaneInPlaceBeforeTheConversion) {
    m_Renderer.SetContrastEnhance(60);
    UseArgb(64, 48, false);
    Source source(m_Random, Chroma(), {0, 0, 64, 48}, 0, 0);
    std::vector<uint8_t> stretched = source.y;
    for (int row = 0; row < 48; ++row)
        for (int column = 0; column < 64; ++column)
            if (!source.Skips(column, row)) {
                uint8_t& sample = stretched[Size(row * 64 + column)];
                sample = static_cast<uint8_t>(model::StretchContrast(sample, 60, 8));
            }
    DrawAndExpectArgb(source, 60);
    EXPECT_EQ(source.y, stretched);
}

} // namespace Vostrel::libimagedecoder
