#include "libimagedecoder/IctCodingTables.h"
#include "libimagedecoder/ImageDecoderIct.h"

#include <cstring>

namespace Vostrel::libimagedecoder {
namespace {

constexpr size_t DecodeTableEntries = 65536;
constexpr uint8_t Unfilled = 0xFF;

/// Fractional bits that a coefficient keeps until the tile decoder shifts them out.
constexpr unsigned int DequantShift = 10;

} // namespace

void ImageDecoderIct::CreateHuffDecodeTableFromEncodeTable(
    std::vector<huff_entry_t>& decodeTable, const HuffmanYCbCrDcAc::HuffCodeEntry* encodeTable,
    size_t symbols) {
    for (size_t symbol = 0; symbol < symbols; ++symbol) {
        const auto& code = encodeTable[symbol];
        if (code.m_uiLength == 0)
            continue;
        const auto stallCount = static_cast<uint8_t>(16 - code.m_uiLength);
        const auto index = static_cast<uint16_t>(code.m_uiCode << stallCount);
        decodeTable[index] = {static_cast<uint8_t>(symbol & 15), static_cast<uint8_t>(symbol >> 4),
                              stallCount, 0};
    }
    huff_entry_t code{};
    for (size_t index = 0; index < decodeTable.size(); ++index) {
        if (decodeTable[index].size != Unfilled) {
            code = decodeTable[index];
            continue;
        }
        code.stallBits = static_cast<uint16_t>(index & ((1u << code.stallCount) - 1));
        decodeTable[index] = code;
    }
}

void ImageDecoderIct::HookUpHuffDecodeTables() {
    const auto hookUp = [](std::vector<huff_entry_t>& decodeTable, const auto& encodeTable) {
        decodeTable.assign(DecodeTableEntries, {Unfilled, Unfilled, Unfilled, 0xFFFF});
        CreateHuffDecodeTableFromEncodeTable(decodeTable, encodeTable.data(), encodeTable.size());
    };
    hookUp(m_vDcLuminance, HuffmanYCbCrDcAc::s_aDcLuminance);
    hookUp(m_vAcLuminance, HuffmanYCbCrDcAc::s_aAcLuminance);
    hookUp(m_vDcChrominance, HuffmanYCbCrDcAc::s_aDcChrominance);
    hookUp(m_vAcChrominance, HuffmanYCbCrDcAc::s_aAcChrominance);
}

void ImageDecoderIct::HookUpTileIndexZigZagAndReorderTable() {
    const unsigned char* const permutation = m_pInverseIct->GetTileIndexPermutation();
    for (size_t k = 0; k < TileCoefficients; ++k)
        m_auiReorder[k] = permutation[IctCodingTables::s_aZigZagTile[k]];
}

int64_t ImageDecoderIct::CalcDequantDenormDescaleTableValue(unsigned int quant, double scale,
                                                            unsigned char shift,
                                                            unsigned char fracBits, double norm) {
    const double step = 8192.0 / static_cast<double>(QuantiserReciprocal(quant, scale, shift));
    const double scaled = step * static_cast<double>(uint64_t{1} << fracBits) * norm;
    return static_cast<int64_t>(RoundHalfUp(scaled));
}

void ImageDecoderIct::HookUpDequantDenormDescaleTiles() {
    const unsigned char* const permutation = m_pInverseIct->GetTileIndexPermutation();
    const double* const norms = m_pInverseIct->GetNormalizationFactors();
    const auto fracBits =
        static_cast<unsigned char>(m_pInverseIct->GetScalingAsShift() + DequantShift);
    const IctQuality& quality = IctCodingTables::s_aQualityTable[m_uiQualityLevel];
    for (size_t position = 0; position < TileCoefficients; ++position) {
        const double norm = norms[position / TileEdge] * norms[position % TileEdge];
        const auto multiplier = [&](uint32_t quant) {
            return static_cast<int32_t>(CalcDequantDenormDescaleTableValue(
                quant, quality.m_fScale, quality.m_uiShift, fracBits, norm));
        };
        const size_t slot = permutation[position];
        m_aiLumDequant[slot] = multiplier(IctCodingTables::s_aLumQuantBaseTile[position]);
        m_aiChromaDequant[slot] = multiplier(IctCodingTables::s_aChromaQuantBaseTile[position]);
    }
    m_LumaFastTables.SetDequantisation(m_auiReorder, m_aiLumDequant);
    m_ChromaFastTables.SetDequantisation(m_auiReorder, m_aiChromaDequant);
}

void ImageDecoderIct::SetQuality(unsigned int quality) {
    const auto level = static_cast<uint8_t>(quality & 15);
    if (level == m_uiQualityLevel)
        return;
    m_uiQualityLevel = level;
    HookUpDequantDenormDescaleTiles();
}

} // namespace Vostrel::libimagedecoder
