#pragma once

#include "tools/rctool/Heatmap.h"
#include "tools/rctool/Progress.h"
#include "tools/recording/Framebuffer.h"

#include <cstdio>
#include <string>

namespace Vostrel::rctool {

/// Writes a PNG picture to a file that is open for writing: the sums in colours, not coded places
/// black, beside it the screen in grey, below both a legend with a title. A pixel of the screen has
/// its sum at the same coordinates of the picture. framebuffer: ARGB, of the heatmap's size. path:
/// for messages. progress: counts the screen's rows. Takes memory for a row. Throws
/// std::runtime_error, Interrupted.
void WriteHeatmap(std::FILE* file, const std::string& path, const Heatmap& heatmap,
                  const recording::Framebuffer& framebuffer, const std::string& title,
                  Progress& progress);

} // namespace Vostrel::rctool
