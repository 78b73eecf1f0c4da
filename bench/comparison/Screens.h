#pragma once

#include "tools/Picture.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Vostrel::bench {

/// The screens that rows speak of, of 1920x1088 pixels: the last row of pixels of a 1920x1080
/// screen is repeated to whole macroblocks, as an encoder does. So every decoder does the same
/// work.
enum class Screen { Desktop, Photo, Console };

const char* NameOf(Screen screen);

/// The console is a black screen with fifty lines of log at its left, which are two of the bundled
/// captures of 720x400.
streamencoder::Picture WholeScreen(Screen screen);

/// A part of a picture.
streamencoder::Picture Cut(const streamencoder::Picture& picture, size_t x, size_t y, size_t width,
                           size_t height);

/// The words of a picture in a framebuffer: alpha (255), red, green, blue.
std::vector<uint32_t> ArgbWords(const streamencoder::Picture& picture);

/// Throws std::logic_error unless framebuffer words show the picture, at some loss.
void CheckRecognisable(const std::vector<uint32_t>& words, const streamencoder::Picture& picture);

} // namespace Vostrel::bench
