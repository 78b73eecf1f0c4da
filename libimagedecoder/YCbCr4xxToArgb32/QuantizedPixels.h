#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/AcceleratedPixels.h"
#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedLevelPlanes.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Accelerated.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

// The colours of reduced depth by calculation: what the tables say, in a sixth to a half of the
// time of reading them (bench: DrawQuantized). In an unnamed namespace for the reason that
// MaskRuns.h gives.
//
// The tables hold the portable colour of expanded levels, and every step of that is a whole-number
// line with one rounding. high(p), the upper 16 bits of a product, divides by 65536 and rounds
// down, so a line is high((scaled argument + offset) * slope), with an offset that moves the
// rounding to where it belongs. In 16 bits slopes and offsets are coarse; these fit every level of
// their depth, which is all that a level can be:
//   luma       level * factor, plus level >> 1 in 3 bits: 36.43 is no whole factor
//   chroma     high((level * 2^(11 - depth) + 4) * slope), but at least -128: level * 127 over the
//              largest level. It is the sample less 128, from -128 to 127.
//   terms      high((chroma * 64 + offset) * coefficient): the coefficients are the portable rule's
//              (1.402, 1.772, 0.344 and 0.714 times 1024), and the offsets stand for its 512 / 1024
namespace {

/// The constants of a pair of depths.
struct LevelRule {
    explicit LevelRule(const QuantizedColours& colours)
        : lumaMask(static_cast<short>(0x0101 * ((1 << colours.lumaBits) - 1))),
          lumaFactor(LumaFactors[colours.lumaBits]),
          crToTop(static_cast<short>(1 << (16 - colours.chromaBits))),
          cbToTop(static_cast<short>(1 << (16 - 2 * colours.chromaBits))),
          topLevel(static_cast<short>(-(1 << (16 - colours.chromaBits)))),
          chromaSlope(ChromaSlopes[colours.chromaBits]) {}

    static constexpr short LumaFactors[] = {0, 0, 85, 36, 17, 8, 4};
    static constexpr short ChromaSlopes[] = {0, 0, 0, 10838, 9289, 8673};

    short lumaMask; ///< Of two bytes, so that it serves lanes of one and of two.
    short lumaFactor;
    short crToTop; ///< Multiplier that moves a value's Cr level to the top of its 16 bits.
    short cbToTop;
    short topLevel; ///< Mask of a level there.
    short chromaSlope;
};

/// The levels of a reduced-depth run. Bits above the depths drop out.
template <bool LumaOf3Bits>
struct LevelSource {
    template <typename Lanes>
    ChromaTerms<Lanes> HalfRateTerms(std::size_t column) const {
        return Terms<Lanes>(Lanes::LoadHalfRate(run.chroma + column));
    }
    template <typename Lanes>
    ChromaTerms<Lanes> FullRateTerms(std::size_t column) const {
        return Terms<Lanes>(Lanes::LoadFullRate(run.chroma + column));
    }
    template <typename Lanes>
    typename Lanes::Register Luma(std::size_t row, std::size_t x) const {
        return ExpandLuma<Lanes>(Lanes::LoadLuma(run.luma + row * run.lumaStride + x));
    }
    template <typename Lanes>
    typename Lanes::Register WideLuma(std::size_t x) const {
        return ExpandLuma<Lanes>(Lanes::LoadFullRate(run.luma + x));
    }

    /// Lanes of one or of two bytes: no product passes 255, so none reaches into the next lane.
    template <typename Lanes>
    typename Lanes::Register ExpandLuma(typename Lanes::Register samples) const {
        const auto levels = Lanes::And(samples, rule.lumaMask);
        const auto products = Lanes::MultiplyLow(levels, rule.lumaFactor);
        if constexpr (LumaOf3Bits)
            return Lanes::Add16(products,
                                Lanes::And(Lanes::template ShiftRight<1>(levels), 0x0303));
        else
            return products;
    }

    /// A line of the header's list; argument scaled already.
    template <typename Lanes>
    static typename Lanes::Register Line(typename Lanes::Register argument, short offset,
                                         short slope) {
        return Lanes::MultiplyHigh(Lanes::Add16(argument, Lanes::Spread16(offset)), slope);
    }

    /// 64 times chroma, from a level in the upper bits of each lane and zeros below it.
    template <typename Lanes>
    typename Lanes::Register ScaledChroma(typename Lanes::Register topLevels) const {
        const auto chroma =
            Line<Lanes>(Lanes::template ShiftRight<5>(topLevels), 4, rule.chromaSlope);
        return Lanes::template ShiftLeft<6>(Lanes::AtLeast(chroma, -128));
    }

    template <typename Lanes>
    ChromaTerms<Lanes> Terms(typename Lanes::Register values) const {
        const auto cr = ScaledChroma<Lanes>(Lanes::MultiplyLow(values, rule.crToTop));
        const auto cb = ScaledChroma<Lanes>(
            Lanes::And(Lanes::MultiplyLow(values, rule.cbToTop), rule.topLevel));
        const auto takenFromGreen =
            Lanes::Add16(Line<Lanes>(cb, 93, 352), Line<Lanes>(cr, 45, 731));
        return {Line<Lanes>(cr, 23, 1435), Lanes::Negate16(takenFromGreen),
                Line<Lanes>(cb, 18, 1814)};
    }

    QuantizedRun run;
    LevelRule rule;
};

/// Converts a rectangle with each of the given register types in turn, the widest first.
template <bool LumaOf3Bits, std::size_t ChromaDivX, std::size_t ChromaDivY, typename... Lanes>
inline void ConvertLevels(const QuantizedRectangle& area, const QuantizedColours& colours) {
    const LevelRule rule(colours);
    WalkRuns<ChromaDivX, ChromaDivY>(area, [&](const QuantizedRun& run) {
        const LevelSource<LumaOf3Bits> source{run, rule};
        std::size_t x = 0;
        ((x = ConvertSteps<ChromaDivX, ChromaDivY, Lanes>(source, x)), ...);
        ReadTable<ChromaDivX, ChromaDivY>(run, x, colours);
    });
}

/// The same; the one depth of luma with a step more has code of its own.
template <std::size_t ChromaDivX, std::size_t ChromaDivY, typename... Lanes>
inline void ConvertQuantizedRectangle(const QuantizedRectangle& area,
                                      const QuantizedColours& colours) {
    if (colours.lumaBits == 3)
        ConvertLevels<true, ChromaDivX, ChromaDivY, Lanes...>(area, colours);
    else
        ConvertLevels<false, ChromaDivX, ChromaDivY, Lanes...>(area, colours);
}

/// All conversions with the given register types, the widest first.
template <typename... Lanes>
constexpr AcceleratedConversions ConversionsWith = {
    ConvertRectangle<2, 2, Lanes...>,          ConvertRectangle<2, 1, Lanes...>,
    ConvertRectangle<1, 1, Lanes...>,          ConvertQuantizedRectangle<2, 2, Lanes...>,
    ConvertQuantizedRectangle<2, 1, Lanes...>, ConvertQuantizedRectangle<1, 1, Lanes...>};

} // namespace

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
