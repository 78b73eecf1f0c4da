#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/Picture.h"
#include "tools/recording/Recording.h"

#include <cstdint>
#include <vector>

namespace Vostrel::recording {

/// The memory that a recording's updates are drawn into: at first all zeros.
class Framebuffer {
public:
    /// Throws RecordingError for a framebuffer of more than MaxBodySize bytes.
    Framebuffer(const Settings& settings, ChromaSubsampling chroma);

    uint16_t GetWidth() const { return m_uiWidth; }
    uint16_t GetHeight() const { return m_uiHeight; }

    /// The picture bytes, in the order in which a recording's checksums take them.
    std::vector<uint8_t>& GetBytes() { return m_vuiBytes; }
    const std::vector<uint8_t>& GetBytes() const { return m_vuiBytes; }

    /// Where a plane (0 Y, 1 Cb, 2 Cr) begins; only for that sink.
    uint8_t* GetPlane(size_t plane);

    /// CRC-32 of the picture bytes, or of those of a rectangle of an ARGB framebuffer.
    uint32_t GetCrc(Coverage coverage, const libimagedecoder::UpdateRectangle& rectangle) const;

    /// An ARGB framebuffer without its alpha.
    streamencoder::Picture GetPicture() const;

private:
    uint16_t m_uiWidth;
    uint16_t m_uiHeight;
    Sink m_sink;
    size_t m_uiChromaSamples; ///< of one plane
    std::vector<uint8_t> m_vuiBytes;
};

} // namespace Vostrel::recording
