#pragma once

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

/// The colours of one pair of depths.
struct QuantizedColours {
    unsigned int lumaBits;   ///< 2 to 6
    unsigned int chromaBits; ///< 3 to 5
    /// The words of all colours, indexed by (luma level << 2 * chromaBits) + chroma value. Not
    /// owned.
    const std::uint32_t* table;

    /// Planes may still hold deeper samples of an earlier update: bits above the depths do not
    /// count.
    std::uint32_t Word(unsigned int luma, unsigned int chroma) const {
        const unsigned int lumaMask = (1U << lumaBits) - 1;
        const unsigned int chromaMask = (1U << 2 * chromaBits) - 1;
        return table[(luma & lumaMask) << 2 * chromaBits | (chroma & chromaMask)];
    }
};

/// A rectangle of reduced-depth samples and where its pixels go, all pointers at the top-left one.
struct QuantizedRectangle {
    std::uint32_t* destination;
    const std::uint8_t* luma;    ///< a level per pixel
    const std::uint16_t* chroma; ///< a value per chroma position: Cb level above Cr level
    std::size_t width;           ///< in luma pixels
    std::size_t height;
    std::size_t destinationStride; ///< in pixels
    std::size_t lumaStride;        ///< in samples
    std::size_t chromaStride;      ///< in values
    const bool* skipMask;          ///< as in the conversions of full depth
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
