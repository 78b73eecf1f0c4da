#include "tools/PngFile.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace Vostrel::streamencoder {

namespace {

constexpr size_t MaxPngSize = size_t{1} << 30;

/// With the system's reason if there is one, which libpng never has.
std::runtime_error Failure(const std::string& path, const char* otherwise) {
    return std::runtime_error(path + ": " +
                              (errno != 0 ? std::generic_category().message(errno) : otherwise));
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File OpenForReading(const std::string& path) {
    File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        throw Failure(path, "The file cannot be read");
    return file;
}

/// Takes one PNG file out of a stream, up to its last chunk. What is wrong or missing in the chunks
/// is left to libpng.
class PngBytes {
public:
    PngBytes(std::FILE* file, const std::string& name) : m_pFile(file), m_name(name) {}

    /// The bytes by which every PNG file begins; nothing at the end of the stream.
    const std::vector<png_byte>& TakeSignature() {
        constexpr size_t SignatureSize = 8;
        Take(SignatureSize);
        if (!m_vuiBytes.empty() && png_sig_cmp(m_vuiBytes.data(), 0, m_vuiBytes.size()) != 0)
            throw std::runtime_error(m_name + ": Not a PNG file");
        return m_vuiBytes;
    }

    /// Nothing at the end of the stream.
    std::vector<png_byte> TakeAll() {
        TakeSignature();
        while (!m_vuiBytes.empty() && TakeChunk()) {
        }
        return std::move(m_vuiBytes);
    }

private:
    /// Returns whether another one may follow.
    bool TakeChunk() {
        constexpr size_t HeadSize = 8; // length and type
        constexpr size_t CrcSize = 4;
        const size_t head = m_vuiBytes.size();
        if (!Take(HeadSize))
            return false;
        const size_t length = png_get_uint_32(&m_vuiBytes[head]);
        const bool isLast = std::memcmp(&m_vuiBytes[head + 4], "IEND", 4) == 0;
        return Take(length + CrcSize) && !isLast;
    }

    /// Takes no more memory than there are bytes. Returns whether there were so many.
    bool Take(size_t count) {
        constexpr size_t MostAtOnce = size_t{1} << 16;
        while (count > 0) {
            const size_t size = m_vuiBytes.size();
            const size_t wanted = std::min(count, MostAtOnce);
            if (size + wanted > MaxPngSize)
                throw std::runtime_error(m_name + ": The PNG file is larger than 1 GiB");
            m_vuiBytes.resize(size + wanted);
            errno = 0;
            const size_t taken = std::fread(&m_vuiBytes[size], 1, wanted, m_pFile);
            m_vuiBytes.resize(size + taken);
            if (std::ferror(m_pFile) != 0)
                throw Failure(m_name, "The file cannot be read");
            if (taken < wanted)
                return false;
            count -= taken;
        }
        return true;
    }

    std::FILE* m_pFile;
    const std::string& m_name;
    std::vector<png_byte> m_vuiBytes;
};

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
    PngLoss ignored;
    return ReadPng(path, ignored);
}

Picture ReadPng(const std::string& path, PngLoss& loss) {
    const File file = OpenForReading(path);
    if (auto picture = ReadNextPng(file.get(), path, loss))
        return *std::move(picture);
    throw std::runtime_error(path + ": The file is empty");
}

std::optional<Picture> ReadNextPng(std::FILE* file, const std::string& name, PngLoss& loss) {
    const std::vector<png_byte> bytes = PngBytes(file, name).TakeAll();
    if (bytes.empty())
        return std::nullopt;
    errno = 0;
    PngImage image;
    if (png_image_begin_read_from_memory(image.Get(), bytes.data(), bytes.size()) == 0)
        image.Fail(name);
    loss.m_bTransparency = (image->format & PNG_FORMAT_FLAG_ALPHA) != 0;
    loss.m_b16Bits = (image->format & PNG_FORMAT_FLAG_LINEAR) != 0;
    image->flags |= PNG_IMAGE_FLAG_16BIT_sRGB; // Not linear where the file does not say so.
    image->format = PNG_FORMAT_RGB;
    Picture picture(image->width, image->height);
    const png_color black{0, 0, 0};
    if (png_image_finish_read(image.Get(), &black, picture.m_vPixels.data(), 0, nullptr) == 0)
        image.Fail(name);
    return picture;
}

PictureSize ReadPngSize(const std::string& path) {
    const File file = OpenForReading(path);
    const bool isEmpty = PngBytes(file.get(), path).TakeSignature().empty();
    if (isEmpty)
        throw std::runtime_error(path + ": The file is empty");
    std::rewind(file.get());
    PngImage image;
    if (png_image_begin_read_from_stdio(image.Get(), file.get()) == 0)
        image.Fail(path);
    return {image->width, image->height};
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
