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

/// The format that a file's extension names (.png, .ppm, .argb, .planes); PNG without one. Throws
/// std::invalid_argument for another one.
PictureFormat FormatOf(const std::string& path);

/// Writes what a framebuffer shows; for PNG and PPM an ARGB one. Throws std::runtime_error with the
/// path and the reason; a file that exists is one unless it is to be replaced.
void WritePicture(const std::string& path, PictureFormat format,
                  const recording::Framebuffer& framebuffer, bool replace);

/// The path of one of many pictures: a number before the extension.
std::string NumberedPath(const std::string& path, size_t number);

} // namespace Vostrel::rctool
