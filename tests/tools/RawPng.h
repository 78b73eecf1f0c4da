#pragma once

#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace Vostrel::streamencoder {

/// Colour types of a PNG header.
enum class PngColour : uint8_t { Rgb = 2, Palette = 3, Rgba = 6 };

/// Writes a PNG file of one pixel with just these chunks, whose samples libpng would not write.
class RawPng {
public:
    RawPng(uint8_t bitsPerSample, PngColour colour) {
        const uint8_t head[] = {0, 0, 0, 1, 0, 0, 0, 1, bitsPerSample, uint8_t(colour), 0, 0, 0};
        Add("IHDR", {std::begin(head), std::end(head)});
    }

    RawPng& Add(const std::string& type, const std::vector<uint8_t>& data) {
        std::string chunk = type + std::string(data.begin(), data.end());
        const auto* const bytes = reinterpret_cast<const Bytef*>(chunk.data());
        const uLong crc = crc32_z(0, bytes, chunk.size());
        m_bytes += BigEndian(data.size()) + chunk + BigEndian(crc);
        return *this;
    }

    /// Adds the pixel and writes the file.
    void Write(const std::string& path, std::vector<uint8_t> samples) {
        samples.insert(samples.begin(), 0); // no filter
        std::vector<uint8_t> packed(64);
        uLongf size = packed.size();
        compress(packed.data(), &size, samples.data(), samples.size());
        packed.resize(size);
        Add("IDAT", packed).Add("IEND", {});
        std::ofstream(path, std::ios::binary) << m_bytes;
    }

private:
    static std::string BigEndian(uint64_t value) {
        std::string bytes;
        for (const int shift : {24, 16, 8, 0})
            bytes += static_cast<char>(value >> shift & 0xFF);
        return bytes;
    }

    std::string m_bytes = "\x89PNG\r\n\x1A\n";
};

} // namespace Vostrel::streamencoder
