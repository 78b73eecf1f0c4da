#pragma once

#include "libimagedecoder/BitStreamReader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::libimagedecoder {

class ILogger;
class ImageDecoderRenderer;

/// Frame of an update decoder: the bit reader over the update stream, the renderer and logger, the
/// stream variant, and the rule that every whole byte fetched but not used goes back to the stream
/// at the end of an update, so that the next protocol message starts at the right byte.
///
/// Thread safety: one thread at a time. Pool workers never touch the frame's own bit reader.
class IImageDecoder : public BitStreamReader {
public:
    /// Renderer, stream and logger are not owned and must outlive the decoder.
    /// protocolVersion is 0, 1 or 2; chromaSubsampling is 0 = 4:2:0, 1 = 4:2:2, 2 = 4:4:4.
    /// Throws std::invalid_argument for any other value.
    IImageDecoder(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                  unsigned int protocolVersion, unsigned int chromaSubsampling);
    virtual ~IImageDecoder() = default;

    IImageDecoder(const IImageDecoder&) = delete;
    IImageDecoder& operator=(const IImageDecoder&) = delete;

    /// Sets the size of the remote framebuffer in pixels. Nothing happens when it is unchanged.
    /// Throws std::bad_alloc and keeps the old resolution when memory runs out.
    virtual void SetResolution(unsigned short width, unsigned short height) = 0;

    /// Decodes one update of the rectangle (x, y, width, height), in framebuffer pixels, from the
    /// stream's current position. What quality and result mean is the encoding's business;
    /// reserved is not read. Errors of stream and encoding propagate, and then no byte is given
    /// back.
    uint64_t HandleUpdate(unsigned int quality, unsigned short reserved, unsigned short x,
                          unsigned short y, unsigned short width, unsigned short height);

    /// Sign extension of a coefficient of n bits, n = 0..11: the bit that marks it positive, and
    /// the value to subtract when that bit is clear.
    static constexpr std::array<uint32_t, 12> m_sign = {0x000, 0x001, 0x002, 0x004, 0x008, 0x010,
                                                        0x020, 0x040, 0x080, 0x100, 0x200, 0x400};
    static constexpr std::array<uint32_t, 12> m_cats = {0x000, 0x001, 0x003, 0x007, 0x00F, 0x01F,
                                                        0x03F, 0x07F, 0x0FF, 0x1FF, 0x3FF, 0x7FF};

protected:
    virtual uint64_t HandleUpdateImplementation(unsigned int quality, unsigned short reserved,
                                                unsigned short x, unsigned short y,
                                                unsigned short width, unsigned short height) = 0;

    ImageDecoderRenderer* m_pRenderer;
    ILogger* m_pLogger;
    uint32_t m_uiProtocolVersion;
    uint32_t m_uiChromaSubsampling;
    uint32_t m_uiChromaDivX;      ///< luma columns per chroma sample: 2, 2, 1
    uint32_t m_uiChromaDivY;      ///< luma rows per chroma sample: 2, 1, 1
    uint32_t m_uiLongCountBits;   ///< width of a long skip count: 14 in version 0, else 16
    uint32_t m_uiLongCountEscape; ///< the long count that ends an update: all ones
    std::vector<uint8_t> m_vecSegmentStore; ///< stream bytes of the current update's jobs
    size_t m_uiSegmentStoreUsed = 0;
};

} // namespace Vostrel::libimagedecoder
