#include "tools/rctool/PictureFile.h"

#include "tools/PngFile.h"
#include "tools/rctool/OutputFile.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <map>
#include <stdexcept>

namespace Vostrel::rctool {
namespace {

void WritePpm(std::FILE* file, const streamencoder::Picture& picture) {
    std::fprintf(file, "P6\n%zu %zu\n255\n", picture.m_uiWidth, picture.m_uiHeight);
    std::fwrite(picture.m_vPixels.data(), sizeof(streamencoder::RgbPixel), picture.m_vPixels.size(),
                file);
}

} // namespace

PictureFormat FormatOf(const std::string& path) {
    static const std::map<std::string, PictureFormat> Formats{{"", PictureFormat::Png},
                                                              {".png", PictureFormat::Png},
                                                              {".ppm", PictureFormat::Ppm},
                                                              {".argb", PictureFormat::Argb},
                                                              {".planes", PictureFormat::Planes}};
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto format = Formats.find(extension);
    if (format == Formats.end())
        throw std::invalid_argument(path + ": Pictures have the extension .png, .ppm, .argb or "
                                           ".planes");
    return format->second;
}

void WritePicture(const std::string& path, PictureFormat format,
                  const recording::Framebuffer& framebuffer, bool replace) {
    WriteWhole(path, replace, [&](std::FILE* file) {
        switch (format) {
        case PictureFormat::Png:
            WritePng(file, OutputName(path), framebuffer.GetPicture());
            break;
        case PictureFormat::Ppm:
            WritePpm(file, framebuffer.GetPicture());
            break;
        case PictureFormat::Argb:
        case PictureFormat::Planes:
            std::fwrite(framebuffer.GetBytes().data(), 1, framebuffer.GetBytes().size(), file);
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
