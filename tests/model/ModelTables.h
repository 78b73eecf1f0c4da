#pragma once

#include "tests/model/ModelBits.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Vostrel::model {

/// A table over the 64 positions of an 8x8 tile in row-major order.
using TileTable = std::array<int64_t, 64>;

/// A canonical Huffman code, written down as JPEG does: how many codes there are of each length,
/// and the symbols in the order of their codes.
class HuffmanTable {
public:
    HuffmanTable(const std::array<int, 16>& codesOfLength, const std::vector<int>& symbols);

    /// Reads one symbol. Patterns above the last code count as the last code.
    int Decode(ModelBits& bits) const;

private:
    struct Code {
        int length;
        int bits;
        int symbol;
    };
    std::vector<Code> m_vCodes;
    std::vector<size_t> m_vCodeOf; ///< index of the code that 16 bits start with
};

/// JPEG's codes of Annex K; the luminance DC table has the abort marker behind its last code.
const HuffmanTable& DcLuminance();
const HuffmanTable& AcLuminance();
const HuffmanTable& DcChrominance();
const HuffmanTable& AcChrominance();

/// The DC luminance symbol that aborts an update.
constexpr int AbortSymbol = 12;

/// Row-major position of the k-th coefficient on the diagonal scan, k = 0..63.
const std::array<int, 64>& ZigZag();

/// What a quantised coefficient is multiplied with (in units of 2^-10) before the transform, for a
/// quality level 0..15.
const TileTable& LumaDequantisation(int level);
const TileTable& ChromaDequantisation(int level);

/// One such multiplier: the step of the encoder's reciprocal, normalised and scaled.
int64_t DequantisationValue(int quant, double scale, int shift, int fractionBits, double norm);

} // namespace Vostrel::model
