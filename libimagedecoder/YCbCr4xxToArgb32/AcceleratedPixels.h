#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/SamplePlanes.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// The colour rule of the SSE2 and the AVX2 variant, and what it shares with reduced depth, over a
// register type with a few operations (Lanes). In an unnamed namespace for the reason that
// MaskRuns.h gives.
//
// A chroma sample becomes c = 8 * (sample - 128), from -1024 to 1016. The coefficients are 1.402,
// 1.772, 0.344 and 0.714 in 13-bit fixed point, so the upper 16 bits of a product are the term in
// units of luma, rounded down:
//   red   = Y + high(cr * 11485)                      the term is in -180..178
//   blue  = Y + high(cb * 14516)                      -227..225
//   green = Y + high(cb * -2819) + high(cr * -5850)   -44..44 and -91..91, together -135..135
// Every sum lies in -227..480 and every term in -255..255. So no 16-bit sum can saturate, and a
// term splits into two bytes of which one is 0: what it adds to luma and what it takes away. Adding
// the one and subtracting the other with saturation at 0 and 255 is the clamped sum.
namespace {

constexpr short CrToRed = 11485;
constexpr short CbToBlue = 14516;
constexpr short CbToGreen = -2819;
constexpr short CrToGreen = -5850;

/// One pixel by the same rule, for the ends of rows.
inline std::uint32_t AcceleratedArgbWord(int luma, int cb, int cr) {
    const auto term = [](int sample, int coefficient) {
        return (8 * (sample - 128) * coefficient) >> 16;
    };
    const auto clamp = [](int sum) {
        return static_cast<std::uint32_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
    };
    const std::uint32_t red = clamp(luma + term(cr, CrToRed));
    const std::uint32_t green = clamp(luma + (term(cb, CbToGreen) + term(cr, CrToGreen)));
    const std::uint32_t blue = clamp(luma + term(cb, CbToBlue));
    return 0xFF000000U | (red << 16) | (green << 8) | blue;
}

/// What chroma adds to luma in each channel, in units of luma, one per 16-bit lane.
template <typename Lanes>
struct ChromaTerms {
    using Register = typename Lanes::Register;

    Register red;
    Register green;
    Register blue;
};

/// cb, cr: samples 0 to 255, one per 16-bit lane.
template <typename Lanes>
inline ChromaTerms<Lanes> TermsOfSamples(typename Lanes::Register cb, typename Lanes::Register cr) {
    const auto scaledCb = Lanes::CentreTimes8(cb);
    const auto scaledCr = Lanes::CentreTimes8(cr);
    return {Lanes::MultiplyHigh(scaledCr, CrToRed),
            Lanes::Add16(Lanes::MultiplyHigh(scaledCb, CbToGreen),
                         Lanes::MultiplyHigh(scaledCr, CrToGreen)),
            Lanes::MultiplyHigh(scaledCb, CbToBlue)};
}

/// One channel's term for two pixels per chroma sample, one byte each.
template <typename Lanes>
struct DoubledTerm {
    using Register = typename Lanes::Register;

    explicit DoubledTerm(Register term) {
        const Register split = Lanes::PackBytes(term, Lanes::Negate16(term));
        added = Lanes::InterleaveLow8(split, split);
        taken = Lanes::InterleaveHigh8(split, split);
    }

    Register ApplyTo(Register luma) const {
        return Lanes::SubBytes(Lanes::AddBytes(luma, added), taken);
    }

    Register added;
    Register taken;
};

/// Stores the words of Lanes::Bytes / 2 pixels given as interleaved blue and green, red and alpha.
template <typename Lanes>
inline void StoreWords(std::uint32_t* out, typename Lanes::Register blueGreen,
                       typename Lanes::Register redAlpha) {
    Lanes::Store(out, Lanes::InterleaveLow16(blueGreen, redAlpha));
    Lanes::Store(out + Lanes::Bytes / 4, Lanes::InterleaveHigh16(blueGreen, redAlpha));
}

/// Converts Lanes::Bytes pixels of each of the Rows luma rows; two neighbours share a chroma
/// sample. Source gives the samples: SampleSource below, or LevelSource of QuantizedPixels.h.
template <typename Lanes, std::size_t Rows, typename Source>
inline void ConvertHalfRate(const Source& source, std::size_t x) {
    const ChromaTerms<Lanes> terms = source.template HalfRateTerms<Lanes>(x / 2);
    const DoubledTerm<Lanes> red(terms.red);
    const DoubledTerm<Lanes> green(terms.green);
    const DoubledTerm<Lanes> blue(terms.blue);
    for (std::size_t row = 0; row < Rows; ++row) {
        const auto luma = source.template Luma<Lanes>(row, x);
        const auto r = red.ApplyTo(luma);
        const auto g = green.ApplyTo(luma);
        const auto b = blue.ApplyTo(luma);
        const auto alpha = Lanes::Spread16(-1);
        std::uint32_t* out = source.run.destination + row * source.run.destinationStride + x;
        StoreWords<Lanes>(out, Lanes::InterleaveLow8(b, g), Lanes::InterleaveLow8(r, alpha));
        StoreWords<Lanes>(out + Lanes::Bytes / 2, Lanes::InterleaveHigh8(b, g),
                          Lanes::InterleaveHigh8(r, alpha));
    }
}

/// Converts Lanes::Bytes / 2 pixels with a chroma sample each, in 16-bit lanes: doubling nothing,
/// the split into bytes would not pay.
template <typename Lanes, typename Source>
inline void ConvertFullRate(const Source& source, std::size_t x) {
    const ChromaTerms<Lanes> terms = source.template FullRateTerms<Lanes>(x);
    const auto luma = source.template WideLuma<Lanes>(x);
    const auto blueRed =
        Lanes::PackBytes(Lanes::Add16(luma, terms.blue), Lanes::Add16(luma, terms.red));
    const auto greenAlpha = Lanes::PackBytes(Lanes::Add16(luma, terms.green), Lanes::Spread16(255));
    StoreWords<Lanes>(source.run.destination + x, Lanes::InterleaveLow8(blueRed, greenAlpha),
                      Lanes::InterleaveHigh8(blueRed, greenAlpha));
}

/// Converts a run from x on in steps of one register; returns where the last whole step ended.
template <std::size_t ChromaDivX, std::size_t Rows, typename Lanes, typename Source>
inline std::size_t ConvertSteps(const Source& source, std::size_t x) {
    constexpr std::size_t Step = Lanes::Bytes * ChromaDivX / 2;
    for (; x + Step <= source.run.pixels; x += Step) {
        if constexpr (ChromaDivX == 2)
            ConvertHalfRate<Lanes, Rows>(source, x);
        else
            ConvertFullRate<Lanes>(source, x);
    }
    return x;
}

/// The samples of a full-depth run.
struct SampleSource {
    template <typename Lanes>
    ChromaTerms<Lanes> HalfRateTerms(std::size_t column) const {
        return TermsOfSamples<Lanes>(Lanes::LoadHalfRate(run.cb + column),
                                     Lanes::LoadHalfRate(run.cr + column));
    }
    template <typename Lanes>
    ChromaTerms<Lanes> FullRateTerms(std::size_t column) const {
        return TermsOfSamples<Lanes>(Lanes::LoadFullRate(run.cb + column),
                                     Lanes::LoadFullRate(run.cr + column));
    }
    template <typename Lanes>
    typename Lanes::Register Luma(std::size_t row, std::size_t x) const {
        return Lanes::LoadLuma(run.luma + row * run.lumaStride + x);
    }
    template <typename Lanes>
    typename Lanes::Register WideLuma(std::size_t x) const {
        return Lanes::LoadFullRate(run.luma + x);
    }

    const Run& run;
};

/// Converts the pixels of a run that fill no register.
template <std::size_t ChromaDivX, std::size_t Rows>
inline void ConvertRest(const Run& run, std::size_t begin) {
    for (std::size_t row = 0; row < Rows; ++row)
        for (std::size_t x = begin; x < run.pixels; ++x)
            run.destination[row * run.destinationStride + x] = AcceleratedArgbWord(
                run.luma[row * run.lumaStride + x], run.cb[x / ChromaDivX], run.cr[x / ChromaDivX]);
}

/// Converts a rectangle with each of the given register types in turn, the widest first. By value:
/// the compiler must assume that stores of registers change what a reference refers to.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename... Lanes>
inline void ConvertRectangle(Rectangle area) {
    WalkRuns<ChromaDivX, ChromaDivY>(area, [](const Run& run) {
        const SampleSource source{run};
        std::size_t x = 0;
        ((x = ConvertSteps<ChromaDivX, ChromaDivY, Lanes>(source, x)), ...);
        ConvertRest<ChromaDivX, ChromaDivY>(run, x);
    });
}

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
