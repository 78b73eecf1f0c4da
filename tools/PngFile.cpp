#include "tools/PngFile.h"

#include <png.h>

#include <stdexcept>

namespace Vostrel::streamencoder {

namespace {

/// libpng's description of an image in memory, which owns memory between the two steps of a read.
class PngImage {
public:
    PngImage() { m_image.version = PNG_IMAGE_VERSION; }
    ~PngImage() { png_image_free(&m_image); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;

    png_image* operator->() { return &m_image; }
    png_image* Get() { return &m_image; }

    [[noreturn]] void Fail(const std::string& path) const {
        throw std::runtime_error(path + ": " + m_image.message);
    }

private:
    png_image m_image{};
};

} // namespace

Picture ReadPng(const std::string& path) {
    PngLoss ignored;
    return ReadPng(path, ignored);
}

Picture ReadPng(const std::string& path, PngLoss& loss) {
    PngImage image;
    if (png_image_begin_read_from_file(image.Get(), path.c_str()) == 0) {
        image.Fail(path);
    }
    loss.m_bTransparency = (image->format & PNG_FORMAT_FLAG_ALPHA) != 0;
    loss.m_b16Bits = (image->format & PNG_FORMAT_FLAG_LINEAR) != 0;
    image->flags |= PNG_IMAGE_FLAG_16BIT_sRGB; // Not linear where the file does not say so.
    image->format = PNG_FORMAT_RGB;
    Picture picture(image->width, image->height);
    const png_color black{0, 0, 0};
    if (png_image_finish_read(image.Get(), &black, picture.m_vPixels.data(), 0, nullptr) == 0) {
        image.Fail(path);
    }
    return picture;
}

void WritePng(const std::string& path, const Picture& picture) {
    PngImage image;
    image->width = static_cast<png_uint_32>(picture.m_uiWidth);
    image->height = static_cast<png_uint_32>(picture.m_uiHeight);
    image->format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(image.Get(), path.c_str(), 0, picture.m_vPixels.data(), 0,
                                nullptr) == 0) {
        image.Fail(path);
    }
}

} // namespace Vostrel::streamencoder
