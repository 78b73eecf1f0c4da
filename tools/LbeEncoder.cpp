#include "tools/LbeEncoder.h"

#include "libimagedecoder/LbeSyntax.h"
#include "libimagedecoder/UpdateSyntax.h"
#include "tools/LbePlaneWriter.h"

#include <stdexcept>
#include <vector>

namespace Vostrel::streamencoder {

using libimagedecoder::HighestLbeQuality;
using libimagedecoder::LbeLumaCountBits;
using libimagedecoder::LbeQuality;
using libimagedecoder::LowestLbeQuality;
using libimagedecoder::MacroblockEdge;
using libimagedecoder::RulesOf;
using libimagedecoder::s_aLbeQualities;

namespace {

LbeQuality DepthsOf(uint32_t quality, unsigned protocolVersion) {
    if (quality < LowestLbeQuality ||
        quality > HighestLbeQuality(RulesOf(protocolVersion).m_uiLbeQualityMask))
        throw std::invalid_argument(
            "An LBE quality is a number from 2 to 11, in protocol version 0 from 2 to 7");
    return s_aLbeQualities[quality - LowestLbeQuality];
}

} // namespace

LbeEncoder::LbeEncoder(const UpdateFormat& format, ChromaSubsampling chroma, uint32_t quality)
    : UpdateEncoder(Codec::Lbe, format, chroma, quality),
      m_depths(DepthsOf(quality, format.m_uiProtocolVersion)),
      m_auiLumaLevels(NearestLumaLevels(m_depths.m_uiLumaBits)),
      m_auiChromaLevels(NearestChromaLevels(m_depths.m_uiChromaBits)) {}

void LbeEncoder::EncodeBlock(const YCbCrPlanes& planes, size_t column, size_t row,
                             BitWriter& bits) {
    EncodeLuma(planes, column, row, bits);
    EncodeChroma(planes, column, row, bits);
}

void LbeEncoder::EncodeLuma(const YCbCrPlanes& planes, size_t column, size_t row,
                            BitWriter& bits) const {
    std::vector<uint16_t> levels;
    levels.reserve(MacroblockEdge * MacroblockEdge);
    for (size_t y = 0; y < MacroblockEdge; ++y) {
        for (size_t x = 0; x < MacroblockEdge; ++x) {
            levels.push_back(m_auiLumaLevels[*planes.m_y.At(column * MacroblockEdge + x,
                                                            row * MacroblockEdge + y)]);
        }
    }
    WriteLbePlane(levels, {levels.size(), MacroblockEdge, m_depths.m_uiLumaBits, LbeLumaCountBits},
                  bits);
}

void LbeEncoder::EncodeChroma(const YCbCrPlanes& planes, size_t column, size_t row,
                              BitWriter& bits) const {
    const size_t width = MacroblockEdge / ChromaDivX(GetChromaSubsampling());
    const size_t height = MacroblockEdge / ChromaDivY(GetChromaSubsampling());
    std::vector<uint16_t> values;
    values.reserve(width * height);
    for (size_t y = row * height; y < (row + 1) * height; ++y) {
        for (size_t x = column * width; x < (column + 1) * width; ++x) {
            const unsigned cb = m_auiChromaLevels[*planes.m_cb.At(x, y)];
            const unsigned cr = m_auiChromaLevels[*planes.m_cr.At(x, y)];
            values.push_back(static_cast<uint16_t>(cb << m_depths.m_uiChromaBits | cr));
        }
    }
    const uint32_t longRunBits = RulesOf(GetFormat().m_uiProtocolVersion).m_uiLbeChromaCountBits;
    WriteLbePlane(values, {values.size(), width, 2U * m_depths.m_uiChromaBits, longRunBits}, bits);
}

} // namespace Vostrel::streamencoder
