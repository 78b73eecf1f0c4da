#include "libimagedecoder/YCbCr4xxToArgb32/Lanes128.h"
#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedPixels.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Accelerated.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

template <>
constinit const AcceleratedConversions YCbCr4xxToArgb32Sse2::s_Conversions =
    ConversionsWith<Lanes128>;

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
