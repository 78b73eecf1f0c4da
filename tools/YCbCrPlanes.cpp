#include "tools/YCbCrPlanes.h"

#include <algorithm>

namespace Vostrel::streamencoder {

using libimagedecoder::RoundedUpToMacroblocks;
using libimagedecoder::UpdateRectangle;

namespace {

// Fixed point with 16 bits of fraction. Every row sums to 1 (luma) or 0 (chroma), so that grey
// stays exactly grey.
constexpr int FractionBits = 16;
constexpr int RedToY = 19595;   // 0.299
constexpr int GreenToY = 38470; // 0.587
constexpr int BlueToY = 7471;   // 0.114
constexpr int RedToCb = -11058; // -0.299 / 1.772
constexpr int GreenToCb = -21710;
constexpr int BlueToCb = 32768;
constexpr int RedToCr = 32768;
constexpr int GreenToCr = -27439; // -0.587 / 1.402
constexpr int BlueToCr = -5329;

static_assert(RedToY + GreenToY + BlueToY == 1 << FractionBits);
static_assert(RedToCb + GreenToCb + BlueToCb == 0);
static_assert(RedToCr + GreenToCr + BlueToCr == 0);

/// Sums of colour components over one or more pixels.
struct RgbSum {
    int m_iRed = 0;
    int m_iGreen = 0;
    int m_iBlue = 0;

    void Add(const RgbPixel& pixel) {
        m_iRed += pixel[0];
        m_iGreen += pixel[1];
        m_iBlue += pixel[2];
    }
};

/// Rounds a value with FractionBits of fraction, summed over 2^countBits pixels, to a sample.
uint8_t ToSample(int sum, int countBits, int offset) {
    const int shift = FractionBits + countBits;
    return static_cast<uint8_t>(std::clamp(offset + ((sum + (1 << (shift - 1))) >> shift), 0, 255));
}

/// Pixels of a rectangle, the picture's edges repeated.
class RectangleView {
public:
    RectangleView(const Picture& picture, const UpdateRectangle& rectangle)
        : m_pPicture(&picture), m_uiX(rectangle.m_uiX), m_uiY(rectangle.m_uiY) {}

    const RgbPixel& At(size_t x, size_t y) const {
        return m_pPicture->At(std::min(m_uiX + x, m_pPicture->m_uiWidth - 1),
                              std::min(m_uiY + y, m_pPicture->m_uiHeight - 1));
    }

private:
    const Picture* m_pPicture;
    size_t m_uiX;
    size_t m_uiY;
};

void FillLuma(const RectangleView& view, Plane& luma) {
    for (size_t y = 0; y < luma.m_uiHeight; ++y) {
        for (size_t x = 0; x < luma.m_uiWidth; ++x) {
            const auto& [red, green, blue] = view.At(x, y);
            *luma.At(x, y) = ToSample(RedToY * red + GreenToY * green + BlueToY * blue, 0, 0);
        }
    }
}

void FillChroma(const RectangleView& view, ChromaSubsampling chroma, Plane& cb, Plane& cr) {
    const size_t divX = ChromaDivX(chroma);
    const size_t divY = ChromaDivY(chroma);
    const auto countBits = static_cast<int>(divX / 2 + divY / 2);
    for (size_t y = 0; y < cb.m_uiHeight; ++y) {
        for (size_t x = 0; x < cb.m_uiWidth; ++x) {
            RgbSum sum;
            for (size_t dy = 0; dy < divY; ++dy) {
                for (size_t dx = 0; dx < divX; ++dx)
                    sum.Add(view.At(x * divX + dx, y * divY + dy));
            }
            *cb.At(x, y) =
                ToSample(RedToCb * sum.m_iRed + GreenToCb * sum.m_iGreen + BlueToCb * sum.m_iBlue,
                         countBits, 128);
            *cr.At(x, y) =
                ToSample(RedToCr * sum.m_iRed + GreenToCr * sum.m_iGreen + BlueToCr * sum.m_iBlue,
                         countBits, 128);
        }
    }
}

} // namespace

YCbCrPlanes ConvertToYCbCr(const Picture& picture, const UpdateRectangle& rectangle,
                           ChromaSubsampling chroma) {
    const size_t width = RoundedUpToMacroblocks(rectangle.m_uiWidth);
    const size_t height = RoundedUpToMacroblocks(rectangle.m_uiHeight);
    const Plane chromaPlane(width / ChromaDivX(chroma), height / ChromaDivY(chroma));
    YCbCrPlanes planes{Plane(width, height), chromaPlane, chromaPlane};

    const RectangleView view(picture, rectangle);
    FillLuma(view, planes.m_y);
    FillChroma(view, chroma, planes.m_cb, planes.m_cr);
    return planes;
}

} // namespace Vostrel::streamencoder
