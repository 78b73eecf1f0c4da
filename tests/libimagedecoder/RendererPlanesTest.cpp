#include "tests/libimagedecoder/RendererFixture.h"

// Drawing into three plane framebuffers.

namespace Vostrel::libimagedecoder {

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

} // namespace Vostrel::libimagedecoder
