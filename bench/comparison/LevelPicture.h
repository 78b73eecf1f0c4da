#pragma once

#include "tools/IctQuantiser.h"
#include "tools/Picture.h"
#include "tools/UpdateEncoder.h"
#include "tools/UpdateFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::bench {

/// The quantised levels of one component, tile by tile in row order.
struct LevelPlane {
    size_t m_uiColumns = 0; ///< tiles in a row
    size_t m_uiRows = 0;
    std::vector<streamencoder::IctLevels> m_vTiles;

    LevelPlane() = default;
    LevelPlane(size_t columns, size_t rows)
        : m_uiColumns(columns), m_uiRows(rows), m_vTiles(columns * rows) {}

    bool operator==(const LevelPlane&) const = default;
};

/// A picture of whole 16x16 macroblocks as its quantised levels: what an ICT update and a JPEG file
/// both code without loss, in the same code tables.
struct LevelPicture {
    size_t m_uiWidth = 0;
    size_t m_uiHeight = 0;
    streamencoder::ChromaSubsampling m_chroma{};
    std::array<LevelPlane, 3> m_aPlanes; ///< Y, Cb, Cr

    bool operator==(const LevelPicture&) const = default;
};

/// A level picture without levels, its planes of the right sizes.
LevelPicture EmptyLevelPicture(size_t width, size_t height,
                               streamencoder::ChromaSubsampling chroma);

/// Quantises a picture as an ICT encoder does at that quality, edges rounded up to whole
/// macroblocks.
LevelPicture QuantisePicture(const streamencoder::Picture& picture,
                             streamencoder::ChromaSubsampling chroma, uint32_t quality);

/// The quantiser steps of that quality, row-major, in the units of a JPEG file.
std::array<unsigned, 64> QuantiserSteps(bool luma, uint32_t quality);

/// Codes the macroblocks whose entry in coded (row order) is true, all of them when it is empty, as
/// one ICT update at a place of the framebuffer.
streamencoder::EncodedUpdate WriteIctUpdate(const LevelPicture& picture, uint32_t quality,
                                            const streamencoder::UpdateFormat& format,
                                            uint16_t x = 0, uint16_t y = 0,
                                            const std::vector<bool>& coded = {});

} // namespace Vostrel::bench
