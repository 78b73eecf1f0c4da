#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/model/ModelColour.h"
#include "tests/model/ModelUpdate.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using model::KernelRule;
using model::ModelChroma;
using model::ModelRectangle;
using tests::GuardedBuffer;
using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

constexpr uint32_t Untouched = 0x01020304;
constexpr uint8_t UntouchedSample = 0xC7;

size_t Size(int value) {
    return static_cast<size_t>(value);
}

/// Decoded planes of a rectangle, with a skip mask.
struct Source {
    Source(tests::Random& random, ModelChroma divisors, const ModelRectangle& rectangle,
           int extraStride, int extraSamples)
        : chroma(divisors), area(rectangle),
          lumaStride(Size(model::RoundUpToBlock(area.width) + 2 * extraStride)),
          chromaStride(lumaStride / Size(chroma.divX)), maskColumns((Size(area.width) + 15) / 16),
          mask(std::make_unique<bool[]>(maskColumns * ((Size(area.height) + 15) / 16) + 1)) {
        const size_t rows = Size(model::RoundUpToBlock(area.height));
        y.resize(lumaStride * rows + Size(extraSamples));
        cb.resize(chromaStride * rows + Size(extraSamples));
        cr.resize(cb.size());
        for (auto* plane : {&y, &cb, &cr})
            random.FillBytes(*plane);
        std::generate_n(mask.get(), maskColumns * ((Size(area.height) + 15) / 16),
                        [&] { return random.OneIn(3); });
    }

    bool Skips(int column, int row) const {
        return mask[Size(row / 16) * maskColumns + Size(column / 16)];
    }

    ModelChroma chroma;
    ModelRectangle area;
    size_t lumaStride;
    size_t chromaStride;
    size_t maskColumns;
    std::unique_ptr<bool[]> mask;
    std::vector<uint8_t> y, cb, cr;
};

/// A renderer with a kernel of a rule, drawing in a subsampling.
class Renderer : public testing::TestWithParam<std::tuple<unsigned, KernelRule>> {
protected:
    unsigned Subsampling() const { return std::get<0>(GetParam()); }
    ModelChroma Chroma() const { return model::ChromaOf(Subsampling()); }
    KernelRule Rule() const { return std::get<1>(GetParam()); }

    void SetSize(int width, int height, bool relative) {
        m_iWidth = width;
        m_iHeight = height;
        m_bRelative = relative;
        m_Renderer.SetFramebufferSize(static_cast<unsigned short>(width),
                                      static_cast<unsigned short>(height), relative);
    }

    void UseArgb(int width, int height, bool relative) {
        SetSize(width, height, relative);
        m_pArgb = std::make_unique<GuardedBuffer<uint32_t>>(Size(width * height));
        std::fill(m_pArgb->begin(), m_pArgb->end(), Untouched);
        m_Renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(m_pArgb->Data()));
    }

    void UsePlanes(int width, int height, bool relative) {
        SetSize(width, height, relative);
        m_Planes.clear();
        m_Planes.emplace_back(Size(width * height));
        for (int i = 0; i < 2; ++i)
            m_Planes.emplace_back(Size(width / Chroma().divX) * Size(height / Chroma().divY));
        for (auto& plane : m_Planes)
            std::fill(plane.begin(), plane.end(), UntouchedSample);
        m_Renderer.SetFramebufferArgb(nullptr);
        m_Renderer.SetFramebufferY(m_Planes[0].Data());
        m_Renderer.SetFramebufferCb(m_Planes[1].Data());
        m_Renderer.SetFramebufferCr(m_Planes[2].Data());
    }

    void Draw(Source& source) {
        using Function = decltype(&ImageDecoderRenderer::DrawDataYCbCr420);
        constexpr Function Functions[] = {&ImageDecoderRenderer::DrawDataYCbCr420,
                                          &ImageDecoderRenderer::DrawDataYCbCr422,
                                          &ImageDecoderRenderer::DrawDataYCbCr444};
        const auto number = [](int value) { return static_cast<unsigned short>(value); };
        (m_Renderer.*Functions[Subsampling()])(
            number(source.area.x), number(source.area.y), number(source.area.width),
            number(source.area.height), source.lumaStride, source.chromaStride, source.y.data(),
            source.cb.data(), source.cr.data(), source.mask.get());
    }

    /// Where a pixel of the rectangle goes in the ARGB framebuffer, if anywhere.
    std::optional<size_t> PixelIndex(const ModelRectangle& area, int column, int row) const {
        if (m_bRelative) {
            if ((row + 1) * area.width > m_iWidth * m_iHeight)
                return std::nullopt;
            return Size(row * area.width + column);
        }
        if (area.x + column >= m_iWidth || area.y + row >= m_iHeight)
            return std::nullopt;
        return Size((area.y + row) * m_iWidth + area.x + column);
    }

    /// What drawing makes of an untouched ARGB framebuffer, pixel by pixel.
    std::vector<uint32_t> ExpectedArgb(const Source& source, int contrast, bool adjust) const {
        std::vector<uint32_t> pixels(Size(m_iWidth * m_iHeight), Untouched);
        const ModelChroma chroma = Chroma();
        for (int row = 0; row < source.area.height / chroma.divY * chroma.divY; ++row) {
            for (int column = 0; column < source.area.width / chroma.divX * chroma.divX; ++column) {
                const std::optional<size_t> index = PixelIndex(source.area, column, row);
                if (!index || source.Skips(column, row))
                    continue;
                const int64_t luma = model::StretchContrast(
                    source.y[Size(row) * source.lumaStride + Size(column)], contrast, 8);
                const size_t sample =
                    Size(row / chroma.divY) * source.chromaStride + Size(column / chroma.divX);
                const uint32_t argb =
                    model::ToArgb(luma, source.cb[sample], source.cr[sample], Rule());
                pixels[*index] = adjust ? model::AdjustToLuma(argb, luma) : argb;
            }
        }
        return pixels;
    }

    void ExpectArgb(const std::vector<uint32_t>& expected, const ModelRectangle& area) {
        for (size_t i = 0; i < expected.size(); ++i)
            ASSERT_EQ((*m_pArgb)[i], expected[i])
                << "pixel " << i << " of " << m_iWidth << "x" << m_iHeight << ", rectangle "
                << area.x << "," << area.y << " " << area.width << "x" << area.height;
        EXPECT_TRUE(m_pArgb->GuardsIntact());
    }

    void DrawAndExpectArgb(Source& source, int contrast = 0, bool adjust = false) {
        const std::vector<uint32_t> expected = ExpectedArgb(source, contrast, adjust);
        Draw(source);
        ExpectArgb(expected, source.area);
    }

    /// One plane framebuffer after drawing: whole macroblocks, written from its first sample. In
    /// whole-frame mode the rectangle's position moves the source, and what lies outside the screen
    /// at that position is cut.
    std::vector<uint8_t> ExpectedPlane(const Source& source, const std::vector<uint8_t>& plane,
                                       bool luma) const {
        const int divX = luma ? 1 : Chroma().divX;
        const int divY = luma ? 1 : Chroma().divY;
        const size_t memory = Size(m_iWidth / divX) * Size(m_iHeight / divY);
        const int targetWidth = m_bRelative ? source.area.width / divX : m_iWidth / divX;
        const size_t sourceStride = luma ? source.lumaStride : source.chromaStride;
        int columns = targetWidth;
        int rows = source.area.height;
        size_t offset = 0;
        if (!m_bRelative) {
            columns = std::max(m_iWidth - source.area.x, 0) / divX;
            rows = std::max(m_iHeight - source.area.y, 0) / divY;
            offset = Size(source.area.x + source.area.y * m_iWidth) / (luma ? 1 : 2);
        }
        std::vector<uint8_t> samples(memory, UntouchedSample);
        rows = std::min(rows, (source.area.height + divY - 1) / divY);
        columns = std::min(columns, model::RoundUpToBlock(source.area.width) / divX);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const size_t index = Size(row * targetWidth + column);
                if (index < memory && !source.Skips(column * divX, row * divY))
                    samples[index] = plane[offset + Size(row) * sourceStride + Size(column)];
            }
        }
        return samples;
    }

    void ExpectPlanesUntouched() {
        for (auto& plane : m_Planes) {
            EXPECT_EQ(std::count(plane.begin(), plane.end(), UntouchedSample),
                      static_cast<std::ptrdiff_t>(plane.Count()));
            EXPECT_TRUE(plane.GuardsIntact());
        }
    }

    void DrawAndExpectPlanes(Source& source) {
        Draw(source);
        const std::vector<uint8_t>* planes[] = {&source.y, &source.cb, &source.cr};
        for (size_t i = 0; i < 3; ++i) {
            SCOPED_TRACE("plane " + std::to_string(i) + ", framebuffer " +
                         std::to_string(m_iWidth) + "x" + std::to_string(m_iHeight));
            const std::vector<uint8_t> expected = ExpectedPlane(source, *planes[i], i == 0);
            EXPECT_EQ(std::vector<uint8_t>(m_Planes[i].begin(), m_Planes[i].end()), expected);
            EXPECT_TRUE(m_Planes[i].GuardsIntact());
        }
    }

    tests::Random m_Random;
    tests::RecordingLogger m_Logger;
    std::shared_ptr<IYCbCr4xxToArgb32> m_pConverter =
        YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&m_Logger,
                                                        Rule() == KernelRule::Accelerated);
    ImageDecoderRenderer m_Renderer{m_pConverter};
    std::unique_ptr<GuardedBuffer<uint32_t>> m_pArgb;
    std::deque<GuardedBuffer<uint8_t>> m_Planes;
    int m_iWidth = 0;
    int m_iHeight = 0;
    bool m_bRelative = false;
};

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

TEST_P(Renderer, RectanglesOutsideTheFramebufferDrawNothing) {
    for (const ModelRectangle& area : {ModelRectangle{32, 0, 16, 16},
                                       {0, 32, 16, 16},
                                       {65535, 0, 16, 16},
                                       {0, 65535, 16, 16},
                                       {65535, 65535, 32, 32}}) {
        UseArgb(32, 32, false);
        Source source(m_Random, Chroma(), area, 0, 0);
        Draw(source);
        ExpectArgb(std::vector<uint32_t>(1024, Untouched), area);
        UsePlanes(32, 32, false);
        Draw(source);
        ExpectPlanesUntouched();
    }
}

TEST_P(Renderer, EmptyRectanglesAndFramebuffersDrawNothing) {
    for (const bool relative : {false, true}) {
        for (const ModelRectangle& area :
             {ModelRectangle{0, 0, 0, 0}, {0, 0, 16, 0}, {3, 3, 0, 16}}) {
            Source source(m_Random, Chroma(), area, 0, 0);
            UseArgb(32, 32, relative);
            m_Renderer.SetContrastEnhance(100);
            m_Renderer.SetClientPostprocessingEnabled(true);
            Draw(source);
            ExpectArgb(std::vector<uint32_t>(1024, Untouched), area);
            UsePlanes(32, 32, relative);
            Draw(source);
            ExpectPlanesUntouched();
        }
        Source source(m_Random, Chroma(), {0, 0, 16, 16}, 0, 0);
        UseArgb(0, 0, relative);
        Draw(source);
        EXPECT_TRUE(m_pArgb->GuardsIntact());
    }
}

TEST_P(Renderer, WithoutAnyFramebufferDrawingWritesNothing) {
    SetSize(16, 16, false);
    Source source(m_Random, Chroma(), {0, 0, 16, 16}, 0, 0);
    const std::vector<uint8_t> luma = source.y;
    m_Renderer.SetContrastEnhance(100);
    Draw(source);
    EXPECT_EQ(source.y, luma);
}

TEST_P(Renderer, TwoOfThreePlaneFramebuffersAreNone) {
    for (const auto setter :
         {&ImageDecoderRenderer::SetFramebufferY, &ImageDecoderRenderer::SetFramebufferCb,
          &ImageDecoderRenderer::SetFramebufferCr}) {
        UsePlanes(16, 16, false);
        (m_Renderer.*setter)(nullptr);
        Source source(m_Random, Chroma(), {0, 0, 16, 16}, 0, 0);
        Draw(source);
        ExpectPlanesUntouched();
    }
}

TEST_P(Renderer, AnArgbFramebufferTakesPrecedenceOverPlanes) {
    UsePlanes(32, 32, false);
    UseArgb(32, 32, false);
    Source source(m_Random, Chroma(), {0, 0, 32, 32}, 0, 0);
    DrawAndExpectArgb(source);
    EXPECT_EQ(std::count(m_Planes[0].begin(), m_Planes[0].end(), UntouchedSample), 1024);
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

TEST_P(Renderer, PlaneFramebuffersGetTheSamplesWithoutContrast) {
    m_Renderer.SetContrastEnhance(100);
    m_Renderer.SetClientPostprocessingEnabled(true);
    UsePlanes(96, 64, false);
    Source source(m_Random, Chroma(), {0, 0, 96, 64}, 4, 0);
    const std::vector<uint8_t> luma = source.y;
    DrawAndExpectPlanes(source);
    EXPECT_EQ(source.y, luma);
}

TEST_P(Renderer, RectangleRelativePlanesArePackedFromTheStart) {
    for (const ModelRectangle& area :
         {ModelRectangle{0, 0, 96, 64}, {16, 16, 48, 32}, {1000, 2000, 32, 16}}) {
        UsePlanes(96, 64, true);
        Source source(m_Random, Chroma(), area, 0, 0);
        DrawAndExpectPlanes(source);
    }
}

TEST_P(Renderer, RectangleRelativePlanesStayInTheirFramebuffers) {
    for (const auto& [width, height] : {std::pair(17, 31), {31, 17}, {21, 19}, {3, 3}, {33, 65}}) {
        for (const ModelRectangle& area :
             {ModelRectangle{0, 0, 32, 16}, {0, 0, 16, 32}, {0, 0, 32, 32}, {0, 0, 64, 32}}) {
            UsePlanes(width, height, true);
            Source source(m_Random, Chroma(), area, 0, 0);
            Draw(source);
            for (auto& plane : m_Planes)
                EXPECT_TRUE(plane.GuardsIntact())
                    << width << "x" << height << ", rectangle " << area.width << "x" << area.height;
        }
    }
}

TEST_P(Renderer, WholeFramePlanesMoveTheSourceAndNotTheDestination) {
    for (const ModelRectangle& area : {ModelRectangle{16, 0, 32, 32},
                                       {0, 16, 48, 32},
                                       {16, 16, 16, 16},
                                       {17, 3, 32, 16},
                                       {48, 48, 48, 16}}) {
        UsePlanes(96, 64, false);
        Source source(m_Random, Chroma(), area, 0, 96 * 64);
        DrawAndExpectPlanes(source);
    }
}

TEST_P(Renderer, PlanesOfAScreenWithOddSidesAreFilledToTheirLastSample) {
    UsePlanes(61, 35, false);
    Source source(m_Random, Chroma(), {0, 0, 64, 48}, 0, 0);
    DrawAndExpectPlanes(source);
}

TEST_P(Renderer, PlanesLackWhatOverhangsTheScreen) {
    for (const ModelRectangle& area :
         {ModelRectangle{48, 0, 16, 16}, {48, 32, 16, 16}, {16, 32, 48, 16}}) {
        UsePlanes(61, 35, false);
        Source source(m_Random, Chroma(), area, 0, 64 * 48);
        DrawAndExpectPlanes(source);
    }
}

TEST_P(Renderer, PlanesGetTheWholeMacroblocksOfANarrowRectangle) {
    UsePlanes(96, 64, false);
    Source source(m_Random, Chroma(), {0, 0, 40, 24}, 0, 0);
    DrawAndExpectPlanes(source);
}

std::string VariantName(const testing::TestParamInfo<Renderer::ParamType>& variant) {
    constexpr const char* Names[] = {"420", "422", "444"};
    const bool portable = std::get<1>(variant.param) == KernelRule::Portable;
    return std::string(Names[std::get<0>(variant.param)]) + (portable ? "Portable" : "Accelerated");
}

INSTANTIATE_TEST_SUITE_P(, Renderer,
                         testing::Combine(testing::Values(0u, 1u, 2u),
                                          testing::Values(KernelRule::Portable,
                                                          KernelRule::Accelerated)),
                         VariantName);

TEST(RendererCreation, ReportsTheAlignmentOfItsKernel) {
    tests::RecordingLogger logger;
    for (const bool accelerate : {false, true}) {
        const auto converter = YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, accelerate);
        EXPECT_EQ(ImageDecoderRenderer(converter).GetDataAlignmentBytes(),
                  converter->GetDataAlignmentBytes());
    }
}

TEST(RendererCreation, ChoosesTheFastestKernelAndAnnouncesIt) {
    tests::RecordingLogger logger;
    const ImageDecoderRenderer renderer(&logger);
    tests::RecordingLogger factoryLogger;
    const auto fastest = YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&factoryLogger, true);
    EXPECT_EQ(logger.m_vLines, factoryLogger.m_vLines);
    EXPECT_EQ(renderer.GetDataAlignmentBytes(), fastest->GetDataAlignmentBytes());
}

} // namespace

} // namespace Vostrel::libimagedecoder
