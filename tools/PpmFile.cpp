#include "tools/PpmFile.h"

#include <cctype>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace Vostrel::streamencoder {

namespace {

/// The next number of a PPM header, after white space and comments; 0 without one.
size_t TakeNumber(std::istream& in) {
    for (in >> std::ws; in.peek() == '#'; in >> std::ws)
        in.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    size_t number = 0;
    return in >> number ? number : 0;
}

} // namespace

Picture ReadPpm(const std::string& path) {
    constexpr size_t MaxSide = 65535;
    std::ifstream in(path, std::ios::binary);
    char magic[2]{};
    in.read(magic, sizeof(magic));
    const size_t width = TakeNumber(in);
    const size_t height = TakeNumber(in);
    const size_t most = TakeNumber(in);
    const bool isKnown = magic[0] == 'P' && magic[1] == '6' && std::isspace(in.get()) != 0;
    if (!isKnown || width == 0 || height == 0 || width > MaxSide || height > MaxSide || most != 255)
        throw std::runtime_error(path + ": This is no PPM file (P6) of 8 bits a sample");
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    if (bytes.size() < 3 * width * height)
        throw std::runtime_error(path + ": The PPM file is too short for its size");
    Picture picture(width, height);
    auto next = bytes.begin();
    for (RgbPixel& pixel : picture.m_vPixels) {
        for (uint8_t& sample : pixel)
            sample = static_cast<uint8_t>(*next++);
    }
    return picture;
}

} // namespace Vostrel::streamencoder
