#include "bench/comparison/IctScreen.h"

#include "bench/comparison/JpegFile.h"

#include <stdexcept>
#include <utility>

namespace Vostrel::bench {

using namespace streamencoder;

IctAndJpeg EncodeBoth(const Picture& picture, ChromaSubsampling chroma, uint32_t quality,
                      uint16_t x, uint16_t y) {
    const LevelPicture quantised = QuantisePicture(picture, chroma, quality);
    std::vector<uint8_t> jpeg = WriteJpeg(quantised, quality);
    const LevelPicture levels = ReadJpeg(jpeg);
    if (levels != quantised)
        throw std::logic_error("The JPEG file does not hold the levels that were written");
    const UpdateFormat format{.m_codec = Codec::Ict, .m_uiProtocolVersion = 0};
    return {WriteIctUpdate(levels, quality, format, x, y), std::move(jpeg)};
}

double JpegBitsPerPixel(const IctAndJpeg& encoded) {
    const auto& rectangle = encoded.m_update.m_rectangle;
    return 8.0 * static_cast<double>(encoded.m_jpeg.size()) /
           (static_cast<double>(rectangle.m_uiWidth) * rectangle.m_uiHeight);
}

} // namespace Vostrel::bench
