#include "tests/model/ModelColour.h"

#include "tests/model/ModelIntegers.h"

#include <algorithm>
#include <vector>

namespace Vostrel::model {

namespace {

uint32_t Channel(int64_t value) {
    return static_cast<uint32_t>(std::clamp<int64_t>(value, 0, 255));
}

uint32_t Argb(int64_t red, int64_t green, int64_t blue) {
    return 0xFF000000u | Channel(red) << 16 | Channel(green) << 8 | Channel(blue);
}

/// A product in 10-bit fixed point, rounded half up.
int64_t Portable(int64_t coefficient, int64_t chroma) {
    return FloorShift(coefficient * (chroma - 128) + 512, 10);
}

/// The upper half of a 16-bit multiplication, with 13-bit fixed point and 3 more bits in the
/// sample.
int64_t Accelerated(int64_t coefficient, int64_t chroma) {
    return FloorShift(coefficient * (chroma - 128) * 8, 16);
}

} // namespace

uint32_t ToArgb(int64_t y, int64_t cb, int64_t cr, KernelRule rule) {
    if (rule == KernelRule::Portable)
        return Argb(y + Portable(1435, cr), y - (Portable(352, cb) + Portable(731, cr)),
                    y + Portable(1814, cb));
    return Argb(y + Accelerated(11485, cr), y + Accelerated(-2819, cb) + Accelerated(-5850, cr),
                y + Accelerated(14516, cb));
}

int64_t ExpandLuma(int64_t level, int bits) {
    static const std::vector<int64_t> twoBits{0, 85, 170, 255};
    static const std::vector<int64_t> threeBits{0, 36, 73, 109, 146, 182, 219, 255};
    switch (bits) {
    case 2:
        return twoBits.at(static_cast<size_t>(level));
    case 3:
        return threeBits.at(static_cast<size_t>(level));
    case 4:
        return level * 17;
    default:
        return level * (bits == 5 ? 8 : 4); // stops short of 255, as the devices' own tables do
    }
}

int64_t ExpandChroma(int64_t pattern, int bits) {
    static const std::vector<int64_t> threeBits{128, 170, 213, 255, 0, 1, 43, 86};
    static const std::vector<int64_t> fourBits{128, 146, 164, 182, 201, 219, 237, 255,
                                               0,   1,   19,  37,  55,  74,  92,  110};
    static const std::vector<int64_t> fiveBits{
        128, 136, 145, 153, 162, 170, 179, 187, 196, 204, 213, 221, 230, 238, 247, 255,
        0,   1,   9,   18,  26,  35,  43,  52,  60,  69,  77,  86,  94,  103, 111, 120};
    const std::vector<int64_t>& samples = bits == 3 ? threeBits : bits == 4 ? fourBits : fiveBits;
    return samples.at(static_cast<size_t>(pattern));
}

uint32_t ReducedDepthToArgb(int64_t luma, int64_t chroma, int lumaBits, int chromaBits) {
    const int64_t chromaLevels = int64_t{1} << chromaBits;
    return ToArgb(ExpandLuma(luma % (int64_t{1} << lumaBits), lumaBits),
                  ExpandChroma(chroma / chromaLevels % chromaLevels, chromaBits),
                  ExpandChroma(chroma % chromaLevels, chromaBits), KernelRule::Portable);
}

int64_t StretchContrast(int64_t luma, int level, int bits) {
    const int64_t values = int64_t{1} << bits;
    const int64_t threshold = level >> (8 - bits);
    const int64_t value = luma % values;
    if (value <= threshold)
        return 0;
    if (value >= values - 1 - threshold)
        return values - 1;
    return values * (value - threshold) / (values - 1 - 2 * threshold);
}

uint32_t AdjustToLuma(uint32_t argb, int64_t y) {
    int64_t red = argb >> 16 & 0xFF;
    int64_t green = argb >> 8 & 0xFF;
    int64_t blue = argb & 0xFF;
    const int64_t brightness = (77 * red + 150 * green + 29 * blue) / 256;
    for (int64_t* channel : {&red, &green, &blue}) {
        if (brightness - y > 1)
            *channel = *channel * y / brightness;
        else if (y - brightness >= 2)
            *channel = 255 - (255 - *channel) * (255 - y) / (255 - brightness);
    }
    return Argb(red, green, blue);
}

} // namespace Vostrel::model
