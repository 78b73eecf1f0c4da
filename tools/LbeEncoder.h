#pragma once

#include "libimagedecoder/LbePlaneDecoder.h"
#include "libimagedecoder/LbeQuality.h"
#include "tools/NearestLevels.h"
#include "tools/UpdateEncoder.h"

namespace Vostrel::streamencoder {

/// Encodes pictures as LBE updates: samples are reduced to the nearest levels of the quality's
/// depths, and those are coded without loss in the fewest bits.
class LbeEncoder : public UpdateEncoder {
public:
    /// quality: 2 (coarsest) to 11, in protocol version 0 to 7. The format's codec is not looked
    /// at. Throws std::invalid_argument for a quality out of range.
    LbeEncoder(const UpdateFormat& format, ChromaSubsampling chroma, uint32_t quality);

private:
    void EncodeBlock(const YCbCrPlanes& planes, size_t column, size_t row,
                     BitWriter& bits) override;
    void EncodeLuma(const YCbCrPlanes& planes, size_t column, size_t row, BitWriter& bits) const;
    void EncodeChroma(const YCbCrPlanes& planes, size_t column, size_t row, BitWriter& bits) const;

    libimagedecoder::LbeQuality m_depths;
    LevelMap m_auiLumaLevels;
    LevelMap m_auiChromaLevels;
};

} // namespace Vostrel::streamencoder
