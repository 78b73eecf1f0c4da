#include "tools/rctool/PictureFile.h"

#include "tools/PngFile.h"
#include "tools/rctool/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <system_error>

namespace Vostrel::rctool {
namespace {

void WriteFile(const std::string& path, const std::string& head, std::span<const uint8_t> bytes) {
    std::ofstream out(path, std::ios::binary);
    out << head;
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out)
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
}

void WritePpm(const std::string& path, const streamencoder::Picture& picture) {
    const auto* const samples = reinterpret_cast<const uint8_t*>(picture.m_vPixels.data());
    WriteFile(path,
              "P6\n" + std::to_string(picture.m_uiWidth) + " " +
                  std::to_string(picture.m_uiHeight) + "\n255\n",
              {samples, picture.m_vPixels.size() * sizeof(streamencoder::RgbPixel)});
}

} // namespace

PictureFormat FormatOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension == ".ppm")
        return PictureFormat::Ppm;
    if (extension == ".argb")
        return PictureFormat::Argb;
    return extension == ".planes" ? PictureFormat::Planes : PictureFormat::Png;
}

void WritePicture(const std::string& path, PictureFormat format,
                  const recording::Framebuffer& framebuffer, bool replace) {
    WriteWhole(path, replace, [&](const std::string& written) {
        switch (format) {
        case PictureFormat::Png:
            WritePng(written, framebuffer.GetPicture());
            break;
        case PictureFormat::Ppm:
            WritePpm(written, framebuffer.GetPicture());
            break;
        case PictureFormat::Argb:
        case PictureFormat::Planes:
            WriteFile(written, "", framebuffer.GetBytes());
            break;
        }
    });
}

std::string NumberedPath(const std::string& path, size_t number) {
    std::filesystem::path numbered(path);
    char digits[32];
    std::snprintf(digits, sizeof(digits), "-%05zu", number);
    numbered.replace_filename(numbered.stem().string() + digits + numbered.extension().string());
    return numbered.string();
}

} // namespace Vostrel::rctool
