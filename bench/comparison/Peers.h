#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Vostrel::bench {

/// The decoders to compare with. Each keeps its state and its memory from picture to picture, as a
/// viewer that cares for speed would have it, and throws std::runtime_error when it fails.

/// Pixels of a framebuffer: 32 bits each, rows without gaps.
struct Pixels {
    uint32_t* m_puiPixels;
    size_t m_uiWidth;
    size_t m_uiHeight;

    size_t Bytes() const { return sizeof(uint32_t) * m_uiWidth * m_uiHeight; }
};

/// libjpeg-turbo through its TurboJPEG interface.
class TurboJpeg {
public:
    enum class Mode {
        Default, ///< no flags: accurate transform, smooth chroma upsampling
        Fastest, ///< the fast transform, and chroma samples repeated
    };

    explicit TurboJpeg(Mode mode);

    /// Decodes a file to BGRA with its corner at a place of the framebuffer, into which it fits.
    void Decode(const std::vector<uint8_t>& file, const Pixels& target, size_t x = 0, size_t y = 0);

private:
    struct Deleter {
        void operator()(void* decompressor) const;
    };
    std::unique_ptr<void, Deleter> m_pDecompressor;
    int m_iFlags;
};

/// zlib over the bytes of the pixels.
class Zlib {
public:
    static std::vector<uint8_t> Encode(const Pixels& source, int level);
    static void Decode(const std::vector<uint8_t>& stream, const Pixels& target);
};

/// LZ4 over the bytes of the pixels, at its default level.
class Lz4 {
public:
    static std::vector<uint8_t> Encode(const Pixels& source);
    static void Decode(const std::vector<uint8_t>& block, const Pixels& target);
};

/// QOI.
class Qoi {
public:
    static std::vector<uint8_t> Encode(const Pixels& source);
    static void Decode(const std::vector<uint8_t>& file, const Pixels& target);
};

/// PNG by libpng, at its default level.
class Png {
public:
    static std::vector<uint8_t> Encode(const Pixels& source);
    static void Decode(const std::vector<uint8_t>& file, const Pixels& target);
};

} // namespace Vostrel::bench
