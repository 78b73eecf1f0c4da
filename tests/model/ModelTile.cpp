#include "tests/model/ModelTile.h"

#include "tests/model/ModelIntegers.h"

namespace Vostrel::model {

namespace {

/// A value of size bits: patterns with a clear top bit stand for the negative half.
int64_t ReadSigned(ModelBits& bits, int size) {
    if (size == 0)
        return 0;
    const int pattern = bits.Read(size);
    const bool positive = (pattern >> (size - 1)) == 1;
    return positive ? pattern : pattern - ((1 << size) - 1);
}

int64_t Dequantise(int64_t value, int64_t multiplier) {
    return Wrap16(FloorShift(Wrap32(value * multiplier), 10));
}

} // namespace

TileTable DecodeTile(ModelBits& bits, const TileCoding& coding, int64_t& dcPredictor) {
    TileTable coefficients{};
    const int dcSize = coding.dc->Decode(bits);
    if (dcSize == AbortSymbol)
        throw ModelError("StreamError");
    dcPredictor = Wrap32(dcPredictor + ReadSigned(bits, dcSize));
    coefficients[0] = Dequantise(dcPredictor, (*coding.dequantisation)[0]);

    for (int k = 0;;) {
        const int symbol = coding.ac->Decode(bits);
        if (symbol == 0)
            return coefficients;
        const int64_t value = ReadSigned(bits, symbol % 16);
        k += symbol / 16 + 1;
        if (k > 63)
            throw ModelError("StreamError");
        const auto position = static_cast<size_t>(ZigZag()[static_cast<size_t>(k)]);
        coefficients[position] = Dequantise(value, (*coding.dequantisation)[position]);
    }
}

} // namespace Vostrel::model
