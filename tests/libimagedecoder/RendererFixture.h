#pragma once

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

using model::KernelRule;
using model::ModelChroma;
using model::ModelRectangle;
using tests::GuardedBuffer;
using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory;

inline constexpr uint32_t Untouched = 0x01020304;
inline constexpr uint8_t UntouchedSample = 0xC7;

inline size_t Size(int value) {
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

    /// One plane framebuffer after drawing: whole macroblocks, written from its first sample and
    /// cut at its size. In whole-frame mode the rectangle's position moves the source.
    std::vector<uint8_t> ExpectedPlane(const Source& source, const std::vector<uint8_t>& plane,
                                       bool luma) const {
        const int divX = luma ? 1 : Chroma().divX;
        const int divY = luma ? 1 : Chroma().divY;
        const size_t memory = Size(m_iWidth / divX) * Size(m_iHeight / divY);
        const int targetWidth = m_bRelative ? source.area.width / divX : m_iWidth / divX;
        const size_t sourceStride = luma ? source.lumaStride : source.chromaStride;
        size_t offset = 0;
        if (!m_bRelative)
            offset = (Size(source.area.x) + Size(source.area.y) * Size(m_iWidth)) / (luma ? 1 : 2);
        std::vector<uint8_t> samples(memory, UntouchedSample);
        const int rows = (source.area.height + divY - 1) / divY;
        const int columns = std::min(targetWidth, model::RoundUpToBlock(source.area.width) / divX);
        // The decoder's planes hold the screen in whole macroblocks.
        const size_t readable =
            std::max(Size(model::RoundUpToBlock(m_iWidth) / divX), sourceStride) *
            Size(model::RoundUpToBlock(m_iHeight));
        for (int row = 0; row < rows; ++row) {
            if (!m_bRelative && offset + Size(row) * sourceStride + Size(columns) > readable)
                break;
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

} // namespace Vostrel::libimagedecoder
