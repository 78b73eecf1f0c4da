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

std::int16_t Clamped(int sum) {
    return std::clamp<std::int16_t>(static_cast<std::int16_t>(sum), 0, 255);
}

/// The value of ChromaTerm for any v, in steps that all fit into 16 bits: the coefficient is taken
/// apart into Whole * 1024 + Quarter * 4 + Low, and what is shifted out in two portions is what
/// would be shifted out at once.
template <int Coefficient>
std::int16_t Offset(int v) {
    constexpr int Whole = (Coefficient + 512) >> 10;
    constexpr int Quarter = (Coefficient - Whole * 1024) >> 2;
    constexpr int Low = Coefficient & 3;
    static_assert(-100 < Quarter && Quarter < 128);
    const auto chroma = static_cast<std::int16_t>(v - 128);
    const auto low = static_cast<std::int16_t>(static_cast<std::int16_t>(Low * chroma + 512) >> 2);
    const auto sum = static_cast<std::int16_t>(Quarter * chroma + low);
    return static_cast<std::int16_t>(Whole * chroma + (sum >> 8));
}

// The loops below are plain ones over separate arrays of 16-bit numbers, of unknown length and
// without calls: of the forms tried, this is what both compilers turn into vector instructions
// (bench: ConvertScreen/portable; reading the tables for each chroma sample takes one and a half
// times to twice as long).

/// Chroma samples, and what each pair of them takes from luma in green.
struct ChromaLines {
    std::int16_t* cr;
    std::int16_t* green;
    std::int16_t* cb;

    ChromaLines At(std::size_t column) const { return {cr + column, green + column, cb + column}; }
};

void FillLine(const std::uint8_t* __restrict samples, std::size_t count,
              std::int16_t* __restrict line) {
    for (std::size_t i = 0; i < count; ++i)
        line[i] = samples[i];
}

void FillGreenLine(const std::int16_t* __restrict cb, const std::int16_t* __restrict cr,
                   std::size_t count, std::int16_t* __restrict line) {
    for (std::size_t i = 0; i < count; ++i)
        line[i] = static_cast<std::int16_t>(Offset<CbToGreen>(cb[i]) + Offset<CrToGreen>(cr[i]));
}

void FillLines(const std::uint8_t* cb, const std::uint8_t* cr, std::size_t count,
               const ChromaLines& lines) {
    FillLine(cr, count, lines.cr);
    FillLine(cb, count, lines.cb);
    FillGreenLine(lines.cb, lines.cr, count, lines.green);
}

template <int Coefficient>
void FillOffsets(const std::int16_t* __restrict chroma, std::size_t count,
                 std::int16_t* __restrict offsets) {
    for (std::size_t i = 0; i < count; ++i)
        offsets[i] = Offset<Coefficient>(chroma[i]);
}

/// What chroma adds to luma in red and blue, and takes from it in green.
struct ChromaOffsets {
    const std::int16_t* red;
    const std::int16_t* green;
    const std::int16_t* blue;
};

/// Each number twice, as one of 32 bits.
void FillPairs(const std::int16_t* __restrict numbers, std::size_t count,
               std::uint32_t* __restrict pairs) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = static_cast<std::uint16_t>(numbers[i]);
        pairs[i] = number | static_cast<std::uint32_t>(number) << 16;
    }
}

/// Pixels of one row that are converted at a time: their numbers stay in the first-level cache.
constexpr std::size_t StepPixels = 256;

/// Blue and green of a pixel, as they lie in its word, and red and alpha.
void FillWords(const std::uint8_t* __restrict luma, const ChromaOffsets& offsets, std::size_t count,
               std::uint32_t* __restrict words) {
    const std::int16_t* __restrict red = offsets.red;
    const std::int16_t* __restrict green = offsets.green;
    const std::int16_t* __restrict blue = offsets.blue;
    std::uint16_t blueGreen[StepPixels];
    std::uint16_t redAlpha[StepPixels];
    for (std::size_t i = 0; i < count; ++i) {
        blueGreen[i] = static_cast<std::uint16_t>(Clamped(luma[i] + blue[i]) |
                                                  Clamped(luma[i] - green[i]) << 8);
        redAlpha[i] = static_cast<std::uint16_t>(Clamped(luma[i] + red[i]) | 0xFF00);
    }
    for (std::size_t i = 0; i < count; ++i)
        words[i] = blueGreen[i] | static_cast<std::uint32_t>(redAlpha[i]) << 16;
}

/// The pixels of the offsets of chroma columns that are two pixels wide.
class PairedOffsets {
public:
    PairedOffsets(const ChromaOffsets& columns, std::size_t count) {
        Pair(columns.red, count, m_aiRed);
        Pair(columns.green, count, m_aiGreen);
        Pair(columns.blue, count, m_aiBlue);
    }
    ChromaOffsets Get() const { return {m_aiRed, m_aiGreen, m_aiBlue}; }

private:
    using Pixels = std::int16_t[StepPixels];

    static void Pair(const std::int16_t* columns, std::size_t count, Pixels& pixels) {
        std::uint32_t pairs[StepPixels / 2];
        FillPairs(columns, count, pairs);
        std::memcpy(pixels, pairs, count * sizeof *pairs);
    }

    Pixels m_aiRed;
    Pixels m_aiGreen;
    Pixels m_aiBlue;
};

/// Converts the pixels of a run from x on. lines: their chroma.
template <std::size_t ChromaDivX, std::size_t Rows>
void ConvertStep(const Run& run, std::size_t x, std::size_t pixels, const ChromaLines& lines) {
    const std::size_t columns = pixels / ChromaDivX;
    std::int16_t red[StepPixels / ChromaDivX];
    std::int16_t blue[StepPixels / ChromaDivX];
    FillOffsets<CrToRed>(lines.cr, columns, red);
    FillOffsets<CbToBlue>(lines.cb, columns, blue);
    const ChromaOffsets offsets{red, lines.green, blue};

    const auto convertRows = [&](const ChromaOffsets& ofPixels) {
        for (std::size_t row = 0; row < Rows; ++row)
            FillWords(run.luma + row * run.lumaStride + x, ofPixels, pixels,
                      run.destination + row * run.destinationStride + x);
    };
    if constexpr (ChromaDivX == 2)
        convertRows(PairedOffsets(offsets, columns).Get());
    else
        convertRows(offsets);
}

/// Calls step(x, pixels) for a run's pixels in their order.
template <typename Step>
void WalkSteps(const Run& run, Step step) {
    for (std::size_t x = 0; x < run.pixels; x += StepPixels)
        step(x, std::min(StepPixels, run.pixels - x));
}

/// Converts a run of which every row has chroma of its own.
template <std::size_t ChromaDivX>
void ConvertRow(const Run& run) {
    std::int16_t cr[StepPixels / ChromaDivX];
    std::int16_t green[StepPixels / ChromaDivX];
    std::int16_t cb[StepPixels / ChromaDivX];
    const ChromaLines lines{cr, green, cb};
    WalkSteps(run, [&](std::size_t x, std::size_t pixels) {
        FillLines(run.cb + x / ChromaDivX, run.cr + x / ChromaDivX, pixels / ChromaDivX, lines);
        ConvertStep<ChromaDivX, 1>(run, x, pixels, lines);
    });
}

/// Converts a run of two rows that share their chroma.
void ConvertTwoRows(const Run& run, const ChromaLines& lines) {
    FillLines(run.cb, run.cr, run.pixels / 2, lines);
    WalkSteps(run, [&](std::size_t x, std::size_t pixels) {
        ConvertStep<2, 2>(run, x, pixels, lines.At(x / 2));
    });
}

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
    const ChromaLines lines{m_viCrLine.data(), m_viGLine.data(), m_viCbLine.data()};
    WalkRuns<2, 2>(Rectangle{destination, luma, cb, cr, width, height, destinationStride,
                             lumaStride, chromaStride, skipMask},
                   [&lines](const Run& run) { ConvertTwoRows(run, lines.At(run.column / 2)); });
}

void YCbCr4xxToArgb32Native::Convert422(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    WalkRuns<2, 1>(Rectangle{destination, luma, cb, cr, width, height, destinationStride,
                             lumaStride, chromaStride, skipMask},
                   [](const Run& run) { ConvertRow<2>(run); });
}

void YCbCr4xxToArgb32Native::Convert444(std::uint32_t* destination, const std::uint8_t* luma,
                                        const std::uint8_t* cb, const std::uint8_t* cr,
                                        unsigned short width, unsigned short height,
                                        unsigned long destinationStride, unsigned long lumaStride,
                                        unsigned long chromaStride, const bool* skipMask) const {
    WalkRuns<1, 1>(Rectangle{destination, luma, cb, cr, width, height, destinationStride,
                             lumaStride, chromaStride, skipMask},
                   [](const Run& run) { ConvertRow<1>(run); });
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
