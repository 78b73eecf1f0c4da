#include "tools/PngRowWriter.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace Vostrel::streamencoder {
namespace {

constexpr int BitsPerIndex = 8;
constexpr int FastCompression = 3; ///< of 9

} // namespace

/// libpng reports a failure by a jump, to the step that was called last.
struct PngRowWriter::Png {
    explicit Png(const std::string& path) : m_path(path) {
        m_pWrite = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
        m_pInfo = m_pWrite == nullptr ? nullptr : png_create_info_struct(m_pWrite);
        if (m_pInfo == nullptr) {
            png_destroy_write_struct(&m_pWrite, nullptr);
            throw std::runtime_error(path + ": No memory to write a PNG file");
        }
    }
    ~Png() { png_destroy_write_struct(&m_pWrite, &m_pInfo); }
    Png(const Png&) = delete;
    Png& operator=(const Png&) = delete;

    template <class Step>
    void Do(Step step) {
        errno = 0;
        if (setjmp(png_jmpbuf(m_pWrite)) != 0)
            throw std::runtime_error(m_path + ": " + m_message);
        step();
    }

    [[noreturn]] static void OnError(png_structp write, png_const_charp message) {
        auto* const self = static_cast<Png*>(png_get_error_ptr(write));
        self->m_message = errno != 0 ? std::generic_category().message(errno) : message;
        png_longjmp(write, 1);
    }
    static void OnWarning(png_structp, png_const_charp) {}

    std::string m_path;
    std::string m_message;
    png_structp m_pWrite = nullptr;
    png_infop m_pInfo = nullptr;
};

PngRowWriter::PngRowWriter(std::FILE* file, const std::string& path, size_t width, size_t height,
                           std::span<const RgbPixel> palette)
    : m_pPng(std::make_unique<Png>(path)) {
    std::vector<png_color> colours;
    for (const RgbPixel& colour : palette)
        colours.push_back({colour[0], colour[1], colour[2]});
    Png& png = *m_pPng;
    png.Do([&] {
        png_init_io(png.m_pWrite, file);
        png_set_compression_level(png.m_pWrite, FastCompression);
        png_set_IHDR(png.m_pWrite, png.m_pInfo, static_cast<png_uint_32>(width),
                     static_cast<png_uint_32>(height), BitsPerIndex, PNG_COLOR_TYPE_PALETTE,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_PLTE(png.m_pWrite, png.m_pInfo, colours.data(), static_cast<int>(colours.size()));
        png_write_info(png.m_pWrite, png.m_pInfo);
    });
}

PngRowWriter::~PngRowWriter() = default;

void PngRowWriter::WriteRow(std::span<const uint8_t> indices) {
    m_pPng->Do([&] { png_write_row(m_pPng->m_pWrite, indices.data()); });
}

void PngRowWriter::Finish() {
    m_pPng->Do([&] { png_write_end(m_pPng->m_pWrite, m_pPng->m_pInfo); });
}

} // namespace Vostrel::streamencoder
