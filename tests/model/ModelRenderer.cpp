#include "tests/model/ModelRenderer.h"

#include "tests/model/ModelColour.h"

#include <algorithm>

namespace Vostrel::model {

namespace {

size_t Index(int row, int stride, int column) {
    return static_cast<size_t>(row) * static_cast<size_t>(stride) + static_cast<size_t>(column);
}

/// One plane of a viewer that takes planes.
struct PlaneTarget {
    std::vector<uint8_t>& memory;
    int stride;
    int rows;
};

/// Where a plane copy reads: rows of this stride, moved on by an offset.
struct PlaneSource {
    const ModelPlane& plane;
    size_t samples;
    size_t offset;
    int stride;
};

/// Copies whole blocks of the rectangle's rows to the target's start, as far as the target goes. A
/// row that the source does not have to its end is left out.
void CopyPlane(const PlaneSource& source, const PlaneTarget& target, ModelChroma scale,
               const ModelRectangle& area, const ModelMask& mask) {
    const int columns = std::min(RoundUpToBlock(area.width) / scale.divX, target.stride);
    for (int row = 0; row * scale.divY < area.height && row < target.rows; ++row) {
        if (source.offset + Index(row, source.stride, columns) > source.samples)
            return;
        for (int column = 0; column < columns; ++column) {
            if (mask.Skips(column * scale.divX, row * scale.divY))
                continue;
            target.memory[Index(row, target.stride, column)] = static_cast<uint8_t>(
                source.plane.At(source.offset + Index(row, source.stride, column)));
        }
    }
}

} // namespace

void ModelRenderer::SetFramebuffer(ModelSink sink, int width, int height) {
    m_Sink = sink;
    m_iWidth = width;
    m_iHeight = height;
    const size_t pixels = Index(height, width, 0);
    const size_t chromaSamples = Index(height / m_Chroma.divY, width / m_Chroma.divX, 0);
    m_vuiArgb.assign(sink == ModelSink::Argb ? pixels : 0, 0);
    m_vuiY.assign(sink == ModelSink::Planes ? pixels : 0, 0);
    m_vuiCb.assign(sink == ModelSink::Planes ? chromaSamples : 0, 0);
    m_vuiCr.assign(sink == ModelSink::Planes ? chromaSamples : 0, 0);
}

void ModelRenderer::SetContrast(int level) {
    if (level >= 0 && level <= 100)
        m_iContrast = level;
}

void ModelRenderer::DrawFullDepth(const ModelRectangle& area, const ModelMask& mask,
                                  ModelPlanes& planes) {
    if (m_Sink == ModelSink::Planes) {
        CopyPlanes(area, mask, planes);
        return;
    }
    Stretch(area, mask, planes.y, 8);
    Convert(area, mask, [&](size_t luma, size_t chroma) {
        const int64_t y = planes.y.At(luma);
        const uint32_t argb = ToArgb(y, planes.cb.At(chroma), planes.cr.At(chroma), m_Rule);
        return m_bPostProcessing ? AdjustToLuma(argb, y) : argb;
    });
}

void ModelRenderer::DrawReducedDepth(const ModelRectangle& area, const ModelMask& mask,
                                     ModelPlanes& planes, int lumaBits, int chromaBits) {
    Stretch(area, mask, planes.y, lumaBits);
    if (m_Sink == ModelSink::Planes)
        return; // reduced depth has no form for plane framebuffers
    Convert(area, mask, [&](size_t luma, size_t chroma) {
        return ReducedDepthToArgb(planes.y.At(luma), planes.cb.At(chroma), lumaBits, chromaBits);
    });
}

void ModelRenderer::Stretch(const ModelRectangle& area, const ModelMask& mask, ModelPlane& luma,
                            int bits) {
    const int stride = RoundUpToBlock(area.width);
    for (int row = 0; row < area.height; ++row)
        for (int column = 0; column < stride; ++column)
            if (!mask.Skips(column, row)) {
                const size_t index = Index(row, stride, column);
                luma.Set(index, StretchContrast(luma.At(index), m_iContrast, bits));
            }
}

void ModelRenderer::Convert(const ModelRectangle& area, const ModelMask& mask,
                            const PixelOf& pixelOf) {
    const int stride = RoundUpToBlock(area.width);
    // Pixels come in groups that share a chroma sample; an incomplete group is not drawn.
    const int rows = area.height / m_Chroma.divY * m_Chroma.divY;
    const int columns = area.width / m_Chroma.divX * m_Chroma.divX;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            uint32_t* pixel = PixelAt(area, column, row);
            if (pixel != nullptr && !mask.Skips(column, row))
                *pixel = pixelOf(
                    Index(row, stride, column),
                    Index(row / m_Chroma.divY, stride / m_Chroma.divX, column / m_Chroma.divX));
        }
    }
}

void ModelRenderer::CopyPlanes(const ModelRectangle& area, const ModelMask& mask,
                               const ModelPlanes& planes) {
    // The viewer's planes are written from their start; the rectangle's position moves the source,
    // and half of the whole distance moves the chroma, whatever the subsampling.
    const size_t offset = Index(area.y, m_iWidth, area.x);
    // A decoder's planes hold the screen in whole blocks.
    const size_t samples = Index(RoundUpToBlock(m_iHeight), RoundUpToBlock(m_iWidth), 0);
    const size_t chromaSamples = samples / static_cast<size_t>(m_Chroma.divX);
    const int stride = RoundUpToBlock(area.width);
    const int chromaStride = stride / m_Chroma.divX;
    const int chromaWidth = m_iWidth / m_Chroma.divX;
    const int chromaHeight = m_iHeight / m_Chroma.divY;
    CopyPlane({planes.y, samples, offset, stride}, {m_vuiY, m_iWidth, m_iHeight}, {1, 1}, area,
              mask);
    CopyPlane({planes.cb, chromaSamples, offset / 2, chromaStride},
              {m_vuiCb, chromaWidth, chromaHeight}, m_Chroma, area, mask);
    CopyPlane({planes.cr, chromaSamples, offset / 2, chromaStride},
              {m_vuiCr, chromaWidth, chromaHeight}, m_Chroma, area, mask);
}

uint32_t* ModelRenderer::PixelAt(const ModelRectangle& area, int column, int row) {
    const int x = area.x + column;
    const int y = area.y + row;
    return x < m_iWidth && y < m_iHeight ? &m_vuiArgb[Index(y, m_iWidth, x)] : nullptr;
}

std::vector<uint8_t> ModelRenderer::Memory() const {
    std::vector<uint8_t> bytes(4 * m_vuiArgb.size());
    for (size_t i = 0; i < m_vuiArgb.size(); ++i) {
        for (size_t byte = 0; byte < 4; ++byte)
            bytes[4 * i + byte] = static_cast<uint8_t>(m_vuiArgb[i] >> 8 * byte);
    }
    for (const std::vector<uint8_t>* plane : {&m_vuiY, &m_vuiCb, &m_vuiCr})
        bytes.insert(bytes.end(), plane->begin(), plane->end());
    return bytes;
}

} // namespace Vostrel::model
