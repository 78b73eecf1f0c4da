#pragma once

#include "bench/comparison/LevelPicture.h"
#include "bench/comparison/Screens.h"

#include <cstdint>
#include <vector>

namespace Vostrel::bench {

/// A picture as an ICT update and as a JPEG file of the same levels.
struct IctAndJpeg {
    streamencoder::EncodedUpdate m_update;
    std::vector<uint8_t> m_jpeg;
};

/// Quantises a picture, writes the levels as JPEG, reads that file's levels back and codes those as
/// an ICT update at a place of the framebuffer. Throws std::logic_error when the levels differ.
///
/// The update is of protocol version 0, whose predictors go on from macroblock to macroblock like
/// those of JPEG.
IctAndJpeg EncodeBoth(const streamencoder::Picture& picture,
                      streamencoder::ChromaSubsampling chroma, uint32_t quality, uint16_t x = 0,
                      uint16_t y = 0);

double JpegBitsPerPixel(const IctAndJpeg& encoded);

} // namespace Vostrel::bench
