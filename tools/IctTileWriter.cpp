#include "tools/IctTileWriter.h"

#include "libimagedecoder/IctCodingTables.h"

#include <bit>
#include <cstdlib>

namespace Vostrel::streamencoder {

using libimagedecoder::HuffmanYCbCrDcAc;
using libimagedecoder::IctCodingTables;

namespace {

constexpr unsigned EndOfBlock = 0x00;
constexpr unsigned ZeroRunOf16 = 0xF0;

unsigned BitSize(int value) {
    return static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(value))));
}

void WriteSymbol(std::span<const HuffmanYCbCrDcAc::HuffCodeEntry> table, unsigned symbol,
                 BitWriter& bits) {
    bits.Write(table[symbol].m_uiCode, table[symbol].m_uiLength);
}

/// A value of bit size n as n bits: a negative one counts up from the most negative of its size, so
/// that a leading 0 tells the sign.
void WriteValue(int value, BitWriter& bits) {
    const unsigned size = BitSize(value);
    const int pattern = value < 0 ? value + (1 << size) - 1 : value;
    bits.Write(static_cast<uint32_t>(pattern), size);
}

} // namespace

IctComponentCode IctComponentCode::Luma() {
    return {HuffmanYCbCrDcAc::s_aDcLuminance, HuffmanYCbCrDcAc::s_aAcLuminance};
}

IctComponentCode IctComponentCode::Chroma() {
    return {HuffmanYCbCrDcAc::s_aDcChrominance, HuffmanYCbCrDcAc::s_aAcChrominance};
}

void WriteIctTile(const IctLevels& levels, const IctComponentCode& code, int& dcPredictor,
                  BitWriter& bits) {
    const int difference = levels[0] - dcPredictor;
    WriteSymbol(code.m_dc, BitSize(difference), bits);
    WriteValue(difference, bits);
    dcPredictor = levels[0];

    unsigned run = 0;
    for (size_t k = 1; k < 64; ++k) {
        const int level = levels[IctCodingTables::s_aZigZagTile[k]];
        if (level == 0) {
            ++run;
            continue;
        }
        for (; run > 15; run -= 16) {
            WriteSymbol(code.m_ac, ZeroRunOf16, bits);
        }
        WriteSymbol(code.m_ac, run << 4 | BitSize(level), bits);
        WriteValue(level, bits);
        run = 0;
    }
    WriteSymbol(code.m_ac, EndOfBlock, bits);
}

} // namespace Vostrel::streamencoder
