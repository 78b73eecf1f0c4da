#include "libimagedecoder/ImageDecoderIct.h"

#include <algorithm>

namespace Vostrel::libimagedecoder {
namespace {

using huff_entry_t = ImageDecoderIct::huff_entry_t;

/// DC luminance category by which an encoder aborts an update.
constexpr uint32_t AbortMarker = 12;

inline const huff_entry_t& DecodeCode(BitStreamReader& reader, const huff_entry_t* table) {
    const huff_entry_t& entry = table[reader.ReadStreamBits(16)];
    reader.StallStreamBits(entry.stallCount, entry.stallBits);
    return entry;
}

/// A value of size bits, 0..11: patterns with a clear top bit are negative (ITU-T T.81, EXTEND).
inline int32_t ReadCoefficient(BitStreamReader& reader, uint32_t size) {
    if (size == 0)
        return 0;
    const uint32_t bits = reader.ReadStreamBits(size);
    const bool positive = (bits & IImageDecoder::m_sign[size]) != 0;
    return static_cast<int32_t>(positive ? bits : bits - IImageDecoder::m_cats[size]);
}

/// level * multiplier >> 10, of which the transform takes the low 16 bits. A hostile predictor can
/// exceed 32 bits and then wraps.
inline int16_t Dequantise(int32_t level, int32_t multiplier) {
    const uint32_t product = static_cast<uint32_t>(level) * static_cast<uint32_t>(multiplier);
    return static_cast<int16_t>(static_cast<int32_t>(product) >> 10);
}

inline int32_t AddWrapping(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

} // namespace

bool ImageDecoderIct::HuffmannDecodeReorderDequantTile(BitStreamReader* reader, short* coefficients,
                                                       int* dcPredictor, const int* dequant,
                                                       const huff_entry_t* dcTable,
                                                       const huff_entry_t* acTable) const {
    std::fill_n(coefficients, TileCoefficients, short{0});

    const uint32_t category = DecodeCode(*reader, dcTable).size;
    if (category == AbortMarker)
        return false;
    *dcPredictor = AddWrapping(*dcPredictor, ReadCoefficient(*reader, category));
    coefficients[0] = Dequantise(*dcPredictor, dequant[m_auiReorder[0]]);

    for (size_t position = 0;;) {
        const huff_entry_t& code = DecodeCode(*reader, acTable);
        if (code.size == 0 && code.run == 0)
            return true;
        const int32_t level = ReadCoefficient(*reader, code.size);
        position += code.run + size_t{1};
        if (position >= TileCoefficients)
            ThrowStreamError();
        const size_t slot = m_auiReorder[position];
        coefficients[slot] = Dequantise(level, dequant[slot]);
    }
}

} // namespace Vostrel::libimagedecoder
