#pragma once

#include "tools/BitWriter.h"

#include <string>
#include <vector>

namespace Vostrel::streamencoder {

/// Bytes as a string of zeros and ones.
inline std::string BitStringOf(const std::vector<uint8_t>& bytes) {
    std::string bits;
    for (const uint8_t byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            bits += (byte >> bit & 1) != 0 ? '1' : '0';
        }
    }
    return bits;
}

/// What was written so far, without the filling of the last byte.
inline std::string BitStringOf(const BitWriter& writer) {
    return BitStringOf(writer.GetBytes()).substr(0, writer.GetBitCount());
}

/// A string of zeros and ones without the blanks that part its fields for the reader.
inline std::string WithoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

/// A writer that holds the bits of such a string.
inline BitWriter WriterOf(const std::string& text) {
    BitWriter writer;
    for (const char bit : WithoutBlanks(text)) {
        writer.Write(bit == '1' ? 1 : 0, 1);
    }
    return writer;
}

} // namespace Vostrel::streamencoder
