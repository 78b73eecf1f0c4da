#include "tools/recording/Framebuffer.h"

#include "tools/recording/RecordingFormat.h"

#include <zlib.h>

#include <algorithm>

namespace Vostrel::recording {
namespace {

constexpr size_t PixelBytes = 4;

size_t CheckedSize(const Settings& settings, ChromaSubsampling chroma) {
    const uint64_t size = PictureSize(settings, chroma);
    if (size > MaxBodySize)
        throw RecordingError("The framebuffer is too large");
    return size;
}

} // namespace

Framebuffer::Framebuffer(const Settings& settings, ChromaSubsampling chroma)
    : m_uiWidth(settings.m_uiWidth), m_uiHeight(settings.m_uiHeight), m_sink(settings.m_sink),
      m_uiChromaSamples(size_t{m_uiWidth} / ChromaDivX(chroma) *
                        (size_t{m_uiHeight} / ChromaDivY(chroma))),
      m_vuiBytes(CheckedSize(settings, chroma)) {}

uint8_t* Framebuffer::GetPlane(size_t plane) {
    const size_t lumaSamples = size_t{m_uiWidth} * m_uiHeight;
    return m_vuiBytes.data() + (plane == 0 ? 0 : lumaSamples + (plane - 1) * m_uiChromaSamples);
}

uint32_t Framebuffer::GetCrc(Coverage coverage,
                             const libimagedecoder::UpdateRectangle& rectangle) const {
    if (coverage == Coverage::Framebuffer)
        return Crc32(m_vuiBytes);
    uLong crc = 0;
    if (rectangle.m_uiX >= m_uiWidth || m_sink != Sink::Argb)
        return 0;
    const size_t columns = std::min<size_t>(rectangle.m_uiWidth, m_uiWidth - rectangle.m_uiX);
    const size_t bottom = std::min<size_t>(rectangle.m_uiY + rectangle.m_uiHeight, m_uiHeight);
    for (size_t y = rectangle.m_uiY; y < bottom; ++y) {
        const uint8_t* row = &m_vuiBytes[PixelBytes * (y * m_uiWidth + rectangle.m_uiX)];
        crc = crc32_z(crc, row, PixelBytes * columns);
    }
    return static_cast<uint32_t>(crc);
}

streamencoder::Picture Framebuffer::GetPicture() const {
    streamencoder::Picture picture(m_uiWidth, m_uiHeight);
    const uint8_t* argb = m_vuiBytes.data();
    for (streamencoder::RgbPixel& pixel : picture.m_vPixels) {
        pixel = {argb[2], argb[1], argb[0]};
        argb += PixelBytes;
    }
    return picture;
}

} // namespace Vostrel::recording
