#pragma once

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

/// The rectangle of one conversion of full depth; see IYCbCr4xxToArgb32.
struct Rectangle {
    std::uint32_t* destination;
    const std::uint8_t* luma;
    const std::uint8_t* cb;
    const std::uint8_t* cr;
    std::size_t width;
    std::size_t height;
    std::size_t destinationStride;
    std::size_t lumaStride;
    std::size_t chromaStride;
    const bool* skipMask;
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
