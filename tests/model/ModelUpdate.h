#pragma once

#include "tests/model/ModelIntegers.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::model {

/// How many luma samples share one chroma sample, across and down.
struct ModelChroma {
    int divX;
    int divY;
};

/// The geometry of a chroma subsampling code: 0 4:2:0, 1 4:2:2, 2 4:4:4.
inline ModelChroma ChromaOf(unsigned subsampling) {
    return {subsampling == 2 ? 1 : 2, subsampling == 0 ? 2 : 1};
}

/// An update's rectangle in framebuffer pixels.
struct ModelRectangle {
    int x;
    int y;
    int width;
    int height;
};

/// Which 16x16 blocks of a rectangle an update leaves alone, in row order.
class ModelMask {
public:
    explicit ModelMask(const ModelRectangle& area)
        : m_iColumns(RoundUpToBlock(area.width) / BlockEdge),
          m_vSkipped(static_cast<size_t>(m_iColumns * (RoundUpToBlock(area.height) / BlockEdge)),
                     true) {}

    void MarkCoded(int left, int top) { m_vSkipped[Index(left, top)] = false; }

    /// Whether the block of this pixel of the rectangle is left alone.
    bool Skips(int column, int row) const { return m_vSkipped[Index(column, row)]; }

private:
    size_t Index(int column, int row) const {
        return static_cast<size_t>(row / BlockEdge * m_iColumns + column / BlockEdge);
    }

    int m_iColumns;
    std::vector<bool> m_vSkipped;
};

/// A plane of samples (16 bits each) without an edge: what was never written reads as 0.
class ModelPlane {
public:
    void Clear(size_t samples) { m_vSamples.assign(samples, 0); }
    int64_t At(size_t index) const { return index < m_vSamples.size() ? m_vSamples[index] : 0; }
    void Set(size_t index, int64_t sample) { m_vSamples.at(index) = static_cast<uint16_t>(sample); }

private:
    std::vector<uint16_t> m_vSamples;
};

/// A decoder's planes. LBE keeps its packed chroma values in cb.
struct ModelPlanes {
    /// Empty planes for a framebuffer of this size in whole blocks.
    void Clear(int width, int height) {
        const auto samples = static_cast<size_t>(RoundUpToBlock(width)) *
                             static_cast<size_t>(RoundUpToBlock(height));
        for (ModelPlane* plane : {&y, &cb, &cr})
            plane->Clear(samples);
    }

    ModelPlane y;
    ModelPlane cb;
    ModelPlane cr;
};

} // namespace Vostrel::model
