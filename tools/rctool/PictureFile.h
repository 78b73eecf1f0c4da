#pragma once

#include "tools/recording/Framebuffer.h"

#include <string>

namespace Vostrel::rctool {

/// How pictures are written.
enum class PictureFormat {
    Png,
    Ppm,
    Argb,   ///< the framebuffer's words as they are: blue, green, red, alpha
    Planes, ///< Y, Cb and Cr samples, one plane after another
};

/// Writes what a framebuffer shows; for PNG and PPM an ARGB one. Throws std::runtime_error with the
/// path and the reason.
void WritePicture(const std::string& path, PictureFormat format,
                  const recording::Framebuffer& framebuffer);

/// The path of one of many pictures: a number before the extension.
std::string NumberedPath(const std::string& path, size_t number);

} // namespace Vostrel::rctool
