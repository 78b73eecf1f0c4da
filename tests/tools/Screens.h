#pragma once

#include "tools/PngFile.h"

#include <cmath>
#include <string>

namespace Vostrel::streamencoder {

/// One of the bundled screens, e.g. "console-720x400-00".
inline Picture Screen(const std::string& name) {
    return ReadPng(TEST_DATA_DIR "/screens/" + name + ".png");
}

/// A part of a picture.
inline Picture Crop(const Picture& picture, size_t left, size_t top, size_t width, size_t height) {
    Picture part(width, height);
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            part.At(x, y) = picture.At(left + x, top + y);
        }
    }
    return part;
}

/// Peak signal-to-noise ratio in decibels over the first width x height samples of two rows of
/// samples with their own strides.
inline double Psnr(const uint8_t* a, size_t strideA, const uint8_t* b, size_t strideB, size_t width,
                   size_t height) {
    double squares = 0;
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            const double error = a[y * strideA + x] - b[y * strideB + x];
            squares += error * error;
        }
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(width * height) / squares);
}

} // namespace Vostrel::streamencoder
