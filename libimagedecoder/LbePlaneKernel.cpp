#include "libimagedecoder/LbePlaneKernel.h"

#include <cstring>

namespace Vostrel::libimagedecoder {

LbePlaneBytes::LbePlaneBytes() {
    std::memset(Low() - VectorBytes, 0, VectorBytes);
    std::memset(High() - VectorBytes, 0, VectorBytes);
}

void LbePlaneBytes::Assign(const uint16_t* samples, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        Low()[i] = static_cast<uint8_t>(samples[i]);
        High()[i] = static_cast<uint8_t>(samples[i] >> 8);
    }
}

} // namespace Vostrel::libimagedecoder
