#include "tests/libimagedecoder/RendererFixture.h"

// Which framebuffer is drawn into, if any, and by which kernel.

namespace Vostrel::libimagedecoder {

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
    const Source untouched(m_Random, Chroma(), {0, 0, 16, 16}, 0, 0);
    source.y = untouched.y;
    source.cb = untouched.cb;
    source.cr = untouched.cr;
    source.mask[0] = false;
    m_Renderer.SetContrastEnhance(100);
    Draw(source);
    EXPECT_EQ(source.y, untouched.y);
    EXPECT_EQ(source.cb, untouched.cb);
    EXPECT_EQ(source.cr, untouched.cr);
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

namespace {

std::string VariantName(const testing::TestParamInfo<Renderer::ParamType>& variant) {
    constexpr const char* Names[] = {"420", "422", "444"};
    const bool portable = std::get<1>(variant.param) == KernelRule::Portable;
    return std::string(Names[std::get<0>(variant.param)]) + (portable ? "Portable" : "Accelerated");
}

} // namespace

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

TEST(RendererRows, AreDrawnApartIntoAnArgbFramebufferOfTheWholeFrameOnly) {
    tests::RecordingLogger logger;
    const UpdateRectangle rectangle{0, 65519, 64, 16};
    for (const bool accelerate : {false, true}) {
        ImageDecoderRenderer renderer(
            YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(&logger, accelerate));
        unsigned char memory[64] = {};
        renderer.SetFramebufferSize(4, 4, false);
        EXPECT_FALSE(renderer.CanDrawRowsApart(rectangle)) << "there is no framebuffer";
        renderer.SetFramebufferArgb(memory);
        // The portable conversion works in lines of its own.
        EXPECT_EQ(renderer.CanDrawRowsApart(rectangle), accelerate);
        EXPECT_FALSE(renderer.CanDrawRowsApart({0, 65520, 64, 16})) << "the last row is too far";
        EXPECT_FALSE(renderer.CanDrawRowsApart({0, 65519, 64, 17}));
        renderer.SetFramebufferSize(4, 4, true);
        EXPECT_FALSE(renderer.CanDrawRowsApart(rectangle)) << "rows would all start at the corner";
        renderer.SetFramebufferSize(4, 4, false);
        renderer.SetFramebufferArgb(nullptr);
        renderer.SetFramebufferY(memory);
        renderer.SetFramebufferCb(memory);
        renderer.SetFramebufferCr(memory);
        EXPECT_FALSE(renderer.CanDrawRowsApart(rectangle)) << "planes are placed otherwise";
    }
}

} // namespace Vostrel::libimagedecoder
