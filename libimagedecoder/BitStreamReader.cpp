#include "libimagedecoder/BitStreamReader.h"

#include <stdexcept>

namespace Vostrel::libimagedecoder {

void BitStreamReader::ThrowStallOverflow() {
    throw std::invalid_argument(
        "The given arguments to StallStreamBits would overflow the internal buffer!");
}

} // namespace Vostrel::libimagedecoder
