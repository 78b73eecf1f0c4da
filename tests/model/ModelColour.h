#pragma once

#include "tests/model/ModelKernelRule.h"

#include <cstdint>

namespace Vostrel::model {

/// The ARGB32 word of 8-bit samples, alpha 255.
uint32_t ToArgb(int64_t y, int64_t cb, int64_t cr, KernelRule rule);

/// The 8-bit luma sample of a level of 2..6 bits.
int64_t ExpandLuma(int64_t level, int bits);

/// The 8-bit chroma sample of a level of 3..5 bits, given as its two's-complement pattern.
int64_t ExpandChroma(int64_t pattern, int bits);

/// The ARGB32 word of a luma level and a packed chroma value (the Cb level above the Cr level).
uint32_t ReducedDepthToArgb(int64_t luma, int64_t chroma, int lumaBits, int chromaBits);

/// What contrast enhancement of a level 0..100 makes of a luma value of 2..8 (not 7) bits.
int64_t StretchContrast(int64_t luma, int level, int bits);

/// Pulls a converted pixel's brightness back to its luma sample.
uint32_t AdjustToLuma(uint32_t argb, int64_t y);

} // namespace Vostrel::model
