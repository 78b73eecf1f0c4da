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

TEST_P(Renderer, PlanesGetWholeMacroblocksWhereverTheRectangleStands) {
    for (const ModelRectangle& area :
         {ModelRectangle{48, 0, 16, 16}, {48, 32, 16, 16}, {16, 32, 48, 16}, {61, 35, 16, 16}}) {
        UsePlanes(61, 35, false);
        Source source(m_Random, Chroma(), area, 0, 64 * 48);
        DrawAndExpectPlanes(source);
    }
}

TEST_P(Renderer, PlanesOfAFullScreenGetAllRowsOfItsLastMacroblocks) {
    UsePlanes(1920, 1080, false);
    Source source(m_Random, Chroma(), {0, 1072, 1920, 16}, 0, 1920 * 1088);
    std::fill_n(source.mask.get(), 120, false);
    Draw(source);
    for (const size_t row : {size_t{0}, size_t{15}})
        EXPECT_TRUE(std::equal(source.y.begin() + static_cast<std::ptrdiff_t>((1072 + row) * 1920),
                               source.y.begin() + static_cast<std::ptrdiff_t>((1073 + row) * 1920),
                               m_Planes[0].begin() + static_cast<std::ptrdiff_t>(row * 1920)));
}

TEST_P(Renderer, PlanesOfANarrowLastColumnGetAllItsSamples) {
    UsePlanes(1366, 768, false);
    Source source(m_Random, Chroma(), {1360, 0, 16, 16}, 0, 1376 * 768);
    source.mask[0] = false;
    Draw(source);
    for (size_t column = 0; column < 16; ++column)
        EXPECT_EQ(m_Planes[0][column], source.y[1360 + column]);
}

TEST_P(Renderer, PlaneRowsBeyondTheDecodersPlanesAreLeftOut) {
    for (const ModelRectangle& area : {ModelRectangle{0, 63, 96, 16},
                                       {95, 63, 16, 16},
                                       {0, 200, 16, 16},
                                       {65535, 65535, 16, 16}}) {
        UsePlanes(96, 64, false);
        Source source(m_Random, Chroma(), {0, 0, 96, 64}, 0, 0);
        source.area = area;
        source.lumaStride = Size(area.width);
        source.chromaStride = source.lumaStride / Size(Chroma().divX);
        // The planes that a decoder has: no byte after them may be read.
        source.y.resize(96 * 64);
        source.cb.resize(source.y.size() / Size(Chroma().divX));
        source.cr.resize(source.cb.size());
        std::fill_n(source.mask.get(), 24, false);
        DrawAndExpectPlanes(source);
    }
}

TEST_P(Renderer, PlanesGetTheWholeMacroblocksOfANarrowRectangle) {
    UsePlanes(96, 64, false);
    Source source(m_Random, Chroma(), {0, 0, 40, 24}, 0, 0);
    DrawAndExpectPlanes(source);
}

} // namespace Vostrel::libimagedecoder
