#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/Picture.h"
#include "tools/walker/WalkedStream.h"

#include <cstddef>
#include <vector>

namespace Vostrel::rctool {

enum class HeatmapKind { Bits, Changes };

/// Sums up what the pixels of a screen cost, and paints it.
class Heatmap : public walker::IStreamVisitor {
public:
    Heatmap(size_t width, size_t height, HeatmapKind kind) : m_kind(kind) {
        UseSize(width, height);
    }

    /// Starts anew when the size differs.
    void UseSize(size_t width, size_t height);

    /// The macroblocks of this rectangle follow.
    void BeginUpdate(const libimagedecoder::UpdateRectangle& rectangle) { m_rectangle = rectangle; }
    void OnMacroblock(const walker::Macroblock& block) override;

    /// The largest sum.
    double GetMost() const;

    /// The picture, which has this size, in grey with the sums in colour.
    streamencoder::Picture Paint(const streamencoder::Picture& picture) const;

private:
    double At(size_t x, size_t y) const { return m_vfSums[y * m_uiWidth + x]; }
    bool IsEdge(size_t x, size_t y) const;

    HeatmapKind m_kind;
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;
    std::vector<double> m_vfSums; ///< of every pixel, in units of its macroblock
    libimagedecoder::UpdateRectangle m_rectangle;
};

} // namespace Vostrel::rctool
