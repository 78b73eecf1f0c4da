#include "libimagedecoder/YCbCr4xxToArgb32/Lanes128.h"
#include "libimagedecoder/YCbCr4xxToArgb32/Lanes256.h"
#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedPixels.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Accelerated.h"

// This file is compiled for AVX2. It must not instantiate inline functions with external linkage
// (the standard library's among them), which the linker might choose for the whole library.

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

template <>
constinit const AcceleratedConversions YCbCr4xxToArgb32Avx2::s_Conversions =
    ConversionsWith<Lanes256, Lanes128>;

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
