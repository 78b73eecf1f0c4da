#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

IYCbCr4xxToArgb32::IYCbCr4xxToArgb32(ILogger* logger) : m_pLogger(logger) {}

IYCbCr4xxToArgb32::~IYCbCr4xxToArgb32() = default;

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
