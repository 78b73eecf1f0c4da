#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"

#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/YCbCr4xxToArgb32/RectangleWalk.h"

#include <algorithm>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

/// Coefficient times (v - 128) in 10-bit fixed point, rounded half up, for v = 0, 1, 2, ...
class ChromaTerm {
public:
    explicit constexpr ChromaTerm(int coefficient)
        : m_iCoefficient(coefficient), m_iSum(coefficient * -128 + 512) {}

    constexpr int Value() const { return m_iSum >> 10; }
    constexpr void Next() { m_iSum += m_iCoefficient; }

private:
    int m_iCoefficient;
    int m_iSum;
};

// The coefficients 1.402, 1.772, 0.344 and 0.714 of full-range YCbCr (ITU-T T.871) times 1024.
constexpr int CrToRed = 1435;
constexpr int CbToBlue = 1814;
constexpr int CbToGreen = 352;
constexpr int CrToGreen = 731;

} // namespace

std::array<std::uint8_t, 768> YCbCr4xxToArgb32Native::s_vuiClampLut;
const std::uint8_t* YCbCr4xxToArgb32Native::s_puiClampLut = nullptr;
std::array<std::uint8_t, 65536> YCbCr4xxToArgb32Native::s_vuiYCrToRLut;
std::array<std::uint8_t, 65536> YCbCr4xxToArgb32Native::s_vuiYCbToBLut;
std::array<std::int16_t, 256> YCbCr4xxToArgb32Native::s_viCbToGLut;
std::array<std::int16_t, 256> YCbCr4xxToArgb32Native::s_viCrToGLut;
std::mutex YCbCr4xxToArgb32Native::s_Mutex;

YCbCr4xxToArgb32Native::YCbCr4xxToArgb32Native(ILogger* logger) : IYCbCr4xxToArgb32(logger) {
    HookUpColorTransLuts();
    m_pLogger->Log("YCbCr420 to ARGB conversion is not accelerated.");
}

YCbCr4xxToArgb32Native::~YCbCr4xxToArgb32Native() = default;

void YCbCr4xxToArgb32Native::HookUpColorTransLuts() {
    const std::lock_guard lock(s_Mutex);
    const bool filled = s_vuiYCrToRLut.back() != 0; // white with the most red is 255
    if (filled)
        return;

    for (int i = 0; i < static_cast<int>(s_vuiClampLut.size()); ++i)
        s_vuiClampLut[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(std::clamp(i - 256, 0, 255));
    s_puiClampLut = s_vuiClampLut.data() + 256;

    ChromaTerm red(CrToRed), blue(CbToBlue), cbGreen(CbToGreen), crGreen(CrToGreen);
    for (std::size_t v = 0; v < 256; ++v) {
        for (int luma = 0; luma < 256; ++luma) {
            const std::size_t index = (static_cast<std::size_t>(luma) << 8) | v;
            s_vuiYCrToRLut[index] = s_puiClampLut[luma + red.Value()];
            s_vuiYCbToBLut[index] = s_puiClampLut[luma + blue.Value()];
        }
        s_viCbToGLut[v] = static_cast<std::int16_t>(cbGreen.Value());
        s_viCrToGLut[v] = static_cast<std::int16_t>(crGreen.Value());
        for (ChromaTerm* term : {&red, &blue, &cbGreen, &crGreen})
            term->Next();
    }
}

std::uint16_t YCbCr4xxToArgb32Native::GetDataAlignmentBytes() const {
    return 8;
}

void YCbCr4xxToArgb32Native::GrowWorkLines(std::size_t chromaColumns) const {
    for (std::vector<std::int16_t>* line : {&m_viCrLine, &m_viGLine, &m_viCbLine})
        if (line->size() < chromaColumns)
            *line = std::vector<std::int16_t>(chromaColumns);
}

void YCbCr4xxToArgb32Native::Convert420(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    GrowWorkLines(width / 2U);
    WalkRectangle<2, 2>(
        {destination, luma, cb, cr, width, height, destinationStride, lumaStride, chromaStride,
         skipMask},
        [this](const Run& run) {
            const std::size_t columns = run.pixels / 2;
            std::int16_t* crLine = m_viCrLine.data() + run.column / 2;
            std::int16_t* gLine = m_viGLine.data() + run.column / 2;
            std::int16_t* cbLine = m_viCbLine.data() + run.column / 2;
            for (std::size_t j = 0; j < columns; ++j) {
                crLine[j] = run.cr[j];
                cbLine[j] = run.cb[j];
                gLine[j] = static_cast<std::int16_t>(GreenOffset(run.cb[j], run.cr[j]));
            }
            for (std::size_t row = 0; row < 2; ++row) {
                std::uint32_t* out = run.destination + row * run.destinationStride;
                const std::uint8_t* y = run.luma + row * run.lumaStride;
                for (std::size_t x = 0; x < run.pixels; ++x)
                    out[x] = ArgbWord(y[x], static_cast<std::uint8_t>(cbLine[x / 2]),
                                      static_cast<std::uint8_t>(crLine[x / 2]), gLine[x / 2]);
            }
        });
}

void YCbCr4xxToArgb32Native::Convert422(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    WalkRectangle<2, 1>({destination, luma, cb, cr, width, height, destinationStride, lumaStride,
                         chromaStride, skipMask},
                        [](const Run& run) {
                            for (std::size_t x = 0; x < run.pixels; ++x)
                                run.destination[x] =
                                    ArgbWord(run.luma[x], run.cb[x / 2], run.cr[x / 2]);
                        });
}

void YCbCr4xxToArgb32Native::Convert444(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    WalkRectangle<1, 1>({destination, luma, cb, cr, width, height, destinationStride, lumaStride,
                         chromaStride, skipMask},
                        [](const Run& run) {
                            for (std::size_t x = 0; x < run.pixels; ++x)
                                run.destination[x] = ArgbWord(run.luma[x], run.cb[x], run.cr[x]);
                        });
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
