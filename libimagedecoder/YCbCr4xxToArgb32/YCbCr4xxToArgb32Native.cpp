#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"

#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/YCbCr4xxToArgb32/SamplePlanes.h"

#include <algorithm>
#include <cstring>

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

/// What a chroma pair adds to luma in red and blue, and takes from it in green.
struct ChromaOffsets {
    int red;
    int green;
    int blue;
};

std::int16_t Clamped(int sum) {
    return std::clamp<std::int16_t>(static_cast<std::int16_t>(sum), 0, 255);
}

/// The word of a pixel as two 16-bit halves.
std::uint16_t BlueGreen(int luma, int blue, int green) {
    return static_cast<std::uint16_t>(Clamped(luma + blue) | Clamped(luma - green) << 8);
}
std::uint16_t RedAlpha(int luma, int red) {
    return static_cast<std::uint16_t>(Clamped(luma + red) | 0xFF00);
}
std::uint32_t Word(std::uint16_t blueGreen, std::uint16_t redAlpha) {
    return blueGreen | static_cast<std::uint32_t>(redAlpha) << 16;
}

/// What chroma changes in 16 adjacent pixels. In separate steps over 16-bit numbers, with two equal
/// ones written as one of 32 bits: of the forms tried, this is what both compilers turn into vector
/// instructions (bench: Portable420; a plain loop over the pixels takes three times as long).
class SixteenPixels {
public:
    static constexpr std::size_t Count = 16;

    template <std::size_t ChromaDivX>
    void Set(std::size_t chroma, const ChromaOffsets& offsets) {
        Spread<ChromaDivX>(m_aiRed, chroma, offsets.red);
        Spread<ChromaDivX>(m_aiGreen, chroma, offsets.green);
        Spread<ChromaDivX>(m_aiBlue, chroma, offsets.blue);
    }

    void Convert(const std::uint8_t* luma, std::uint32_t* out) const {
        std::uint16_t blueGreen[Count];
        std::uint16_t redAlpha[Count];
        for (std::size_t i = 0; i < Count; ++i) {
            blueGreen[i] = BlueGreen(luma[i], m_aiBlue[i], m_aiGreen[i]);
            redAlpha[i] = RedAlpha(luma[i], m_aiRed[i]);
        }
        for (std::size_t i = 0; i < Count; ++i)
            out[i] = Word(blueGreen[i], redAlpha[i]);
    }

private:
    using Offsets = std::int16_t[Count];

    template <std::size_t ChromaDivX>
    static void Spread(Offsets& offsets, std::size_t chroma, int offset) {
        if constexpr (ChromaDivX == 2) {
            const std::uint32_t two = static_cast<std::uint16_t>(offset) * 0x10001U;
            std::memcpy(&offsets[2 * chroma], &two, sizeof(two));
        } else {
            offsets[chroma] = static_cast<std::int16_t>(offset);
        }
    }

    Offsets m_aiRed;
    Offsets m_aiGreen;
    Offsets m_aiBlue;
};

/// Converts a run; offsetsOf(column) gives the offsets of a chroma column of it.
template <std::size_t ChromaDivX, std::size_t Rows, typename OffsetsOf>
void ConvertRun(const Run& run, const OffsetsOf& offsetsOf) {
    std::size_t x = 0;
    for (; x + SixteenPixels::Count <= run.pixels; x += SixteenPixels::Count) {
        SixteenPixels sixteen;
        for (std::size_t j = 0; j < SixteenPixels::Count / ChromaDivX; ++j)
            sixteen.Set<ChromaDivX>(j, offsetsOf(x / ChromaDivX + j));
        for (std::size_t row = 0; row < Rows; ++row)
            sixteen.Convert(run.luma + row * run.lumaStride + x,
                            run.destination + row * run.destinationStride + x);
    }
    for (; x < run.pixels; ++x) {
        const auto [red, green, blue] = offsetsOf(x / ChromaDivX);
        for (std::size_t row = 0; row < Rows; ++row) {
            const int luma = run.luma[row * run.lumaStride + x];
            run.destination[row * run.destinationStride + x] =
                Word(BlueGreen(luma, blue, green), RedAlpha(luma, red));
        }
    }
}

} // namespace

std::array<std::uint8_t, 768> YCbCr4xxToArgb32Native::s_vuiClampLut;
const std::uint8_t* YCbCr4xxToArgb32Native::s_puiClampLut = nullptr;
std::array<std::uint8_t, 65536> YCbCr4xxToArgb32Native::s_vuiYCrToRLut;
std::array<std::uint8_t, 65536> YCbCr4xxToArgb32Native::s_vuiYCbToBLut;
std::array<std::int16_t, 256> YCbCr4xxToArgb32Native::s_viCrToRLut;
std::array<std::int16_t, 256> YCbCr4xxToArgb32Native::s_viCbToBLut;
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
        s_viCrToRLut[v] = static_cast<std::int16_t>(red.Value());
        s_viCbToBLut[v] = static_cast<std::int16_t>(blue.Value());
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
    WalkRuns<2, 2>(Rectangle{destination, luma, cb, cr, width, height, destinationStride,
                             lumaStride, chromaStride, skipMask},
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
                       ConvertRun<2, 2>(run, [=](std::size_t j) {
                           return ChromaOffsets{s_viCrToRLut[static_cast<std::uint8_t>(crLine[j])],
                                                gLine[j],
                                                s_viCbToBLut[static_cast<std::uint8_t>(cbLine[j])]};
                       });
                   });
}

void YCbCr4xxToArgb32Native::Convert422(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    WalkRuns<2, 1>(Rectangle{destination, luma, cb, cr, width, height, destinationStride,
                             lumaStride, chromaStride, skipMask},
                   [](const Run& run) {
                       ConvertRun<2, 1>(run, [&run](std::size_t j) {
                           return ChromaOffsets{s_viCrToRLut[run.cr[j]],
                                                GreenOffset(run.cb[j], run.cr[j]),
                                                s_viCbToBLut[run.cb[j]]};
                       });
                   });
}

void YCbCr4xxToArgb32Native::Convert444(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    WalkRuns<1, 1>(Rectangle{destination, luma, cb, cr, width, height, destinationStride,
                             lumaStride, chromaStride, skipMask},
                   [](const Run& run) {
                       ConvertRun<1, 1>(run, [&run](std::size_t j) {
                           return ChromaOffsets{s_viCrToRLut[run.cr[j]],
                                                GreenOffset(run.cb[j], run.cr[j]),
                                                s_viCbToBLut[run.cb[j]]};
                       });
                   });
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
