#pragma once

#include "libimagedecoder/IStreambuffer.h"

namespace Vostrel::libimagedecoder {

/// A stream over one block of memory, which it neither owns nor changes.
class StreambufferArray : public IStreambuffer {
public:
    StreambufferArray(ILogger* logger, uint8_t* data, size_t size) : IStreambuffer(logger) {
        m_puiData = data;
        m_uiSize = size;
    }

    /// The array is the whole stream: there is never more.
    size_t ReadFromBuffer() override { return 0; }
};

} // namespace Vostrel::libimagedecoder
