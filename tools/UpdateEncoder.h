#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/BitWriter.h"
#include "tools/Picture.h"
#include "tools/UpdateFormat.h"
#include "tools/UpdateWriter.h"
#include "tools/YCbCrPlanes.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vostrel::streamencoder {

/// One framebuffer update as a device sends it.
struct EncodedUpdate {
    uint32_t m_uiQuality = 0;
    libimagedecoder::UpdateRectangle m_rectangle; ///< whole 16x16 blocks, may overhang the picture
    std::vector<uint8_t> m_vuiPayload;
};

/// Encodes pictures as framebuffer updates; the base of both encodings. It finds the blocks that
/// changed and frames their records, an encoding codes one block.
class UpdateEncoder {
public:
    virtual ~UpdateEncoder() = default;
    UpdateEncoder(const UpdateEncoder&) = delete;
    UpdateEncoder& operator=(const UpdateEncoder&) = delete;

    /// Encodes the blocks of a rectangle that differ from the previous picture, all of them when
    /// that is null. The rectangle, whose corner must lie in the picture, is rounded up to whole
    /// blocks. Throws std::invalid_argument for an empty rectangle or one outside the picture, a
    /// picture too large for the 16-bit fields of an update, and pictures of different sizes.
    EncodedUpdate EncodeUpdate(const Picture& picture, const Picture* previous,
                               const libimagedecoder::UpdateRectangle& rectangle);

    /// Encodes the whole picture.
    EncodedUpdate EncodeUpdate(const Picture& picture, const Picture* previous);

    const UpdateFormat& GetFormat() const { return m_format; }
    ChromaSubsampling GetChromaSubsampling() const { return m_chroma; }
    uint32_t GetQuality() const { return m_uiQuality; }

protected:
    /// The codec goes before the format's. Throws std::invalid_argument for a protocol version
    /// above 2.
    UpdateEncoder(Codec codec, const UpdateFormat& format, ChromaSubsampling chroma,
                  uint32_t quality);

private:
    /// Called before the first block of each update.
    virtual void BeginUpdate() {}

    /// Appends the bits of the block at a column and row, in blocks, of the planes.
    virtual void EncodeBlock(const YCbCrPlanes& planes, size_t column, size_t row,
                             BitWriter& bits) = 0;

    UpdateFormat m_format;
    UpdateWriter m_writer;
    ChromaSubsampling m_chroma;
    uint32_t m_uiQuality;
};

} // namespace Vostrel::streamencoder
