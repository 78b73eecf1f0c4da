#include "tools/PngFile.h"

#include <png.h>

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace Vostrel::streamencoder {

namespace {

/// With the system's reason if there is one, which libpng never has.
std::runtime_error Failure(const std::string& path, const char* otherwise) {
    return std::runtime_error(path + ": " +
                              (errno != 0 ? std::generic_category().message(errno) : otherwise));
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// libpng's description of an image in memory, which owns memory between the two steps of a read.
class PngImage {
public:
    PngImage() { m_image.version = PNG_IMAGE_VERSION; }
    ~PngImage() { png_image_free(&m_image); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;

    png_image* operator->() { return &m_image; }
    png_image* Get() { return &m_image; }

    [[noreturn]] void Fail(const std::string& path) const { throw Failure(path, m_image.message); }

private:
    png_image m_image{};
};

} // namespace

Picture ReadPng(const std::string& path) {
    errno = 0;
    PngImage image;
    if (png_image_begin_read_from_file(image.Get(), path.c_str()) == 0) {
        image.Fail(path);
    }
    image->format = PNG_FORMAT_RGB;
    Picture picture(image->width, image->height);
    const png_color black{0, 0, 0};
    if (png_image_finish_read(image.Get(), &black, picture.m_vPixels.data(), 0, nullptr) == 0) {
        image.Fail(path);
    }
    return picture;
}

/// libpng's own function for a path removes what stands there when it fails, be it a device.
void WritePng(const std::string& path, const Picture& picture) {
    const File file(std::fopen(path.c_str(), "wb"));
    if (!file)
        throw Failure(path, "The file cannot be written");
    WritePng(file.get(), path, picture);
}

void WritePng(std::FILE* file, const std::string& path, const Picture& picture) {
    errno = 0;
    PngImage image;
    image->width = static_cast<png_uint_32>(picture.m_uiWidth);
    image->height = static_cast<png_uint_32>(picture.m_uiHeight);
    image->format = PNG_FORMAT_RGB;
    if (png_image_write_to_stdio(image.Get(), file, 0, picture.m_vPixels.data(), 0, nullptr) == 0)
        image.Fail(path);
    if (std::fflush(file) != 0)
        throw Failure(path, "The file cannot be written");
}

} // namespace Vostrel::streamencoder
