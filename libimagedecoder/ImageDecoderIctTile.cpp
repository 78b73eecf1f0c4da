#include "libimagedecoder/IctSyntax.h"
#include "libimagedecoder/ImageDecoderIct.h"

#include <algorithm>

namespace Vostrel::libimagedecoder {
namespace {

using huff_entry_t = ImageDecoderIct::huff_entry_t;

inline const huff_entry_t& DecodeCode(BitStreamReader& reader, const huff_entry_t* table) {
    const huff_entry_t& entry = table[reader.ReadStreamBits(16)];
    reader.StallStreamBits(entry.stallCount, entry.stallBits);
    return entry;
}

inline int32_t ReadCoefficient(BitStreamReader& reader, uint32_t size) {
    return size == 0 ? 0 : ExtendIctValue(reader.ReadStreamBits(size), size);
}

/// A hostile predictor can exceed 32 bits and then wraps.
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
    if (category == IctAbortMarker)
        return false;
    *dcPredictor = AddWrapping(*dcPredictor, ReadCoefficient(*reader, category));
    coefficients[0] = IctFastTables::Dequantise(*dcPredictor, dequant[m_auiReorder[0]]);

    for (size_t position = 0;;) {
        const huff_entry_t& code = DecodeCode(*reader, acTable);
        if (code.size == 0 && code.run == 0)
            return true;
        const int32_t level = ReadCoefficient(*reader, code.size);
        position += code.run + size_t{1};
        if (position >= TileCoefficients)
            ThrowStreamError();
        const size_t slot = m_auiReorder[position];
        coefficients[slot] = IctFastTables::Dequantise(level, dequant[slot]);
    }
}

} // namespace Vostrel::libimagedecoder
