#include "tools/rctool/HeatmapPicture.h"

#include "tools/PngRowWriter.h"
#include "tools/rctool/HeatmapLegend.h"
#include "tools/rctool/Interruption.h"

#include <algorithm>
#include <vector>

namespace Vostrel::rctool {

using streamencoder::RgbPixel;

namespace {

constexpr size_t ScreenGap = 8; ///< pixels between the heat and the screen
constexpr size_t PixelBytes = 4;

/// Blue, cyan, green, yellow, red for 0 to HeatCount - 1.
RgbPixel ColourOf(size_t heat) {
    constexpr int Ramp[][3] = {{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}};
    constexpr size_t Parts = std::size(Ramp) - 1;
    constexpr int Last = HeatCount - 1;
    const size_t below = std::min(heat * Parts / Last, Parts - 1);
    const int part = static_cast<int>(heat * Parts) - static_cast<int>(below) * Last;
    RgbPixel colour{};
    for (size_t i = 0; i < colour.size(); ++i)
        colour[i] = static_cast<uint8_t>(
            (Ramp[below][i] * (Last - part) + Ramp[below + 1][i] * part) / Last);
    return colour;
}

std::vector<RgbPixel> MakePalette() {
    std::vector<RgbPixel> palette;
    for (size_t i = 0; i < GreyCount; ++i) {
        const auto grey = static_cast<uint8_t>(i * 255 / (GreyCount - 1));
        palette.push_back({grey, grey, grey});
    }
    for (size_t i = 0; i < HeatCount; ++i)
        palette.push_back(ColourOf(i));
    return palette;
}

/// Blue, green, red and alpha to one of the greys.
uint8_t GreyOf(const uint8_t* pixel) {
    return static_cast<uint8_t>((29 * pixel[0] + 150 * pixel[1] + 77 * pixel[2]) >> 9);
}

void PaintRow(const Heatmap& heatmap, uint32_t most, const recording::Framebuffer& framebuffer,
              size_t y, std::vector<uint8_t>& row) {
    const size_t width = heatmap.GetWidth();
    const uint8_t* pixel = &framebuffer.GetBytes()[PixelBytes * y * width];
    uint8_t* const screen = row.data() + width + ScreenGap;
    for (size_t x = 0; x < width; ++x, pixel += PixelBytes) {
        const uint32_t sum = heatmap.At(x, y);
        row[x] = sum == 0 ? Black : HeatIndex(sum, most);
        screen[x] = GreyOf(pixel);
    }
}

} // namespace

void WriteHeatmap(std::FILE* file, const std::string& path, const Heatmap& heatmap,
                  const recording::Framebuffer& framebuffer, const std::string& title,
                  Progress& progress) {
    const size_t panels = 2 * heatmap.GetWidth() + ScreenGap;
    const size_t width = std::max(panels, HeatmapLegend::Width);
    const size_t scale = std::max<size_t>(panels / (2 * HeatmapLegend::Width), 1);
    const size_t legendHeight = scale * HeatmapLegend::Height;
    const uint32_t most = heatmap.GetMost();
    const HeatmapLegend legend(title, most);
    streamencoder::PngRowWriter writer(file, path, width, heatmap.GetHeight() + legendHeight,
                                       MakePalette());
    std::vector<uint8_t> row(width, Black);
    for (size_t y = 0; y < heatmap.GetHeight(); ++y) {
        CheckForInterruption();
        progress.Step();
        PaintRow(heatmap, most, framebuffer, y, row);
        writer.WriteRow(row);
    }
    std::fill(row.begin(), row.end(), Black);
    for (size_t y = 0; y < legendHeight; ++y) {
        for (size_t x = 0; x < scale * HeatmapLegend::Width; ++x)
            row[x] = legend.At(x / scale, y / scale);
        writer.WriteRow(row);
    }
    writer.Finish();
}

} // namespace Vostrel::rctool
