#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Vostrel::rctool {

/// The palette indices of a heatmap: first greys from black to white, then the colours of the heat
/// from little to most.
constexpr size_t GreyCount = 128;
constexpr size_t HeatCount = 128;
constexpr uint8_t Black = 0;
constexpr uint8_t White = GreyCount - 1;

/// The index for a sum, which is more than 0 and at most `most`.
constexpr uint8_t HeatIndex(uint32_t sum, uint32_t most) {
    return static_cast<uint8_t>(GreyCount + uint64_t{sum} * (HeatCount - 1) / most);
}

/// A title, a bar of all colours of the heat, and numbers below it, in palette indices.
class HeatmapLegend {
public:
    static constexpr size_t Width = 360; ///< pixels, as the height
    static constexpr size_t Height = 38;

    /// most: the number at the bar's end. The title may have capitals, digits and ",:.".
    HeatmapLegend(const std::string& title, uint32_t most);

    uint8_t At(size_t x, size_t y) const { return m_vuiIndices[y * Width + x]; }

private:
    void DrawBar(uint32_t most);
    void DrawText(const std::string& text, size_t left, size_t top);

    std::vector<uint8_t> m_vuiIndices;
};

} // namespace Vostrel::rctool
