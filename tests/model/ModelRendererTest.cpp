#include "tests/model/ModelRenderer.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

/// A mask that codes these blocks, given by their top-left pixels.
ModelMask MaskOf(const ModelRectangle& area, const std::vector<std::pair<int, int>>& coded) {
    ModelMask mask(area);
    for (const auto& [left, top] : coded)
        mask.MarkCoded(left, top);
    return mask;
}

/// Planes of one grey.
ModelPlanes GreyPlanes(int width, int height) {
    ModelPlanes planes;
    planes.Clear(width, height);
    for (ModelPlane* plane : {&planes.y, &planes.cb, &planes.cr})
        for (int i = 0; i < RoundUpToBlock(width) * RoundUpToBlock(height); ++i)
            plane->Set(static_cast<size_t>(i), 128);
    return planes;
}

/// The pixels of an ARGB framebuffer that are grey, row by row as text.
std::vector<std::string> Drawn(const ModelRenderer& renderer, size_t width) {
    const std::vector<uint8_t> memory = renderer.Memory();
    std::vector<std::string> rows;
    for (size_t i = 0; i < memory.size() / 4; ++i) {
        if (i % width == 0)
            rows.emplace_back();
        const bool grey = memory[4 * i] == 0x80 && memory[4 * i + 3] == 0xFF;
        rows.back() += grey ? '#' : '.';
    }
    return rows;
}

TEST(ModelRenderer, SkippedBlocksStayUntouched) {
    ModelRenderer renderer(ChromaOf(0), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Argb, 32, 16);
    const ModelRectangle area{0, 0, 32, 16};
    ModelPlanes planes = GreyPlanes(32, 16);
    renderer.DrawFullDepth(area, MaskOf(area, {{16, 0}}), planes);
    const std::string row = std::string(16, '.') + std::string(16, '#');
    EXPECT_EQ(Drawn(renderer, 32), std::vector<std::string>(16, row));
}

TEST(ModelRenderer, DrawingEndsAtTheFramebuffersEdge) {
    for (const unsigned chroma : {0u, 1u, 2u}) {
        ModelRenderer renderer(ChromaOf(chroma), KernelRule::Portable);
        renderer.SetFramebuffer(ModelSink::Argb, 19, 3);
        const ModelRectangle area{0, 0, 32, 16};
        ModelPlanes planes = GreyPlanes(32, 16);
        renderer.DrawFullDepth(area, MaskOf(area, {{0, 0}, {16, 0}}), planes);
        EXPECT_EQ(Drawn(renderer, 19), std::vector<std::string>(3, std::string(19, '#')));
    }
}

TEST(ModelRenderer, ARectangleBehindTheEdgeDrawsNothing) {
    ModelRenderer renderer(ChromaOf(2), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Argb, 16, 16);
    const ModelRectangle area{16, 3, 16, 16};
    ModelPlanes planes = GreyPlanes(16, 16);
    renderer.DrawFullDepth(area, MaskOf(area, {{0, 0}}), planes);
    EXPECT_EQ(Drawn(renderer, 16), std::vector<std::string>(16, std::string(16, '.')));
}

TEST(ModelRenderer, HalfAChromaGroupOfTheRectangleIsNotDrawn) {
    ModelRenderer renderer(ChromaOf(0), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Argb, 4, 4);
    const ModelRectangle area{0, 0, 3, 3};
    ModelPlanes planes = GreyPlanes(4, 4);
    renderer.DrawReducedDepth(area, MaskOf(area, {{0, 0}}), planes, 4, 4);
    const std::vector<uint8_t> memory = renderer.Memory();
    std::string alpha;
    for (size_t i = 3; i < memory.size(); i += 4)
        alpha += memory[i] == 0xFF ? '#' : '.';
    EXPECT_EQ(alpha, "##..##..........");
}

TEST(ModelRenderer, PlaneCopyMovesTheSource) {
    for (const unsigned chroma : {0u, 1u, 2u}) {
        ModelRenderer renderer(ChromaOf(chroma), KernelRule::Portable);
        renderer.SetFramebuffer(ModelSink::Planes, 32, 32);
        ModelPlanes planes;
        planes.Clear(32, 32);
        for (size_t i = 0; i < 1024; ++i)
            for (ModelPlane* plane : {&planes.y, &planes.cb, &planes.cr})
                plane->Set(i, static_cast<int64_t>(i % 251));
        const ModelRectangle area{4, 2, 16, 16};
        renderer.DrawFullDepth(area, MaskOf(area, {{0, 0}}), planes);
        const std::vector<uint8_t> memory = renderer.Memory();
        EXPECT_EQ(memory[0], 68);  // 4 + 2 * 32
        EXPECT_EQ(memory[32], 84); // a row of 16 further
        EXPECT_EQ(memory[16], 0);  // behind the rectangle
        EXPECT_EQ(memory[1024], 34);
        const size_t chromaRow = chroma == 2 ? 32 : 16;
        EXPECT_EQ(memory[1024 + chromaRow], chroma == 2 ? 50 : 42);
    }
}

/// Copies a 4:2:0 rectangle of one coded block, all samples 128, and gives how many bytes arrived.
std::array<long, 2> CopiedLumaAndChroma(int width, int height, const ModelRectangle& area) {
    ModelRenderer renderer(ChromaOf(0), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Planes, width, height);
    ModelPlanes planes = GreyPlanes(width, height);
    renderer.DrawFullDepth(area, MaskOf(area, {{0, 0}}), planes);
    const std::vector<uint8_t> memory = renderer.Memory();
    const auto chroma = memory.begin() + width * height;
    return {std::count(memory.begin(), chroma, 128), std::count(chroma, memory.end(), 128)};
}

TEST(ModelRenderer, PlaneCopyTakesWholeBlocksOfARow) {
    // 16 columns and 5 rows of luma, 8 columns and 3 rows of each chroma.
    EXPECT_EQ(CopiedLumaAndChroma(32, 32, {0, 0, 3, 5}), (std::array<long, 2>{80, 48}));
}

TEST(ModelRenderer, PlaneCopyTakesTheWholeBlockWhereverItStands) {
    EXPECT_EQ(CopiedLumaAndChroma(32, 32, {20, 22, 16, 16}), (std::array<long, 2>{256, 128}));
    EXPECT_EQ(CopiedLumaAndChroma(32, 32, {32, 0, 16, 16}), (std::array<long, 2>{256, 128}));
}

TEST(ModelRenderer, PlaneCopyIsCutAtTheTargetsSize) {
    // 9 columns and 7 rows of luma, 4 columns and 3 rows of each chroma.
    EXPECT_EQ(CopiedLumaAndChroma(9, 7, {0, 0, 16, 16}), (std::array<long, 2>{63, 24}));
}

TEST(ModelRenderer, PlaneCopyLeavesOutRowsThatTheSourceDoesNotHave) {
    // From sample 992 of 1024 on there are two rows of 16; of chroma, from 496 of 512 on, two of 8.
    EXPECT_EQ(CopiedLumaAndChroma(32, 32, {0, 31, 16, 16}), (std::array<long, 2>{32, 32}));
    EXPECT_EQ(CopiedLumaAndChroma(32, 32, {0, 64, 16, 16}), (std::array<long, 2>{0, 0}));
}

TEST(ModelRenderer, PlaneFramebuffersGetNoContrast) {
    ModelRenderer renderer(ChromaOf(2), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Planes, 16, 16);
    renderer.SetContrast(100);
    const ModelRectangle area{0, 0, 16, 16};
    ModelPlanes planes = GreyPlanes(16, 16);
    planes.y.Set(0, 20);
    renderer.DrawFullDepth(area, MaskOf(area, {{0, 0}}), planes);
    EXPECT_EQ(renderer.Memory()[0], 20);
}

TEST(ModelRenderer, ContrastStretchesCodedBlocksInPlace) {
    ModelRenderer renderer(ChromaOf(2), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Argb, 32, 16);
    renderer.SetContrast(100);
    const ModelRectangle area{0, 0, 32, 16};
    ModelPlanes planes = GreyPlanes(32, 16);
    planes.y.Set(0, 101);
    planes.y.Set(16, 101);
    renderer.DrawFullDepth(area, MaskOf(area, {{0, 0}}), planes);
    EXPECT_EQ(renderer.Memory()[0], 4);
    EXPECT_EQ(planes.y.At(0), 4);
    EXPECT_EQ(planes.y.At(16), 101);
}

TEST(ModelRenderer, ReducedDepthDrawsNoPlanes) {
    ModelRenderer renderer(ChromaOf(0), KernelRule::Portable);
    renderer.SetFramebuffer(ModelSink::Planes, 16, 16);
    const ModelRectangle area{0, 0, 16, 16};
    ModelPlanes planes = GreyPlanes(16, 16);
    renderer.DrawReducedDepth(area, MaskOf(area, {{0, 0}}), planes, 4, 4);
    EXPECT_EQ(renderer.Memory(), std::vector<uint8_t>(256 + 128, 0));
}

} // namespace

} // namespace Vostrel::model
