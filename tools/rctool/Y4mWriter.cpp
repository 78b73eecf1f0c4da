#include "tools/rctool/Y4mWriter.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace Vostrel::rctool {

using namespace streamencoder;

namespace {

void CheckWritten(bool written) {
    if (!written)
        throw std::runtime_error(std::generic_category().message(errno));
}

Picture OnBlack(const Picture& picture, const PictureSize& size) {
    Picture placed(size.m_uiWidth, size.m_uiHeight);
    const size_t columns = std::min(picture.m_uiWidth, size.m_uiWidth);
    const size_t rows = std::min(picture.m_uiHeight, size.m_uiHeight);
    for (size_t y = 0; y < rows; ++y)
        std::copy_n(&picture.At(0, y), columns, &placed.At(0, y));
    return placed;
}

} // namespace

Y4mWriter::Y4mWriter(std::FILE* file, const PictureSize& size, const FrameRate& rate,
                     ChromaSubsampling chroma)
    : m_pFile(file), m_size(size), m_chroma(chroma) {
    const char* const name = chroma == ChromaSubsampling::Yuv444 ? "444" : "420jpeg";
    CheckWritten(std::fprintf(m_pFile, "YUV4MPEG2 W%zu H%zu F%u:%u Ip A1:1 C%s XCOLORRANGE=FULL\n",
                              size.m_uiWidth, size.m_uiHeight, rate.m_uiFrames, rate.m_uiSeconds,
                              name) >= 0);
}

void Y4mWriter::Show(const Picture& picture) {
    const libimagedecoder::UpdateRectangle all{0, 0, static_cast<uint16_t>(m_size.m_uiWidth),
                                               static_cast<uint16_t>(m_size.m_uiHeight)};
    m_planes = picture.GetSize() == m_size
                   ? ConvertToYCbCr(picture, all, m_chroma)
                   : ConvertToYCbCr(OnBlack(picture, m_size), all, m_chroma);
}

void Y4mWriter::WriteFrames(uint64_t count) {
    const size_t columns = (m_size.m_uiWidth + ChromaDivX(m_chroma) - 1) / ChromaDivX(m_chroma);
    const size_t rows = (m_size.m_uiHeight + ChromaDivY(m_chroma) - 1) / ChromaDivY(m_chroma);
    for (; count > 0; --count) {
        CheckWritten(std::fputs("FRAME\n", m_pFile) >= 0);
        WritePlane(m_planes.m_y, m_size.m_uiWidth, m_size.m_uiHeight);
        WritePlane(m_planes.m_cb, columns, rows);
        WritePlane(m_planes.m_cr, columns, rows);
    }
}

/// Without what fills up the last macroblocks.
void Y4mWriter::WritePlane(const Plane& plane, size_t columns, size_t rows) {
    for (size_t y = 0; y < rows; ++y)
        CheckWritten(std::fwrite(plane.At(0, y), 1, columns, m_pFile) == columns);
}

} // namespace Vostrel::rctool
