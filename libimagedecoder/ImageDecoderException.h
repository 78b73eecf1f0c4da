#pragma once

#include <stdexcept>
#include <string>

namespace Vostrel::libimagedecoder {

/// Thrown when an update's data cannot be decoded or delivered. The native perform methods catch
/// exactly this type, log its text and return -1 to the viewer.
class ImageDecoderException : public std::runtime_error {
public:
    explicit ImageDecoderException(const std::string& message) : std::runtime_error(message) {}
};

} // namespace Vostrel::libimagedecoder
