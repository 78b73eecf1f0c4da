#include "bench/comparison/Peers.h"

#include <lz4.h>
#include <png.h>
#include <stdexcept>
#include <string>
#include <turbojpeg.h>
#include <zlib.h>

namespace Vostrel::bench {

namespace {

// QOI's functions allocate what they return. Fresh memory would cost the decoder three times its
// own work in page faults, so they get memory that is there already: no copy, no fault.
void* s_pQoiMemory = nullptr;

} // namespace

} // namespace Vostrel::bench

#define QOI_IMPLEMENTATION
#define QOI_NO_STDIO
#define QOI_MALLOC(size) (static_cast<void>(size), Vostrel::bench::s_pQoiMemory)
#define QOI_FREE(memory) static_cast<void>(memory)
#include <qoi.h>

namespace Vostrel::bench {

namespace {

void Require(bool success, const char* what) {
    if (!success)
        throw std::runtime_error(std::string(what) + " failed");
}

uint8_t* BytesOf(const Pixels& pixels) {
    return reinterpret_cast<uint8_t*>(pixels.m_puiPixels);
}

} // namespace

void TurboJpeg::Deleter::operator()(void* decompressor) const {
    tjDestroy(decompressor);
}

TurboJpeg::TurboJpeg(Mode mode)
    : m_pDecompressor(tjInitDecompress()),
      m_iFlags(mode == Mode::Fastest ? TJFLAG_FASTDCT | TJFLAG_FASTUPSAMPLE : 0) {
    Require(m_pDecompressor != nullptr, "tjInitDecompress");
}

void TurboJpeg::Decode(const std::vector<uint8_t>& file, const Pixels& target, size_t x, size_t y) {
    uint32_t* const corner = target.m_puiPixels + y * target.m_uiWidth + x;
    const auto pitch = static_cast<int>(sizeof(uint32_t) * target.m_uiWidth);
    Require(tjDecompress2(m_pDecompressor.get(), file.data(), file.size(),
                          reinterpret_cast<uint8_t*>(corner), 0, pitch, 0, TJPF_BGRA,
                          m_iFlags) == 0,
            "tjDecompress2");
}

std::vector<uint8_t> Zlib::Encode(const Pixels& source, int level) {
    uLongf size = compressBound(source.Bytes());
    std::vector<uint8_t> stream(size);
    Require(compress2(stream.data(), &size, BytesOf(source), source.Bytes(), level) == Z_OK,
            "compress2");
    stream.resize(size);
    return stream;
}

void Zlib::Decode(const std::vector<uint8_t>& stream, const Pixels& target) {
    uLongf size = target.Bytes();
    Require(uncompress(BytesOf(target), &size, stream.data(), stream.size()) == Z_OK, "uncompress");
}

std::vector<uint8_t> Lz4::Encode(const Pixels& source) {
    const auto size = static_cast<int>(source.Bytes());
    std::vector<uint8_t> block(static_cast<size_t>(LZ4_compressBound(size)));
    const int used = LZ4_compress_default(reinterpret_cast<const char*>(source.m_puiPixels),
                                          reinterpret_cast<char*>(block.data()), size,
                                          static_cast<int>(block.size()));
    Require(used > 0, "LZ4_compress_default");
    block.resize(static_cast<size_t>(used));
    return block;
}

void Lz4::Decode(const std::vector<uint8_t>& block, const Pixels& target) {
    const auto size = static_cast<int>(target.Bytes());
    Require(LZ4_decompress_safe(reinterpret_cast<const char*>(block.data()),
                                reinterpret_cast<char*>(target.m_puiPixels),
                                static_cast<int>(block.size()), size) == size,
            "LZ4_decompress_safe");
}

std::vector<uint8_t> Qoi::Encode(const Pixels& source) {
    const qoi_desc shape{static_cast<unsigned>(source.m_uiWidth),
                         static_cast<unsigned>(source.m_uiHeight), 4, QOI_SRGB};
    constexpr size_t HeaderAndEnd = 22; // bytes
    std::vector<uint8_t> file(HeaderAndEnd + 5 * source.m_uiWidth * source.m_uiHeight);
    s_pQoiMemory = file.data();
    int size = 0;
    Require(qoi_encode(source.m_puiPixels, &shape, &size) != nullptr, "qoi_encode");
    file.resize(static_cast<size_t>(size));
    return file;
}

void Qoi::Decode(const std::vector<uint8_t>& file, const Pixels& target) {
    s_pQoiMemory = target.m_puiPixels;
    qoi_desc shape{};
    Require(qoi_decode(file.data(), static_cast<int>(file.size()), &shape, 4) != nullptr,
            "qoi_decode");
}

std::vector<uint8_t> Png::Encode(const Pixels& source) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(source.m_uiWidth);
    image.height = static_cast<png_uint_32>(source.m_uiHeight);
    image.format = PNG_FORMAT_BGRA;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<uint8_t> file(size);
    Require(png_image_write_to_memory(&image, file.data(), &size, 0, source.m_puiPixels, 0,
                                      nullptr) != 0,
            "png_image_write_to_memory");
    file.resize(size);
    return file;
}

void Png::Decode(const std::vector<uint8_t>& file, const Pixels& target) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    Require(png_image_begin_read_from_memory(&image, file.data(), file.size()) != 0,
            "png_image_begin_read_from_memory");
    image.format = PNG_FORMAT_BGRA;
    Require(png_image_finish_read(&image, nullptr, target.m_puiPixels, 0, nullptr) != 0,
            "png_image_finish_read");
}

} // namespace Vostrel::bench
