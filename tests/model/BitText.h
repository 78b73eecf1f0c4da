#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace Vostrel::model {

/// The bytes of a text of zeros and ones; other characters only part the fields for the reader. The
/// last byte is filled up with zeros.
inline std::vector<uint8_t> BytesOf(std::string_view text) {
    std::vector<uint8_t> bytes;
    int used = 0;
    for (const char c : text) {
        if (c != '0' && c != '1')
            continue;
        if (used % 8 == 0)
            bytes.push_back(0);
        if (c == '1')
            bytes.back() = static_cast<uint8_t>(bytes.back() | (0x80 >> used % 8));
        ++used;
    }
    return bytes;
}

} // namespace Vostrel::model
