#pragma once

#include "tools/Picture.h"
#include "tools/UpdateFormat.h"
#include "tools/YCbCrPlanes.h"
#include "tools/rctool/FrameRate.h"

#include <cstdint>
#include <cstdio>

namespace Vostrel::rctool {

/// Writes uncompressed video in the YUV4MPEG2 format: full-range samples by the equations of ITU-R
/// BT.601, chroma in the middle between the pixels that share it.
///
/// Every operation throws std::runtime_error when not all could be written.
class Y4mWriter {
public:
    /// Writes the header. chroma: 4:2:0 or 4:4:4. The file is not owned.
    Y4mWriter(std::FILE* file, const streamencoder::PictureSize& size, const FrameRate& rate,
              streamencoder::ChromaSubsampling chroma);

    /// What the next frames show. A picture smaller than the video stands in its upper left corner,
    /// on black.
    void Show(const streamencoder::Picture& picture);

    /// Something must have been shown.
    void WriteFrames(uint64_t count);

private:
    void WritePlane(const streamencoder::Plane& plane, size_t columns, size_t rows);

    std::FILE* m_pFile;
    streamencoder::PictureSize m_size;
    streamencoder::ChromaSubsampling m_chroma;
    streamencoder::YCbCrPlanes m_planes;
};

} // namespace Vostrel::rctool
