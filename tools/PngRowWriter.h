#pragma once

#include "tools/Picture.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace Vostrel::streamencoder {

/// Writes a PNG file of palette colours row by row, so that the picture need not be in memory.
class PngRowWriter {
public:
    /// Writes to a file that is open for writing, and stays open. path: for messages. palette: at
    /// most 256 colours. Throws std::runtime_error with the path and the reason, as all methods do.
    PngRowWriter(std::FILE* file, const std::string& path, size_t width, size_t height,
                 std::span<const RgbPixel> palette);
    ~PngRowWriter();
    PngRowWriter(const PngRowWriter&) = delete;
    PngRowWriter& operator=(const PngRowWriter&) = delete;

    /// The next row: one palette index for every pixel of the width.
    void WriteRow(std::span<const uint8_t> indices);

    /// After the last row.
    void Finish();

private:
    struct Png;

    std::unique_ptr<Png> m_pPng;
};

} // namespace Vostrel::streamencoder
