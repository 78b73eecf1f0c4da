#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/libimagedecoder/KernelTables.h"
#include "tests/model/KernelModels.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

using Variant = KernelVariant<std::shared_ptr<IYCbCr4xxToArgb32>>;
using model::ChromaDivisors;
using model::KernelRule;
using Words = std::vector<std::uint32_t>;
using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint32_t Untouched = 0x12345678;

inline std::vector<Variant> VariantsOfThisProcessor() {
    return RunnableVariants(YCbCr4xxToArgb32Factory::GetVariants());
}

/// One of the three conversions and its chroma geometry.
struct Sampling {
    const char* name;
    decltype(&IYCbCr4xxToArgb32::Convert420) convert;
    ChromaDivisors divisors;
};

inline constexpr Sampling Sampling420{"4:2:0", &IYCbCr4xxToArgb32::Convert420, {2, 2}};
inline constexpr Sampling Sampling422{"4:2:2", &IYCbCr4xxToArgb32::Convert422, {2, 1}};
inline constexpr Sampling Sampling444{"4:4:4", &IYCbCr4xxToArgb32::Convert444, {1, 1}};
inline constexpr Sampling AllSamplings[] = {Sampling420, Sampling422, Sampling444};

/// Samples for a rectangle with packed rows, a mask and where the pixels go.
struct Picture {
    Picture(unsigned short pictureWidth, unsigned short pictureHeight)
        : width(pictureWidth), height(pictureHeight), y(Pixels()), cb(Pixels()), cr(Pixels()),
          destination(Pixels(), Untouched),
          mask(new bool[(Pixels() >> 8) + width / 16U + height / 16U + 2]()) {}

    std::size_t Pixels() const { return std::size_t{width} * height; }

    void ConvertWith(const IYCbCr4xxToArgb32& kernel, const Sampling& sampling) {
        (kernel.*sampling.convert)(destination.data(), y.data(), cb.data(), cr.data(), width,
                                   height, width, width, width / sampling.divisors.x, mask.get());
    }

    Words ModelResult(const Sampling& sampling, KernelRule rule) const {
        Words words(Pixels(), Untouched);
        model::ConvertToArgb({y.data(), cb.data(), cr.data(), width, height, width,
                              width / sampling.divisors.x, mask.get()},
                             sampling.divisors, rule, words.data(), width);
        return words;
    }

    unsigned short width;
    unsigned short height;
    Bytes y;
    Bytes cb;
    Bytes cr;
    Words destination;
    std::unique_ptr<bool[]> mask;
};

class YCbCr4xxToArgb32Variant : public testing::TestWithParam<Variant> {
protected:
    /// One colour on a block large enough for every step width.
    std::uint32_t ConvertOneColour(const Sampling& sampling, std::uint8_t y, std::uint8_t cb,
                                   std::uint8_t cr) {
        Picture picture(64, 2);
        std::ranges::fill(picture.y, y);
        std::ranges::fill(picture.cb, cb);
        std::ranges::fill(picture.cr, cr);
        picture.ConvertWith(*m_pKernel, sampling);
        EXPECT_EQ(picture.destination, Words(128, picture.destination[0]));
        return picture.destination[0];
    }

    tests::RecordingLogger m_Logger;
    std::shared_ptr<IYCbCr4xxToArgb32> m_pKernel = GetParam().m_pMake(&m_Logger);
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
